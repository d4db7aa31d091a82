#include "DBusLink.h"

#include <dbus/dbus.h>

#include <QtGlobal>

#include <utility>

namespace
{
struct MessageRelease
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using MessagePointer = std::unique_ptr<DBusMessage, MessageRelease>;

/// What the filter knows. It belongs to the bus connection, which may outlive the link.
struct Tap
{
    quint64 generation;
    DBusLink::Listener* listener;
};

QString connectionName(quint64 generation)
{
    return QStringLiteral("EventlistHandlerPlatform-") + QString::number(generation);
}

DBusConnection* rawConnection(const QDBusConnection& connection)
{
    return static_cast<DBusConnection*>(connection.internalPointer());
}

MessagePointer busCall(const char* method, const char* argument)
{
    MessagePointer message(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS,
                                                        DBUS_INTERFACE_DBUS, method));
    if (message)
    {
        dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID);
    }
    return message;
}

void sendWithoutReply(const QDBusConnection& connection, const char* method,
                      const QByteArray& argument)
{
    const MessagePointer message = busCall(method, argument.constData());
    if (message)
    {
        dbus_message_set_no_reply(message.get(), TRUE);
        dbus_connection_send(rawConnection(connection), message.get(), nullptr);
    }
}

void hearOwnerChange(const Tap& tap, DBusMessage* message)
{
    const char* name = nullptr;
    const char* oldOwner = nullptr;
    const char* newOwner = nullptr;
    // Only the bus itself is believed: anybody may send a signal of this name.
    if (qstrcmp(dbus_message_get_sender(message), DBUS_SERVICE_DBUS) == 0 &&
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &name, DBUS_TYPE_STRING,
                              &oldOwner, DBUS_TYPE_STRING, &newOwner, DBUS_TYPE_INVALID))
    {
        tap.listener->ownerChanged(tap.generation, name, newOwner);
    }
}

void hearSignal(const Tap& tap, DBusMessage* message)
{
    DBusLink::Signal signal{dbus_message_get_sender(message), dbus_message_get_path(message),
                            dbus_message_get_member(message), dbus_message_get_signature(message),
                            false};
    if (qstrcmp(signal.signature, DBUS_TYPE_BOOLEAN_AS_STRING) == 0)
    {
        dbus_bool_t argument = FALSE;
        dbus_message_get_args(message, nullptr, DBUS_TYPE_BOOLEAN, &argument, DBUS_TYPE_INVALID);
        signal.argument = argument != FALSE;
    }
    tap.listener->signalArrived(tap.generation, signal);
}

void hearAnswer(const Tap& tap, DBusMessage* message)
{
    const char* owner = "";
    if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_RETURN)
    {
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID);
    }
    tap.listener->ownerAnswered(tap.generation, dbus_message_get_reply_serial(message), owner);
}

DBusHandlerResult filter(DBusConnection*, DBusMessage* message, void* data)
{
    const Tap& tap = *static_cast<Tap*>(data);
    switch (dbus_message_get_type(message))
    {
    case DBUS_MESSAGE_TYPE_SIGNAL:
        if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected"))
        {
            tap.listener->linkLost(tap.generation);
        }
        else if (dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameOwnerChanged"))
        {
            hearOwnerChange(tap, message);
        }
        else
        {
            hearSignal(tap, message);
        }
        break;
    case DBUS_MESSAGE_TYPE_METHOD_RETURN:
    case DBUS_MESSAGE_TYPE_ERROR:
        // Answers to calls of QtDBus never get here; these are the answers to our own questions.
        hearAnswer(tap, message);
        break;
    default:
        break;
    }
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}
} // namespace

DBusLink::DBusLink(quint64 generation, const QDBusConnection& connection)
    : m_generation(generation), m_connection(connection)
{
}

std::shared_ptr<DBusLink> DBusLink::open(quint64 generation, Listener& listener)
{
    const QString name = connectionName(generation);
    std::shared_ptr<DBusLink> link(new DBusLink(
        generation, QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)));
    DBusConnection* const raw = rawConnection(link->m_connection);
    if (raw != nullptr)
    {
        const auto deleteTap = [](void* data) { delete static_cast<Tap*>(data); };
        dbus_connection_add_filter(raw, filter, new Tap{generation, &listener}, deleteTap);
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
    sendWithoutReply(m_connection, "AddMatch", rule);
}

void DBusLink::removeMatch(const QByteArray& rule) const
{
    sendWithoutReply(m_connection, "RemoveMatch", rule);
}

void DBusLink::watchOwner(const QByteArray& name) const
{
    addMatch("type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS
             "',member='NameOwnerChanged',arg0='" +
             name + '\'');
}

quint32 DBusLink::askOwner(const QByteArray& name) const
{
    // No pending call: its callback could be set too late. As it is, the answer runs through the
    // filter, in its order among the news.
    dbus_uint32_t serial = 0;
    const MessagePointer message = busCall("GetNameOwner", name.constData());
    if (message)
    {
        dbus_connection_send(rawConnection(m_connection), message.get(), &serial);
    }
    return serial;
}
