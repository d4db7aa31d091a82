#include "DBusLink.h"

#include <dbus/dbus.h>

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QEvent>
#include <QObject>

#include <atomic>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

/// Where messages are heard, and questions asked, both on QtDBus' thread: no other may use the
/// connection of libdbus. From another, a full socket would make QtDBus stop writing for good.
/// It belongs to the bus connection, which may outlive the link.
class DBusLink::Tap final : public QObject
{
public:
    Tap(quint64 generationOfLink, Listener& listenerOfLink, DBusConnection* connection)
        : m_generation(generationOfLink), m_listener(listenerOfLink), m_connection(connection)
    {
    }

    static void open(Tap* tap, QThread* thread);
    quint64 request(const char* method, const QByteArray& argument);

protected:
    void customEvent(QEvent*) override;

private:
    /// A call of the bus itself.
    struct Request
    {
        const char* method;
        QByteArray argument;
    };

    static DBusHandlerResult hear(DBusConnection*, DBusMessage* message, void* tap);
    void hear(DBusMessage* message);
    void hearSignal(DBusMessage* message) const;
    void hearOwnerChange(DBusMessage* message) const;
    void hearAnswer(DBusMessage* message);
    void send(const Request& request);

    // Fixed at construction.
    const quint64 m_generation;
    Listener& m_listener;
    DBusConnection* const m_connection;
    // Guarded by the mutex.
    std::mutex m_mutex;
    std::vector<Request> m_requests;
    quint64 m_lastTicket = 0;
    // Of QtDBus' thread: serial number and bus name.
    std::map<quint32, QByteArray> m_questions;
};

namespace
{
struct MessageRelease
{
    void operator()(DBusMessage* message) const { dbus_message_unref(message); }
};
using MessagePointer = std::unique_ptr<DBusMessage, MessageRelease>;

// Makes visible to QtDBus' thread what was written before a tap was handed to it. QtDBus has locks
// on the way as well, but no promise of them.
std::atomic<int> handedOverTaps{0};

QString connectionName(quint64 generation)
{
    return QStringLiteral("EventlistHandlerPlatform-") + QString::number(generation);
}

DBusConnection* rawConnection(const QDBusConnection& connection)
{
    return static_cast<DBusConnection*>(connection.internalPointer());
}

constexpr char getNameOwner[] = "GetNameOwner";
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
        m_listener.ownerChanged(m_generation, name, newOwner);
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
    m_listener.signalArrived(m_generation, signal);
}

void DBusLink::Tap::hearAnswer(DBusMessage* message)
{
    const auto question = m_questions.find(dbus_message_get_reply_serial(message));
    if (question == m_questions.end())
    {
        return;
    }
    const char* owner = "";
    if (dbus_message_get_type(message) == DBUS_MESSAGE_TYPE_METHOD_RETURN)
    {
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &owner, DBUS_TYPE_INVALID);
    }
    const QByteArray name = question->second;
    m_questions.erase(question);
    m_listener.ownerAnswered(m_generation, name, owner);
}

DBusHandlerResult DBusLink::Tap::hear(DBusConnection*, DBusMessage* message, void* tap)
{
    handedOverTaps.load(std::memory_order_acquire);
    static_cast<Tap*>(tap)->hear(message);
    return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
}

void DBusLink::Tap::hear(DBusMessage* message)
{
    switch (dbus_message_get_type(message))
    {
    case DBUS_MESSAGE_TYPE_SIGNAL:
        if (dbus_message_is_signal(message, DBUS_INTERFACE_LOCAL, "Disconnected"))
        {
            m_listener.linkLost(m_generation);
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

void DBusLink::Tap::open(Tap* tap, QThread* thread)
{
    tap->moveToThread(thread);
    handedOverTaps.fetch_add(1, std::memory_order_release);
    dbus_connection_add_filter(tap->m_connection, hear, tap,
                               [](void* unused) { delete static_cast<Tap*>(unused); });
}

quint64 DBusLink::Tap::request(const char* method, const QByteArray& argument)
{
    quint64 ticket = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_requests.push_back({method, argument});
        ticket = ++m_lastTicket;
    }
    QCoreApplication::postEvent(this, new QEvent(QEvent::User));
    return ticket;
}

void DBusLink::Tap::customEvent(QEvent*)
{
    handedOverTaps.load(std::memory_order_acquire);
    std::vector<Request> requests;
    quint64 ticket = 0;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        requests.swap(m_requests);
        ticket = m_lastTicket;
    }
    for (const Request& request : requests)
    {
        send(request);
    }
    m_listener.requestsSent(m_generation, ticket);
}

void DBusLink::Tap::send(const Request& request)
{
    const MessagePointer message(dbus_message_new_method_call(DBUS_SERVICE_DBUS, DBUS_PATH_DBUS,
                                                              DBUS_INTERFACE_DBUS, request.method));
    const char* const argument = request.argument.constData();
    if (!message ||
        !dbus_message_append_args(message.get(), DBUS_TYPE_STRING, &argument, DBUS_TYPE_INVALID))
    {
        return;
    }
    const bool isQuestion = request.method == getNameOwner;
    dbus_message_set_no_reply(message.get(), !isQuestion);
    // Without a pending call, so that the answer runs through the filter, in its order among the
    // news.
    dbus_uint32_t serial = 0;
    if (dbus_connection_send(m_connection, message.get(), &serial) && isQuestion)
    {
        m_questions[serial] = request.argument;
    }
}

DBusLink::DBusLink(quint64 generation, const QDBusConnection& connection)
    : m_generation(generation), m_connection(connection)
{
}

std::shared_ptr<DBusLink> DBusLink::open(quint64 generation, Listener& listener)
{
    const QString name = connectionName(generation);
    std::shared_ptr<DBusLink> link(
        new DBusLink(generation, QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)));
    if (DBusConnection* const raw = rawConnection(link->m_connection))
    {
        // The bus interface lives on QtDBus' thread.
        link->m_tap = new Tap(generation, listener, raw);
        Tap::open(link->m_tap, link->m_connection.interface()->thread());
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

quint64 DBusLink::addMatch(const QByteArray& rule) const
{
    return m_tap->request("AddMatch", rule);
}

void DBusLink::removeMatch(const QByteArray& rule) const
{
    m_tap->request("RemoveMatch", rule);
}

void DBusLink::followOwner(const QByteArray& name) const
{
    // In this order: no change can slip through between the answer and the first news.
    addMatch("type='signal',sender='" DBUS_SERVICE_DBUS "',interface='" DBUS_INTERFACE_DBUS
             "',member='NameOwnerChanged',arg0='" +
             name + '\'');
    m_tap->request(getNameOwner, name);
}
