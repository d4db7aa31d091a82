#include "EventHandlers/EventHandler.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

// One event over the bus, one into a spool file, then a word with the bus, which has taken the first by then.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    const QString url = QStringLiteral("EventlistHandler/CentralDetectorActive");
    EventHandler onBus(QStringLiteral("Consumer"), texts, url, {});
    EventHandler inFile(QStringLiteral("Consumer"), texts, url, {});
    inFile.setEventToFile(QStringLiteral("consumer"));
    onBus.logEvent({});
    inFile.logEvent({});
    const auto ping = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    return DBusConnection::getQDBusConnection().call(ping).type() == QDBusMessage::ReplyMessage ? 0
                                                                                                : 1;
}
