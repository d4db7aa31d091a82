// A description and an argument that nobody has translated in advance: whoever configured the plant
// has entered them, in several languages. They stand in configuration/pump3.json.

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/EventHandler.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationDataAndProcessDescriptionAccess.h"
#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QSharedPointer<ConfigurationAndProcessDataBase> configuration =
        ConfigurationDataAndProcessDescriptionAccess::getParsedConfigurationProcessDescription(
            QDir(QStringLiteral(CONFIGURATION_FOLDER)), QStringLiteral("pump3"), false);
    if (configuration.isNull())
    {
        return 1; // the warning names the file
    }

    // With a tree, the description is the path of a leaf and no text url.
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    EventHandler blocked(QStringLiteral("PumpControl"), texts, configuration,
                         QStringLiteral("Messages/Blocked"),
                         {EventlistHandlerDefinitions::getKeywordConfiguration()});
    blocked.logEvent(configuration, {{QStringLiteral("%1"), QStringLiteral("Name")}}, {});

    // Events are sent in the background. Who ends at once waits until the bus has taken them.
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    return 0;
}
