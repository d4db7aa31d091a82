#include "EventWrite/EventlistHandlerEventToFile.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdlib>
#include <cstring>

// Writes the emergency event without a QCoreApplication, in the way that EMERGENCY_EVENT names:
//   static  from a static constructor, before main
//   main    from main, then returns
//   kill    from main, then is killed by a signal that nothing can handle
// It is a variable of the environment because a static constructor sees no arguments.

namespace
{

bool isAsked(const char* way)
{
    const char* const asked = std::getenv("EMERGENCY_EVENT");
    return asked != nullptr && std::strcmp(asked, way) == 0;
}

void writeEvent()
{
    EventlistHandlerEventToFile().setEventWatchdogEmergency(QStringLiteral("supervisor"),
                                                            QStringLiteral("PumpControl"));
}

struct BeforeMain
{
    BeforeMain()
    {
        if (isAsked("static"))
        {
            writeEvent();
        }
    }
};

const BeforeMain beforeMain;

} // namespace

int main()
{
    if (QCoreApplication::instance() != nullptr)
    {
        return 1;
    }
    if (isAsked("main"))
    {
        writeEvent();
    }
    if (isAsked("kill"))
    {
        writeEvent();
        std::raise(SIGKILL);
    }
    return 0;
}
