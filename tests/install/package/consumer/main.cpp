#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerEnums.h"
#include "EventHandlers/EventHandlerBaseClass.h"

#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDebug>
#include <QStringList>

namespace
{
// The module's own client of another module.
class Valve : public DBusConnectorBase
{
public:
    Valve()
        : DBusConnectorBase(QStringLiteral("Valves"), QStringLiteral("Inlet"),
                            QStringLiteral("Interface.Valve"), nullptr, defaultMode)
    {
    }

    bool open(int percent) const
    {
        return !syncCallNoBlock(QStringLiteral("open"), percent).isError();
    }
};
} // namespace

// Reports one event into the spool file that the first argument names. Without an argument it reports
// over the bus, and calls another module.
int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(PUMP_TEXT_FOLDER));
    EventHandlerBaseClass pump(QStringLiteral("pump"), texts,
                               QStringLiteral("EventlistHandler/CentralDetectorActive"),
                               {QStringLiteral("Maintenance")});
    const bool isOnBus = application.arguments().size() < 2;
    if (!isOnBus)
    {
        pump.setEventToFile(application.arguments().at(1));
    }
    pump.logEvent(EventlistHandlerEnums::EventType::fault, EventlistHandlerEnums::active, {},
                  QString(), QString());
    if (isOnBus && !Valve().open(50))
    {
        qWarning() << "pump: the valve stays as it is";
    }
    return 0;
}
