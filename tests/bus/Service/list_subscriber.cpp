// A module that follows both lists, as it is shipped: the library, and the platform behind it.
//
//   list_subscriber signals    hears the signals, in an event loop
//   list_subscriber polling    polls, without event loop and without QCoreApplication
//
// It prints "ready" when its subscriptions stand at the bus, and then a line for each change that it is
// told of: the name of the signal, and for those with a state a 1 or a 0. It ends with its standard
// input.

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include "Platform/DBusConnection.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QSocketNotifier>

#include <cstdio>
#include <cstring>

#include <poll.h>
#include <unistd.h>

namespace
{
using AlarmList = AlarmlistHandlerDBusConnectorRead;
using EventList = EventlistHandlerDBusConnectorRead;

constexpr int pollIntervalMs = 1;

void say(const char* what)
{
    std::printf("%s\n", what);
    std::fflush(stdout);
}

void say(const char* what, bool isOn)
{
    std::printf("%s %d\n", what, isOn ? 1 : 0);
    std::fflush(stdout);
}

// The daemon answers this after it has taken all subscriptions.
bool areSubscriptionsTaken()
{
    const QDBusMessage question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    return DBusConnection::getQDBusConnection().call(question).type() == QDBusMessage::ReplyMessage;
}

struct State
{
    const char* name;
    void (AlarmList::*signal)(bool);
    bool (AlarmList::*poll)(bool&);
};

constexpr State states[] = {
    {"changedAlarmInAlarmlist", &AlarmList::changedAlarmInAlarmlist,
     &AlarmList::changedFlagAlarmInAlarmlist},
    {"changedActiveAlarmInAlarmlist", &AlarmList::changedActiveAlarmInAlarmlist,
     &AlarmList::changedFlagActiveAlarmInAlarmlist},
    {"changedFaultInAlarmlist", &AlarmList::changedFaultInAlarmlist,
     &AlarmList::changedFlagFaultInAlarmlist},
    {"changedActiveFaultInAlarmlist", &AlarmList::changedActiveFaultInAlarmlist,
     &AlarmList::changedFlagActiveFaultInAlarmlist},
    {"changedCentralDetector", &AlarmList::changedCentralDetector,
     &AlarmList::changedFlagCentralDetector},
};

int hearSignals(int argumentCount, char** arguments)
{
    QCoreApplication application(argumentCount, arguments);
    const auto alarms = AlarmList::createAndConnect();
    const auto events = EventList::createAndConnect(false);
    QObject::connect(events.data(), &EventList::changedEventlist, [] { say("changedEventlist"); });
    QObject::connect(alarms.data(), &AlarmList::changedAlarmlist, [] { say("changedAlarmlist"); });
    for (const State& state : states)
    {
        QObject::connect(alarms.data(), state.signal,
                         [&state](bool isOn) { say(state.name, isOn); });
    }
    if (!areSubscriptionsTaken())
    {
        return 1;
    }
    say("ready");
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

int pollLists()
{
    AlarmList alarms(true);
    EventList events(true);
    if (!areSubscriptionsTaken())
    {
        return 1;
    }
    say("ready");
    pollfd input{STDIN_FILENO, POLLIN, 0};
    while (::poll(&input, 1, pollIntervalMs) == 0)
    {
        if (events.changedFlagEventlist())
        {
            say("changedEventlist");
        }
        if (alarms.changedFlagAlarmlist())
        {
            say("changedAlarmlist");
        }
        for (const State& state : states)
        {
            bool isOn = false;
            while ((alarms.*state.poll)(isOn))
            {
                say(state.name, isOn);
            }
        }
    }
    return 0;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount == 2 && std::strcmp(arguments[1], "signals") == 0)
    {
        return hearSignals(argumentCount, arguments);
    }
    if (argumentCount == 2 && std::strcmp(arguments[1], "polling") == 0)
    {
        return pollLists();
    }
    std::fprintf(stderr, "list_subscriber signals|polling\n");
    return 2;
}
