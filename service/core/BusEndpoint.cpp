#include "core/BusEndpoint.h"

#include "core/AlarmlistReadAdaptor.h"
#include "core/AlarmlistWriteAdaptor.h"
#include "core/BusAnswers.h"
#include "core/EventlistReadAdaptor.h"
#include "core/EventlistService.h"
#include "core/EventlistWriteAdaptor.h"
#include "core/HashRegister.h"
#include "core/HashRegisterAdaptor.h"
#include "core/Names.h"

#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDebug>

namespace eventlistd
{

namespace
{
constexpr int retryMs = 100;

QString localPath()
{
    return QStringLiteral("/org/freedesktop/DBus/Local");
}
} // namespace

BusEndpoint::BusEndpoint(const QString& busName, EventlistService& service, QObject* parent)
    : QObject(parent), m_busName(busName), m_service(service)
{
    registerAnswerTypes();
    new EventlistReadAdaptor(&m_eventlistRead, service);
    new AlarmlistReadAdaptor(&m_alarmlistRead, service);
    new EventlistWriteAdaptor(&m_eventlistWrite, service);
    new AlarmlistWriteAdaptor(&m_alarmlistWrite, service);
    new HashRegisterAdaptor(&m_hashRegister, service);
    m_retryTimer.setSingleShot(true);
    m_retryTimer.setInterval(retryMs);
    QObject::connect(&m_retryTimer, &QTimer::timeout, this, &BusEndpoint::tryToConnect);
    QObject::connect(&service, &EventlistService::iconAvailable, this, &BusEndpoint::announceIcon);
}

BusEndpoint::~BusEndpoint()
{
    dropConnection();
}

void BusEndpoint::start()
{
    tryToConnect();
}

void BusEndpoint::onDisconnected()
{
    qWarning() << "The bus is gone; trying to come back";
    dropConnection();
    m_retryTimer.start();
}

void BusEndpoint::onNameLost(const QString& name)
{
    if (name == m_busName)
    {
        qWarning() << "The bus name" << m_busName << "was lost";
        dropConnection();
        m_retryTimer.start();
    }
}

void BusEndpoint::tryToConnect()
{
    // A connection that has died once never lives again, and its name is used up.
    m_connectionName = QStringLiteral("eventlistd-bus-%1").arg(++m_attempt);
    m_connection = QDBusConnection::connectToBus(QDBusConnection::SystemBus, m_connectionName);
    if (m_connection.isConnected() && publish())
    {
        m_hasWarned = false;
        Q_EMIT ready();
        return;
    }
    if (!m_hasWarned)
    {
        m_hasWarned = true;
        qWarning() << "Cannot be reached on the bus yet:" << m_connection.lastError().message();
    }
    dropConnection();
    m_retryTimer.start();
}

bool BusEndpoint::publish()
{
    m_connection.connect(QString(), localPath(), QStringLiteral("org.freedesktop.DBus.Local"),
                         QStringLiteral("Disconnected"), this, SLOT(onDisconnected()));
    m_connection.connect(QStringLiteral("org.freedesktop.DBus"), QString(),
                         QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameLost"), this,
                         SLOT(onNameLost(QString)));
    m_service.senders().setConnection(m_connection);
    const std::pair<QString, QObject*> objects[] = {
        {names::eventlistWritePath(), &m_eventlistWrite},
        {names::eventlistReadPath(), &m_eventlistRead},
        {names::alarmlistWritePath(), &m_alarmlistWrite},
        {names::alarmlistReadPath(), &m_alarmlistRead},
        {names::hashRegisterPath(), &m_hashRegister}};
    for (const auto& [path, object] : objects)
    {
        if (!m_connection.registerObject(path, object, QDBusConnection::ExportAdaptors))
        {
            return false;
        }
    }
    // The objects first: whoever sees the name may call at once.
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply =
        m_connection.interface()->registerService(m_busName,
                                                  QDBusConnectionInterface::DontQueueService,
                                                  QDBusConnectionInterface::DontAllowReplacement);
    if (reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceNotRegistered)
    {
        qCritical() << "The bus name" << m_busName << "is taken";
        Q_EMIT nameTaken();
    }
    else if (!reply.isValid() && !m_hasWarned)
    {
        qWarning() << "The bus refuses the name" << m_busName << ":" << reply.error().message();
    }
    return reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
}

void BusEndpoint::dropConnection()
{
    m_connection = QDBusConnection(QString());
    m_service.senders().setConnection(m_connection);
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void BusEndpoint::announceIcon(const QString& hash, const QString& icon)
{
    QDBusMessage signal = QDBusMessage::createSignal(HashRegister::pathOf(hash),
                                                     names::eventInterface(), names::iconSignal());
    signal << icon;
    m_connection.send(signal);
}

} // namespace eventlistd
