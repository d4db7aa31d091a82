#pragma once

#include "core/BusObject.h"

#include <QDBusConnection>
#include <QObject>
#include <QTimer>

namespace eventlistd
{

class EventlistService;

/// Puts the service on the bus and keeps it there: connects, publishes the objects, takes the name,
/// and does all of this again, on a fresh connection, when the bus daemon was restarted.
/// Without a bus the service goes on taking spool files.
class BusEndpoint : public QObject
{
    Q_OBJECT
public:
    /// \param busName  the name to take
    /// \param service  must outlive this
    BusEndpoint(const QString& busName, EventlistService& service, QObject* parent = nullptr);
    ~BusEndpoint() override;

    /// Makes the first attempt. Blocks: for answers of the daemon.
    void start();

Q_SIGNALS:
    /// The name is owned now; also after a restart of the daemon.
    void ready();
    /// Another process has the name.
    void nameTaken();

private Q_SLOTS:
    void onDisconnected();
    void onNameLost(const QString& name);

private:
    void tryToConnect();
    bool publish();
    void dropConnection();
    void announceIcon(const QString& hash, const QString& icon);

    // Fixed at construction.
    const QString m_busName;
    EventlistService& m_service;
    BusObject m_eventlistWrite;
    BusObject m_eventlistRead;
    BusObject m_alarmlistWrite;
    BusObject m_alarmlistRead;
    BusObject m_hashRegister;
    // The present connection.
    QString m_connectionName;
    QDBusConnection m_connection{QString()};
    QTimer m_retryTimer;
    int m_attempt = 0;
    bool m_hasWarned = false;
};

} // namespace eventlistd
