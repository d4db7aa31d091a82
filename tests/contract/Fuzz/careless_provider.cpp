// A provider that reads what a message holds without asking for its shape. The fuzz must bring it down: one that
// leaves it alive finds nothing elsewhere either.

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QSocketNotifier>
#include <QTextStream>
#include <QVariantMap>

#include <cstdio>

class CarelessEvents : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.Events")
public Q_SLOTS:
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QVariantMap& descriptionData,
                  const QStringList& keywords, const QString& user, const QString& alarmId);
};

void CarelessEvents::logEvent(const QStringList&, const QString&, const QString&,
                              const QVariantMap& descriptionData, const QStringList&,
                              const QString&, const QString&)
{
    const auto list = descriptionData.value(QStringLiteral("Arguments")).value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd())
    {
        QVariant element;
        list >> element;
        QVariantMap entry;
        element.value<QDBusArgument>() >> entry;
    }
    list.endArray();
}

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    CarelessEvents events;
    QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, QStringLiteral("careless"));
    if (!bus.registerObject(QStringLiteral("/Events"), &events, QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QStringLiteral(BUS_NAME)))
    {
        return 1;
    }
    QTextStream(stdout) << "careless_provider: offers " << BUS_NAME << '\n';
    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}

#include "careless_provider.moc"
