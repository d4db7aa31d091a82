#include "Definitions/EventlistHandlerEnums.h"
#include "EventHandlers/EventHandlerBaseClass.h"

#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QStringList>

// Reports one event into the spool file that the first argument names.
int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(PUMP_TEXT_FOLDER));
    EventHandlerBaseClass pump(QStringLiteral("pump"), texts,
                               QStringLiteral("EventlistHandler/CentralDetectorActive"),
                               {QStringLiteral("Maintenance")});
    pump.setEventToFile(application.arguments().value(1));
    pump.logEvent(EventlistHandlerEnums::EventType::fault, EventlistHandlerEnums::active, {},
                  QString(), QString());
    return 0;
}
