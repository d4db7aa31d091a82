#pragma once

#include "TestSupport/PrivateBus.h"
#include "TestSupport/RecordingCentralService.h"
#include "TestSupport/WarningRecorder.h"

#include <QObject>
#include <QString>

#include <memory>

class DBusConnectorBase;

/// Base of a test class that talks to the central service: a bus of its own, a foreign service that
/// records, and the message log, in which nothing may stand that the test has not expected.
///
/// Every test function begins with the service present, without records and without rules.
class CentralServiceTest : public QObject
{
    Q_OBJECT
public:
    CentralServiceTest();
    ~CentralServiceTest() override;

protected:
    /// Ends the service, and waits until this process knows it.
    bool takeServiceAway();

    /// Starts it again, and waits until this process knows it.
    bool bringServiceBack();

    /// Ends the bus, and waits until this process knows it. The service goes on without a bus.
    bool takeBusAway();

    /// Starts the bus again, lets the service come back, and waits until this process knows both.
    bool bringBusBack();

    /// Waits until a connector can place calls.
    static bool waitUntilValid(const DBusConnectorBase& connector);

    /// Lets the service send a signal, after all subscriptions of this process have reached the bus.
    bool emitSignal(const QString& path, const QString& interface, const QString& member,
                    const QString& signature = QString(), const QJsonArray& values = QJsonArray(),
                    int times = 1);

    /// Waits until everything that the service has sent so far has arrived in this process, and lets
    /// its events run.
    bool takeWhatWasSent();

    /// A text as the message log shows it.
    static QString quoted(const QString& text);

    /// JSON text, written with single quotes for double ones: moc does not understand raw strings
    /// inside of macros.
    static QString json(const char* text);

    /// Expects the warnings of a call that is refused because the service is not there.
    void expectRefusedCall(const DBusConnectorBase& connector);

    /// The same for a query.
    void expectRefusedQuery(const DBusConnectorBase& connector);

    PrivateBus m_bus;
    RecordingCentralService m_service;
    WarningRecorder m_warnings;

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

private:
    bool waitForService(bool isPresent);

    std::unique_ptr<DBusConnectorBase> m_probe;
};
