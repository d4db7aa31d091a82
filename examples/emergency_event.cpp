// The last words of a supervisor: an event that needs no bus, no service, no texts and no
// QCoreApplication, and that lies safely on the disk when the call returns.
//     emergency_event supervisor PumpControl

#include "EventWrite/EventlistHandlerEventToFile.h"

#include <cstdlib>

int main(int argc, char** argv)
{
    const QString moduleName = QString::fromUtf8(argc > 1 ? argv[1] : "supervisor");
    const QString reason = QString::fromUtf8(argc > 2 ? argv[2] : "PumpControl");

    EventlistHandlerEventToFile().setEventWatchdogEmergency(moduleName, reason);

    // Nothing is left to be done, so nothing can be lost any more.
    std::_Exit(0);
}
