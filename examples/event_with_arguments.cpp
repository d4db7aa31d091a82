// An event whose text has two placeholders: one is filled with a text of its own in every language,
// the other with the same word in all of them.

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/EventHandler.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    EventHandler started(QStringLiteral("PumpControl"), texts,
                         QStringLiteral("PumpControl/Started"),
                         {EventlistHandlerDefinitions::getKeywordStatus()});

    // Mind the order: the url arguments stand behind the place where they are looked up, the literal
    // arguments last. Both lists have one type, so that a mix-up compiles.
    const QList<EventlistHandlerStructs::stDescriptionArgument> urlArguments = {
        {QStringLiteral("%1"), QStringLiteral("PumpControl/Pump3")}};
    const QList<EventlistHandlerStructs::stDescriptionArgument> arguments = {
        {QStringLiteral("%2"), QStringLiteral("1450 1/min")}};
    started.logEvent(texts, urlArguments, arguments);

    // Events are sent in the background. Who ends at once waits until the bus has taken them.
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    return 0;
}
