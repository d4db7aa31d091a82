#include "DBusLink.h"

#include <dbus/dbus.h>

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QMetaObject>

#include <map>
#include <utility>

/// What the filter knows. It belongs to the bus connection, which may outlive the link.
struct DBusLink::Tap
{
    void hear(DBusMessage* message);
    void hearSignal(DBusMessage* message) const;
    void hearOwnerChange(DBusMessage* message) const;
    void hearAnswer(DBusMessage* message);

    const quint64 generation;
    DBusLink::Listener& listener;
    // Of QtDBus' thread: serial number and bus name.
    std::map<quint32, QByteArray> questions;
};

namespace
{
struct MessageRelease
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using MessagePointer = std::unique_ptr<DBusMessage, MessageRelease>;

QString connectionName(quint64 generation)
{
    return QStringLiteral("EventlistHandlerPlatform-") + QString::number(generation);
}

DBusConnection* rawConnection(const QDBusConnection& connection)
{
    return static_cast<DBusConnection*>(connection.internalPointer());
}

QDBusMessage busCall(const QString& method, const QByteArray& argument)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QLatin1String(DBUS_SERVICE_DBUS), QLatin1String(DBUS_PATH_DBUS),
        QLatin1String(DBUS_INTERFACE_DBUS), method);
    call << QString::fromUtf8(argument);
    return call;
}
} // namespace

void DBusLink::Tap::hearOwnerChange(DBusMessage* message) const
{
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    // Only the bus itself is believed: anybody may send a signal of this name.
    if (qstrcmp(dbus_message_get_sender(message), DBUS_SERVICE_DBUS) == 0 &&
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING,
                              &oldOwner, DBUS_TYPE_STRING, &newOwner, DBUS_TYPE_INVALID))
    {
        listener.ownerChanged(generation, name, newOwner);
    }
}

void DBusLink::Tap::hearSignal(DBusMessage* message) const
{
    Signal signal{dbus_message_get_sender(message), dbus_message_get_path(message),
                  dbus_message_get_member(message), dbus_message_get_signature(message), false};
    if (qstrcmp(signal.signature, DBUS_TYPE_BOOLEAN_AS_STRING) == 0)
    {
        dbus_bool_t argument = FALSE;
        dbus_message_get_args(message, nullptr, DBUS_TYPE_BOOLEAN, &argument, DBUS_TYPE_INVALID);
        signal.argument = argument != FALSE;
    }
    listener.signalArrived(generation, signal);
}

void DBusLink::Tap::hearAnswer(DBusMessage* message)
{
    const auto question = questions.find(dbus_message_get_reply_serial(message));
    if (question == questions.end())
    {
        return;
    }
    const char* owner = "";
    if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_RETURN)
    {
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID);
    }
    const QByteArray name = question->second;
    questions.erase(question);
    listener.ownerAnswered(generation, name, owner);
}

void DBusLink::Tap::hear(DBusMessage* message)
{
    switch (dbus_message_get_type(message))
    {
    case DBUS_MESSAGE_TYPE_SIGNAL:
        if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected"))
        {
            listener.linkLost(generation);
        }
        else if (dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged"))
        {
            hearOwnerChange(message);
        }
        else
        {
            hearSignal(message);
        }
        break;
    case DBUS_MESSAGE_TYPE_METHOD_RETURN:
    case DBUS_MESSAGE_TYPE_ERROR:
        // Answers to calls of QtDBus never get here.
        hearAnswer(message);
        break;
    default:
        break;
    }
}

DBusLink::DBusLink(quint64 generation, const QDBusConnection& connection)
    : m_generation(generation), m_connection(connection)
{
}

std::shared_ptr<DBusLink> DBusLink::open(quint64 generation, Listener& listener)
{
    const QString name = connectionName(generation);
    std::shared_ptr<DBusLink> link(new DBusLink(
        generation, QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)));
    if (DBusConnection* const raw = rawConnection(link->m_connection))
    {
        const auto hear = [](DBusConnection*, DBusMessage* message, void* tap) {
            static_cast<Tap*>(tap)->hear(message);
            return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
        };
        link->m_tap = new Tap{generation, listener, {}};
        dbus_connection_add_filter(raw, hear, link->m_tap,
                                   [](void* tap) { delete static_cast<Tap*>(tap); });
    }
    // Asked after the filter stands: a loss from now on is heard, one before is seen here.
    if (!link->m_connection.isConnected())
    {
        close(std::move(link));
    }
    return link;
}

void DBusLink::close(std::shared_ptr<DBusLink>&& link)
{
    const QString name = connectionName(link->m_generation);
    link.reset();
    QDBusConnection::disconnectFromBus(name);
}

void DBusLink::addMatch(const QByteArray& rule) const
{
    m_connection.send(busCall(QStringLiteral("AddMatch"), rule));
}

void DBusLink::removeMatch(const QByteArray& rule) const
{
    m_connection.send(busCall(QStringLiteral("RemoveMatch"), rule));
}

void DBusLink::followOwner(const QByteArray& name) const
{
    // In this order: no change can slip through between the answer and the first news.
    addMatch("type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS
             "',member='NameOwnerChanged',arg0='" +
             name + '\'');
    // The bus interface lives on QtDBus' thread, the only one that may use the connection of
    // libdbus: from another, a full socket makes QtDBus stop writing for good.
    const std::shared_ptr<const DBusLink> self = shared_from_this();
    QMetaObject::invokeMethod(
        m_connection.interface(), [self, name] { self->askOwner(name); }, Qt::QueuedConnection);
}

void DBusLink::askOwner(const QByteArray& name) const
{
    // Without a pending call, so that the answer runs through the filter, in its order among the
    // news.
    const MessagePointer message(dbus_message_new_method_call(
        DBUS_SERVICE_DBUS, DBUS_PATH_DBUS, DBUS_INTERFACE_DBUS, "GetNameOwner"));
    const char* const argument = name.constData();
    dbus_uint32_t serial = 0;
    if (message &&
        dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID) &&
        dbus_connection_send(rawConnection(m_connection), message.get(), &serial))
    {
        m_tap->questions[serial] = name;
    }
}
