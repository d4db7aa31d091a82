#include "Alarmlist/AlarmlistHandler.h"
#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/AuditTrailHandler.h"
#include "EventRead/EventHandlerRead.h"
#include "EventWrite/EventlistHandlerWrite.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/WarningRecorder.h"

#include <QElapsedTimer>

#include <functional>
#include <memory>
#include <vector>

using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;

/// A service or a bus that stands still makes nobody wait who writes.
class tst_FrozenService : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void nobodyWaitsForAFrozenService();
    void nobodyWaitsForAFrozenBus();

private:
    void writeEverything();
    void checkWhatArrived();

    PrivateBus m_bus;
    ForeignService m_service{m_bus, ForeignService::centralServiceName()};
    WarningRecorder m_warnings;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
};

namespace
{
constexpr int eventCount = 2000;
constexpr int producerCount = 50;
// A call that waited for an answer would take 25 s or until the thaw, which comes afterwards.
constexpr qint64 longestMs = 5000;

const QString moduleName = QStringLiteral("PumpControl");
const QString description = QStringLiteral("PumpControl/OverTemperature");
} // namespace

void tst_FrozenService::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
    // The first connector of a process may wait for the bus, for at most 1 s.
    const EventlistHandlerWrite first(nullptr);
}

void tst_FrozenService::init()
{
    QVERIFY2(m_service.reset(), m_service.errorText());
    m_warnings.start();
}

void tst_FrozenService::cleanup()
{
    m_bus.thaw();
    m_service.thaw();
    VERIFY_WARNINGS(m_warnings);
}

void tst_FrozenService::writeEverything()
{
    QElapsedTimer timer;
    timer.start();
    AuditTrailHandler auditTrail(moduleName, m_texts, description, QStringList());
    for (int i = 0; i < eventCount; ++i)
    {
        auditTrail.logAuditTrail(QString::number(i), Arguments());
    }
    std::vector<std::unique_ptr<AlarmHandler>> alarms;
    for (int i = 0; i < producerCount; ++i)
    {
        alarms.push_back(
            std::make_unique<AlarmHandler>(moduleName, m_texts, description, QStringList()));
        alarms.back()->changeState(true, Arguments());
    }
    AlarmlistHandler acknowledgement(moduleName, m_texts, nullptr);
    acknowledgement.acknowledgeAlarms(QStringList(), QString(), QString());
    AlarmlistHandlerDBusConnectorWrite(false).acknowledgeCentralDetector(QString());
    EventlistHandlerWrite front(nullptr);
    front.suppressEventProcessing();
    front.deleteEventlist();
    // Asking does not wait either.
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader.getCompleteEventlist(QString()).isNull());
    QVERIFY2(timer.elapsed() < longestMs, qPrintable(QString::number(timer.elapsed())));
}

void tst_FrozenService::checkWhatArrived()
{
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), eventCount + producerCount + 6);
    for (int i = 0; i < eventCount; ++i)
    {
        QCOMPARE(received[i].arguments[5].toString(), QString::number(i));
    }
    QStringList members;
    for (int i = eventCount; i < received.size(); ++i)
    {
        members << received[i].member;
    }
    QStringList expected;
    for (int i = 0; i < producerCount; ++i)
    {
        expected << QStringLiteral("logEvent");
    }
    expected << QStringLiteral("acknowledgeVisualAlarm") << QStringLiteral("logEvent")
             << QStringLiteral("acknowledgeCentralDetector")
             << QStringLiteral("suppressEventProcessing") << QStringLiteral("deleteEventlist")
             << QStringLiteral("getCompleteEventlist");
    QCOMPARE(members, expected);
}

void tst_FrozenService::nobodyWaitsForAFrozenService()
{
    // The entry of the acknowledgement has no text here.
    m_warnings.expect(
        QStringLiteral("No description data: \"GlobalAuditTrailTexts/AlarmsAcknowledged\""));
    QVERIFY(m_service.freeze());
    writeEverything();
    m_service.thaw();
    checkWhatArrived();
}

void tst_FrozenService::nobodyWaitsForAFrozenBus()
{
    m_warnings.expect(
        QStringLiteral("No description data: \"GlobalAuditTrailTexts/AlarmsAcknowledged\""));
    QVERIFY(m_bus.freeze());
    writeEverything();
    m_bus.thaw();
    checkWhatArrived();
}

QTEST_GUILESS_MAIN(tst_FrozenService)
#include "tst_FrozenService.moc"
