// An audit trail entry: who has changed what, and from which value to which.

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/AuditTrailHandler.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    AuditTrailHandler limitChanged(QStringLiteral("PumpControl"), texts,
                                   QStringLiteral("PumpControl/LimitChanged"),
                                   {EventlistHandlerDefinitions::getKeywordUser()});

    // The user is a claim of this module: whoever reads the trail believes the module.
    limitChanged.logAuditTrail(QStringLiteral("anna"),
                               {{QStringLiteral("%1"), QStringLiteral("80.0 °C")},
                                {QStringLiteral("%2"), QStringLiteral("75.0 °C")}});

    // Events are sent in the background. Who ends at once waits until the bus has taken them.
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
    return 0;
}
