// An alarm that comes and goes at a limit. The readings come from the standard input, one a line:
//     printf '21.0\n97.5\n98.1\n40.0\n' | alarm

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/AlarmHandler.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER)); // outlives the alarm
    AlarmHandler overTemperature(QStringLiteral("PumpControl"), texts,
                                 QStringLiteral("PumpControl/OverTemperature"),
                                 {EventlistHandlerDefinitions::getKeywordError()});

    const double limit = 80.0;
    QTextStream readings(stdin);
    QString reading;
    while (readings.readLineInto(&reading))
    {
        // Tell every reading; only a change makes an event. %1 is translated, %2 is not.
        overTemperature.changeState(reading.toDouble() > limit, texts,
                                    {{QStringLiteral("%1"), QStringLiteral("PumpControl/Pump3")}},
                                    {{QStringLiteral("%2"), reading}});
    }

    // Events are sent in the background. Who ends at once waits until the bus has taken them.
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    return 0;
}
