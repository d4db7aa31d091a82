#include "Common/DBusTools/DBusConnectorBase.h"

#include "DBusTracker.h"

#include "Platform/DBusConnectionParameter.h"

#include <QThread>

/// A connector's share of a remote object.
class DBusConnectorBase::Private final : public DBusSubscriber
{
public:
    Private(DBusConnectorBase& connector, std::shared_ptr<DBusRemoteObject> remoteObject)
        : DBusSubscriber(connector), object(std::move(remoteObject)), m_connector(connector)
    {
    }

    bool isValid()
    {
        return object->state() == m_validState.load(std::memory_order_relaxed) || isValidAnew();
    }

    void refresh();
    void start();

    // Fixed at construction.
    const std::shared_ptr<DBusRemoteObject> object;

private:
    void connectionReplaced() override { refresh(); }
    bool isValidAnew();
    bool isOnOwnThread() const;
    void connectServices(const QDBusConnection& connection);

    DBusConnectorBase& m_connector;
    // Written by the connector's thread, read by any.
    std::atomic<quint64> m_validState{DBusRemoteObject::validState(0)};
    // Of the connector's thread.
    quint64 m_generation = 0;
    // Of the connection that has the subscriptions.
    quint64 m_servicesGeneration = 0;
    std::shared_ptr<QDBusAbstractInterface> m_proxy;
    bool m_hasServices = false;
    bool m_isRefreshing = false;
};

bool DBusConnectorBase::Private::isOnOwnThread() const
{
    // A connector outlives the thread that made it: then it belongs to whoever calls.
    const QThread* const thread = m_connector.thread();
    return thread == QThread::currentThread() || thread == nullptr || thread->isFinished();
}

bool DBusConnectorBase::Private::isValidAnew()
{
    // Another thread must not replace the proxy: the connector may just be calling through it.
    if (isOnOwnThread())
    {
        refresh();
    }
    return object->state() == m_validState.load(std::memory_order_relaxed);
}

void DBusConnectorBase::Private::refresh()
{
    if (m_isRefreshing)
    {
        return;
    }
    m_isRefreshing = true;
    DBusTracker::View view;
    while (DBusTracker::instance().newView(*object, m_generation, view))
    {
        m_connector.m_dBusInterface = view.proxy.get();
        m_proxy = std::move(view.proxy);
        m_generation = view.generation;
        m_validState.store(DBusRemoteObject::validState(m_generation), std::memory_order_relaxed);
        if (m_hasServices && m_generation != m_servicesGeneration)
        {
            m_servicesGeneration = m_generation;
            connectServices(m_connector.m_dBusInterface->connection());
        }
    }
    m_isRefreshing = false;
}

void DBusConnectorBase::Private::start()
{
    if (m_hasServices)
    {
        return;
    }
    m_hasServices = true;
    DBusTracker& tracker = DBusTracker::instance();
    tracker.subscribe(*object, *this);
    // Without a bus as well: then somebody hears that the signals cannot come.
    const std::shared_ptr<DBusLink> link = tracker.link();
    m_servicesGeneration = link ? link->generation() : 0;
    m_isRefreshing = true;
    connectServices(link ? link->connection() : QDBusConnection(QString()));
    m_isRefreshing = false;
    refresh();
}

void DBusConnectorBase::Private::connectServices(const QDBusConnection& connection)
{
    // On this connection, also when it is replaced meanwhile: then the next one gets the
    // subscriptions anew, and on none are they made twice.
    const DBusTracker::Pin pin(connection);
    m_connector.connectServices();
}

DBusConnectorBase::DBusConnectorBase(const QString& moduleName, const QString& objectName,
                                     const QString& interfaceName, QObject* parent, ConnectionMode)
    : QObject(parent),
      d(new Private(*this,
                    DBusTracker::instance().remoteObject(moduleName, objectName, interfaceName)))
{
    m_dBusInterface = d->object->placeholder.get();
    d->refresh();
}

DBusConnectorBase::DBusConnectorBase(const DBusConnectionParameter& parameter, QObject* parent,
                                     ConnectionMode mode)
    : DBusConnectorBase(parameter.getModuleName(), parameter.getObjectName(),
                        parameter.getInterfaceName(), parent, mode)
{
}

DBusConnectorBase::~DBusConnectorBase()
{
    DBusTracker::instance().unsubscribe(*d);
}

void DBusConnectorBase::initObject()
{
    d->start();
}

void DBusConnectorBase::customEvent(QEvent*)
{
    d->hear();
}

bool DBusConnectorBase::isDBusInterfaceValid() const
{
    return d->isValid();
}

QString DBusConnectorBase::getInvalidDBusInterfaceMessage() const
{
    const DBusAddress& address = d->object->address;
    const QString target = QStringLiteral("D-Bus interface ") +
                           QString::fromUtf8(address.interfaceName) + QStringLiteral(" of ") +
                           address.path + QStringLiteral(" cannot be reached: ");
    switch (DBusTracker::instance().obstacle(*d->object))
    {
    case DBusTracker::Obstacle::forbiddenName:
        return target + QStringLiteral("D-Bus forbids one of these names, or the bus name ") +
               address.serviceName;
    case DBusTracker::Obstacle::noConnection:
        return target + QStringLiteral("no connection to the bus, on which to find ") +
               address.serviceName;
    case DBusTracker::Obstacle::noService:
        return target + QStringLiteral("nobody on the bus owns the name ") + address.serviceName;
    case DBusTracker::Obstacle::replacedConnection:
        break;
    }
    return target +
           QStringLiteral("a new connection to the bus waits for the thread of this "
                          "connector, on which to find ") +
           address.serviceName;
}

QString DBusConnectorBase::getServiceName() const
{
    return d->object->address.serviceName;
}

QString DBusConnectorBase::getDBusPath() const
{
    return d->object->address.path;
}

void DBusConnectorBase::connectServices() {}

void DBusConnectorBase::disconnectServices() {}
