#include "Platform/DBusServiceProviderBaseClass.h"

#include "DBusTracker.h"

#include <dbus/dbus-shared.h>

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDebug>
#include <QMap>

#include <mutex>

namespace
{
QDBusMessage nameCall(const QString& method, const QString& name)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(DBUS_SERVICE_DBUS),
                                                       QLatin1String(DBUS_PATH_DBUS),
                                                       QLatin1String(DBUS_INTERFACE_DBUS), method);
    call << name;
    return call;
}

/// The bus names that this process wants. Objects of one module share its name: it is given back
/// with the last of them.
class WantedNames
{
public:
    static WantedNames& instance()
    {
        static WantedNames* const names = new WantedNames;
        return *names;
    }

    void add(const QString& name)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_counts[name];
    }

    void remove(const QString& name, const DBusLink* link)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (--m_counts[name] > 0)
        {
            return;
        }
        m_counts.remove(name);
        if (link != nullptr)
        {
            link->connection().send(nameCall(QStringLiteral("ReleaseName"), name));
        }
    }

    QDBusPendingCall request(const QString& name, const QDBusConnection& connection)
    {
        // Under the same lock as a release, so that the two keep their order on the bus.
        const std::lock_guard<std::mutex> lock(m_mutex);
        // No flag: when the name is taken, the bus gives it to us as soon as it comes free.
        QDBusMessage call = nameCall(QStringLiteral("RequestName"), name);
        call << 0u;
        return connection.asyncCall(call);
    }

private:
    std::mutex m_mutex;
    QMap<QString, int> m_counts;
};
} // namespace

/// The registration of one object, on its thread.
class DBusServiceProviderBaseClass::Private final : public DBusSubscriber
{
public:
    Private(DBusServiceProviderBaseClass& provider, const QString& moduleNameOfProvider,
            const DBusAddress& objectAddress, bool isNameWanted,
            const QFlags<QDBusConnection::RegisterOption>& options);

    void publish();
    void withdraw();

    // Fixed at construction.
    const QString moduleName;

private:
    void connectionReplaced() override { publish(); }
    void requestName(const QDBusConnection& connection);
    void warnAboutName(const QDBusPendingReply<uint>& reply) const;

    DBusServiceProviderBaseClass& m_provider;
    const DBusAddress m_address;
    const bool m_isNameWanted;
    const QFlags<QDBusConnection::RegisterOption> m_options;
    // Of the provider's thread.
    std::shared_ptr<DBusLink> m_link;
    bool m_isRegistered = false;
    bool m_isBusMissed = false;
};

DBusServiceProviderBaseClass::Private::Private(
    DBusServiceProviderBaseClass& provider, const QString& moduleNameOfProvider,
    const DBusAddress& objectAddress, bool isNameWanted,
    const QFlags<QDBusConnection::RegisterOption>& options)
    : DBusSubscriber(provider),
      moduleName(moduleNameOfProvider),
      m_provider(provider),
      m_address(objectAddress),
      m_isNameWanted(isNameWanted),
      m_options(options)
{
    if (m_isNameWanted)
    {
        WantedNames::instance().add(m_address.serviceName);
    }
}

void DBusServiceProviderBaseClass::Private::publish()
{
    const std::shared_ptr<DBusLink> link = DBusTracker::instance().link();
    if (!link)
    {
        if (!m_isBusMissed)
        {
            qWarning() << "Cannot offer the D-Bus object" << m_address.path << "of"
                       << m_address.serviceName << "yet: no connection to the bus";
        }
        m_isBusMissed = true;
        return;
    }
    if (link == m_link)
    {
        return;
    }
    m_link = link;
    QDBusConnection connection = link->connection();
    m_isRegistered = connection.registerObject(
        m_address.path, QString::fromUtf8(m_address.interfaceName), &m_provider, m_options);
    if (!m_isRegistered)
    {
        qWarning() << "Cannot offer the D-Bus object" << m_address.path << "of"
                   << m_address.serviceName
                   << "- its path is taken in this process, or not allowed";
    }
    else if (m_isNameWanted)
    {
        // Last: with the name come the calls.
        requestName(connection);
    }
}

void DBusServiceProviderBaseClass::Private::requestName(const QDBusConnection& connection)
{
    auto* const watcher = new QDBusPendingCallWatcher(
        WantedNames::instance().request(m_address.serviceName, connection), &m_provider);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &m_provider, [this, watcher] {
        watcher->deleteLater();
        warnAboutName(*watcher);
    });
}

void DBusServiceProviderBaseClass::Private::warnAboutName(
    const QDBusPendingReply<uint>& reply) const
{
    if (reply.isError() && reply.error().type() != QDBusError::Disconnected)
    {
        qWarning() << "The bus refuses the name" << m_address.serviceName << "for the D-Bus object"
                   << m_address.path << "-" << reply.error().message();
    }
    else if (!reply.isError() && reply.value() == DBUS_REQUEST_NAME_REPLY_IN_QUEUE)
    {
        qWarning() << "The bus name" << m_address.serviceName << "of the D-Bus object"
                   << m_address.path
                   << "belongs to another process; it is taken as soon as it comes free";
    }
}

void DBusServiceProviderBaseClass::Private::withdraw()
{
    DBusTracker::instance().unsubscribe(*this);
    if (m_isRegistered)
    {
        QDBusConnection(m_link->connection()).unregisterObject(m_address.path);
    }
    if (m_isNameWanted)
    {
        WantedNames::instance().remove(m_address.serviceName, m_link.get());
    }
}

DBusServiceProviderBaseClass::DBusServiceProviderBaseClass(
    const QString& moduleName, const QString& objectName, const QString& interfaceName, bool flag,
    const QFlags<QDBusConnection::RegisterOption>& options)
    : d(new Private(*this, moduleName, DBusAddress(moduleName, objectName, interfaceName), flag,
                    options))
{
    DBusTracker::instance().subscribe(*d);
    // Later: only then is the object complete, and its own slots can be called.
    d->tell();
}

DBusServiceProviderBaseClass::~DBusServiceProviderBaseClass()
{
    d->withdraw();
}

void DBusServiceProviderBaseClass::customEvent(QEvent*)
{
    d->hear();
}

QString DBusServiceProviderBaseClass::getModuleName() const
{
    return d->moduleName;
}
