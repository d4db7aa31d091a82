// Logs an event through the provider of the module "PumpControl", over QtDBus alone: a client needs
// nothing of this library.
//     pump_client [name of the module that reports]

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDateTime>
#include <QTextStream>
#include <QVariantMap>

namespace
{
// A description dictionary names texts; it holds none.
QVariantMap textOf(const QString& url)
{
    return {{QStringLiteral("textSource"), 0}, // 0: language file, 1: configuration
            {QStringLiteral("moduleName"), QStringLiteral("PumpControl")},
            {QStringLiteral("ObjectName"), QStringLiteral("PumpControl")},
            {QStringLiteral("InstanceName"), QString()},
            {QStringLiteral("url"), url}};
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QVariantMap pump = textOf(QStringLiteral("PumpControl/Pump3"));
    pump.insert(QStringLiteral("Placeholder"), QStringLiteral("%1"));
    QVariantMap description = textOf(QStringLiteral("PumpControl/OverTemperature"));
    description.insert(QStringLiteral("UrlArguments"), QVariantList{pump});
    description.insert(
        QStringLiteral("Arguments"),
        QVariantList{QVariantMap{{QStringLiteral("Placeholder"), QStringLiteral("%2")},
                                 {QStringLiteral("Argument"), QStringLiteral("97.5")}}});

    const QDateTime now = QDateTime::currentDateTime();
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.eventlist.PumpControl"), QStringLiteral("/Events"),
        QStringLiteral("Interface.Events"), QStringLiteral("logEvent"));
    call << QStringList{QStringLiteral("3"), QStringLiteral("0"), QStringLiteral("EventlistEvent")}
         << now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODateWithMs)
         << QCoreApplication::arguments().value(1, QStringLiteral("cpp-client")) << description
         << QStringList{QStringLiteral("Status")} << QString() << QString();

    const QDBusMessage answer =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("client"))
            .call(call);
    if (answer.type() == QDBusMessage::ErrorMessage)
    {
        QTextStream(stderr) << "client: " << answer.errorMessage() << '\n';
        return 1;
    }
    return 0;
}
