// A fault: something that is watched is missing. Here it is a file, which is looked for again and
// again until the standard input ends:
//     fault /run/pump/sensor

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/FaultHandler.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QString sensor = QCoreApplication::arguments().value(1, QStringLiteral("/no/sensor"));
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    FaultHandler sensorMissing(QStringLiteral("PumpControl"), texts,
                               QStringLiteral("PumpControl/SensorMissing"),
                               {EventlistHandlerDefinitions::getKeywordObserver()});

    QTextStream lines(stdin);
    do
    {
        sensorMissing.changeState(!QFileInfo::exists(sensor), {{QStringLiteral("%1"), sensor}});
    }
    while (!lines.readLine().isNull());

    // Events are sent in the background. Who ends at once waits until the bus has taken them.
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    return 0;
}
