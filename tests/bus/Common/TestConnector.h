#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"

#include "Platform/DBusConnection.h"

#include <QDBusConnection>
#include <QSharedPointer>
#include <QString>

#include <atomic>

/// A connector as a module writes one: calls of every kind, and one signal of the service.
class TestConnector : public DBusConnectorBase
{
    Q_OBJECT
public:
    explicit TestConnector(const QString& objectName = QStringLiteral("Pump"),
                           const QString& moduleName = QStringLiteral("EventlistHandler"))
        : DBusConnectorBase(moduleName, objectName, QStringLiteral("Interface.Pump"), nullptr,
                            defaultMode)
    {
    }

    static QSharedPointer<TestConnector> createAndConnect()
    {
        QSharedPointer<TestConnector> connector(new TestConnector);
        connector->initObject();
        return connector;
    }

    template<typename... Args>
    DBusPendingReply::SharedPointer ask(const QString& method, Args&&... args) const
    {
        return asyncCallHelper(method, std::forward<Args>(args)...);
    }

    template<typename... Args>
    DBusReply send(const QString& method, Args&&... args) const
    {
        return syncCallNoBlock(method, std::forward<Args>(args)...);
    }

    template<typename... Args>
    DBusReply wait(const QString& method, Args&&... args) const
    {
        return syncCallHelper(method, std::forward<Args>(args)...);
    }

    int connectCount() const { return m_connectCount; }
    int failedConnectCount() const { return m_failedConnectCount; }
    QDBusAbstractInterface* proxy() const { return m_dBusInterface; }

Q_SIGNALS:
    void changed();

protected Q_SLOTS:
    void connectServices() override
    {
        ++m_connectCount;
        const bool isConnected = DBusConnection::getQDBusConnection().connect(
            getServiceName(), getDBusPath(), QString(), QStringLiteral("changed"), this,
            SIGNAL(changed()));
        m_failedConnectCount += isConnected ? 0 : 1;
    }

    void disconnectServices() override
    {
        DBusConnection::getQDBusConnection().disconnect(getServiceName(), getDBusPath(), QString(),
                                                        QStringLiteral("changed"), this,
                                                        SIGNAL(changed()));
    }

private:
    std::atomic<int> m_connectCount{0};
    std::atomic<int> m_failedConnectCount{0};
};
