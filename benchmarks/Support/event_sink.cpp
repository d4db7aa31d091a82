// A central service that throws away what it gets, so that the cost of a sender can be measured
// without that of a list. It knows nothing of Qt and of the library.
//
//   event_sink <bus name>
//
// Prints "ready". Answers every call that wants an answer with an empty one; beside that, of the
// interface "Benchmark.Sink":
//
//   startComparison            from now on it looks into the events
//   takeSummary -> u t t       how many came since then, a sum over all values but the times, bytes
//   announceChange             sends the signal that the list has changed

#include <dbus/dbus.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

namespace
{
constexpr char interfaceOfSink[] = "Benchmark.Sink";

class Sink
{
public:
    explicit Sink(DBusConnection* connection) : m_connection(connection) {}

    static DBusHandlerResult hear(DBusConnection*, DBusMessage* message, void* sink)
    {
        return static_cast<Sink*>(sink)->hear(message);
    }

private:
    DBusHandlerResult hear(DBusMessage* message);
    void addTexts(DBusMessageIter& values, bool isEvent);
    void announceChange();
    void answer(DBusMessage* message);

    DBusConnection* const m_connection;
    bool m_isComparing = false;
    dbus_uint32_t m_count = 0;
    dbus_uint64_t m_sum = 0;
    dbus_uint64_t m_bytes = 0;
};

void Sink::addTexts(DBusMessageIter& values, bool isEvent)
{
    for (int index = 0; dbus_message_iter_get_arg_type(&values) != DBUS_TYPE_INVALID; ++index)
    {
        if (dbus_message_iter_get_arg_type(&values) == DBUS_TYPE_ARRAY)
        {
            DBusMessageIter elements;
            dbus_message_iter_recurse(&values, &elements);
            addTexts(elements, false);
        }
        else if (dbus_message_iter_get_arg_type(&values) == DBUS_TYPE_STRING)
        {
            const char* text = nullptr;
            dbus_message_iter_get_basic(&values, &text);
            m_bytes += std::strlen(text);
            // The second value of an event is its time.
            for (; !(isEvent && index == 1) && *text != '\0'; ++text)
            {
                m_sum = (m_sum ^ static_cast<unsigned char>(*text)) * 1099511628211U;
            }
        }
        m_sum = (m_sum ^ 0xffU) * 1099511628211U;
        dbus_message_iter_next(&values);
    }
}

void Sink::announceChange()
{
    DBusMessage* const signal =
        dbus_message_new_signal("/EventlistRead", "Interface.EventlistRead", "changedEventlist");
    dbus_connection_send(m_connection, signal, nullptr);
    dbus_message_unref(signal);
}

void Sink::answer(DBusMessage* message)
{
    DBusMessage* const reply = dbus_message_new_method_return(message);
    if (dbus_message_is_method_call(message, interfaceOfSink, "takeSummary"))
    {
        dbus_message_append_args(reply, DBUS_TYPE_UINT32, &m_count, DBUS_TYPE_UINT64, &m_sum,
                                 DBUS_TYPE_UINT64, &m_bytes, DBUS_TYPE_INVALID);
        m_isComparing = false;
    }
    dbus_connection_send(m_connection, reply, nullptr);
    dbus_message_unref(reply);
}

DBusHandlerResult Sink::hear(DBusMessage* message)
{
    if (dbus_message_get_type(message) != DBUS_MESSAGE_TYPE_METHOD_CALL ||
        dbus_message_has_interface(message, DBUS_INTERFACE_PEER))
    {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    if (dbus_message_is_method_call(message, interfaceOfSink, "startComparison"))
    {
        m_isComparing = true;
        m_count = 0;
        m_sum = 0;
        m_bytes = 0;
    }
    else if (dbus_message_is_method_call(message, interfaceOfSink, "announceChange"))
    {
        announceChange();
    }
    else if (m_isComparing && dbus_message_has_member(message, "logEvent"))
    {
        DBusMessageIter values;
        dbus_message_iter_init(message, &values);
        addTexts(values, true);
        ++m_count;
    }
    if (!dbus_message_get_no_reply(message))
    {
        answer(message);
    }
    return DBUS_HANDLER_RESULT_HANDLED;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    DBusConnection* const connection = dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr);
    if (argumentCount != 2 || connection == nullptr ||
        dbus_bus_request_name(connection, arguments[1], DBUS_NAME_FLAG_DO_NOT_QUEUE, nullptr) !=
            DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER)
    {
        std::fprintf(stderr, "event_sink: there is no bus, or no name to have on it\n");
        return 1;
    }
    Sink sink(connection);
    dbus_connection_add_filter(connection, Sink::hear, &sink, nullptr);
    std::puts("ready");
    std::fflush(stdout);
    while (dbus_connection_read_write_dispatch(connection, -1))
    {
    }
    return 0;
}
