// A service that takes events and writes down when each arrived, at once, so that nothing of it is
// lost when it is killed. It is made of libdbus alone.
//
//   journal_service <bus name> <journal> [--standby]
//
// With --standby it waits until the present owner gives up the name.
//
// Lines of the journal: "<time> ready" when it owns its name, "<time> <user of the event>" for each
// event; times in nanoseconds of the monotonic clock.

#include <dbus/dbus.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <unistd.h>

namespace
{
int journal = -1;

std::int64_t nowNs()
{
    timespec now{};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return std::int64_t(now.tv_sec) * 1000000000 + now.tv_nsec;
}

void writeLine(std::int64_t timeNs, const char* text)
{
    char line[128];
    const int length = std::snprintf(line, sizeof line, "%" PRId64 " %.64s\n", timeNs, text);
    if (::write(journal, line, std::size_t(length)) != length)
    {
        std::perror("journal");
        std::exit(1);
    }
}

void announce(const char* what)
{
    std::puts(what);
    std::fflush(stdout);
}

DBusHandlerResult take(DBusConnection*, DBusMessage* message, void* name)
{
    if (dbus_message_is_signal(message, DBUS_INTERFACE_DBUS, "NameAcquired"))
    {
        const char* acquired = nullptr;
        dbus_message_get_args(message, nullptr, DBUS_TYPE_STRING, &acquired, DBUS_TYPE_INVALID);
        if (std::strcmp(acquired, static_cast<const char*>(name)) == 0)
        {
            writeLine(nowNs(), "ready");
            announce("ready");
        }
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    if (!dbus_message_is_method_call(message, "Interface.EventlistWrite", "logEvent"))
    {
        return DBUS_HANDLER_RESULT_NOT_YET_HANDLED;
    }
    if (std::strcmp(dbus_message_get_signature(message), "assssassss") != 0 ||
        dbus_message_get_no_reply(message) == FALSE)
    {
        writeLine(nowNs(), "malformed");
        return DBUS_HANDLER_RESULT_HANDLED;
    }
    DBusMessageIter argument;
    dbus_message_iter_init(message, &argument);
    constexpr int placeOfUser = 5;
    for (int i = 0; i < placeOfUser; ++i)
    {
        dbus_message_iter_next(&argument);
    }
    const char* user = nullptr;
    dbus_message_iter_get_basic(&argument, &user);
    writeLine(nowNs(), user);
    return DBUS_HANDLER_RESULT_HANDLED;
}

int fail(const char* what, const DBusError& error)
{
    std::fprintf(stderr, "journal_service: %s: %s\n", what, error.message);
    return 1;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    const bool isStandby = argumentCount == 4 && std::strcmp(arguments[3], "--standby") == 0;
    if (argumentCount != 3 && !isStandby)
    {
        std::fprintf(stderr, "usage: journal_service <bus name> <journal> [--standby]\n");
        return 2;
    }
    journal = ::open(arguments[2], O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600);
    DBusError error = DBUS_ERROR_INIT;
    DBusConnection* const connection = dbus_bus_get_private(DBUS_BUS_SYSTEM, &error);
    if (connection == nullptr)
    {
        return fail("no bus", error);
    }
    // The end of the bus is the end of this service.
    dbus_connection_set_exit_on_disconnect(connection, TRUE);
    dbus_connection_add_filter(connection, take, arguments[1], nullptr);
    const int answer = dbus_bus_request_name(connection, arguments[1],
                                             isStandby ? 0 : DBUS_NAME_FLAG_DO_NOT_QUEUE, &error);
    if (answer !=
        (isStandby ? DBUS_REQUEST_NAME_REPLY_IN_QUEUE : DBUS_REQUEST_NAME_REPLY_PRIMARY_OWNER))
    {
        return fail("the name is taken, or free for a standby", error);
    }
    if (isStandby)
    {
        announce("standby");
    }
    while (dbus_connection_read_write_dispatch(connection, -1) != FALSE)
    {
    }
    return 0;
}
