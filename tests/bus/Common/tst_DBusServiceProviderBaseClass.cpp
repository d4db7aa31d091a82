#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/WarningRecorder.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusServiceProviderBaseClass.h"
#include "Platform/PropertyManagerConst.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QTest>

#include <memory>

namespace
{
QString busName(const char* moduleName)
{
    return PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + QLatin1String(moduleName);
}

class Valve : public DBusServiceProviderBaseClass
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.Valve")
public:
    explicit Valve(const char* moduleName, const char* objectName = "Valve", bool isNamed = true)
        : DBusServiceProviderBaseClass(
              QString::fromLatin1(moduleName), QString::fromLatin1(objectName),
              QStringLiteral("Interface.Valve"), isNamed,
              QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals)
    {
    }

public Q_SLOTS:
    int open(int angle) { return m_angle = angle; }

Q_SIGNALS:
    void opened(int angle);

private:
    int m_angle = 0;
};
} // namespace

class tst_DBusServiceProviderBaseClass : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase();

    void warnsOnceWithoutABusAndIsPublishedLater();
    void isPublishedWhenTheEventLoopTurns();
    void answersCallsOfOtherProcesses();
    void answersACallOfItsOwnThread();
    void sendsSignalsOfItsInterface();
    void addsNothingToTheMetaObject();
    void sharesTheNameAmongTheObjectsOfAModule();
    void offersTheObjectAloneWhenTheNameIsNotWanted();
    void warnsAboutATakenPath();
    void takesATakenNameWhenItComesFree();
    void warnsAboutARefusedName();
    void warnsAboutAForbiddenName();
    void isPublishedAgainAfterARestartOfTheBus();
    void canBeMadeAndEndedWhileTheBusRestarts();

private:
    static PrivateBus::Options options();
    /// The answer to a call from outside; invalid when it failed.
    QVariant call(const QString& service, const char* path = "/Valve");

    PrivateBus m_bus{options()};
    WarningRecorder m_warnings;
    int m_clientNumber = 0;
};

PrivateBus::Options tst_DBusServiceProviderBaseClass::options()
{
    PrivateBus::Options options;
    options.policy = QStringLiteral("<policy context=\"default\"><allow send_destination=\"*\"/>"
                                    "<allow receive_sender=\"*\"/><allow own=\"*\"/>"
                                    "<deny own=\"%1\"/></policy>")
                         .arg(busName("Refused"));
    return options;
}

void tst_DBusServiceProviderBaseClass::initTestCase()
{
    QVERIFY(!m_bus.isRunning());
}

void tst_DBusServiceProviderBaseClass::init()
{
    m_warnings.start();
}

void tst_DBusServiceProviderBaseClass::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_DBusServiceProviderBaseClass::cleanupTestCase()
{
    m_bus.stop();
}

QVariant tst_DBusServiceProviderBaseClass::call(const QString& service, const char* path)
{
    const QString name = QStringLiteral("client-%1").arg(++m_clientNumber);
    QVariant answer;
    {
        QDBusMessage message = QDBusMessage::createMethodCall(service, QString::fromLatin1(path),
                                                              QStringLiteral("Interface.Valve"),
                                                              QStringLiteral("open"));
        message << 30;
        const QDBusPendingReply<int> reply = m_bus.connect(name).asyncCall(message);
        waitUntil([&] { return reply.isFinished(); });
        answer = reply.isError() ? QVariant() : QVariant(reply.value());
    }
    QDBusConnection::disconnectFromBus(name);
    return answer;
}

void tst_DBusServiceProviderBaseClass::warnsOnceWithoutABusAndIsPublishedLater()
{
    m_warnings.expect(QStringLiteral("Cannot offer the D-Bus object \"/Valve\" of \"%1\" yet: no "
                                     "connection to the bus")
                          .arg(busName("Early")),
                      QStringLiteral("DBusServiceProviderBaseClass"));
    const Valve valve("Early");
    QCoreApplication::processEvents();

    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY(waitUntil([] { return DBusConnection::getQDBusConnection().isConnected(); }));
    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Early")); }));
    QCOMPARE(call(busName("Early")), QVariant(30));
}

void tst_DBusServiceProviderBaseClass::isPublishedWhenTheEventLoopTurns()
{
    const Valve valve("Pump");
    QCOMPARE(valve.getModuleName(), QStringLiteral("Pump"));
    QVERIFY(!m_bus.hasOwner(busName("Pump")));

    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
}

void tst_DBusServiceProviderBaseClass::answersCallsOfOtherProcesses()
{
    {
        const Valve valve("Pump");
        QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
        QCOMPARE(call(busName("Pump")), QVariant(30));
    }
    QVERIFY(waitUntil([&] { return !m_bus.hasOwner(busName("Pump")); }));
    QVERIFY(!call(DBusConnection::getQDBusConnection().baseService()).isValid());
}

void tst_DBusServiceProviderBaseClass::answersACallOfItsOwnThread()
{
    const Valve valve("Pump");
    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
    QDBusMessage message =
        QDBusMessage::createMethodCall(busName("Pump"), QStringLiteral("/Valve"),
                                       QStringLiteral("Interface.Valve"), QStringLiteral("open"));
    message << 45;
    // Blocks this thread, on which the object itself lives.
    const QDBusMessage answer =
        DBusConnection::getQDBusConnection().call(message, QDBus::Block, 5000);

    QCOMPARE(answer.arguments(), QVariantList{45});
}

void tst_DBusServiceProviderBaseClass::sendsSignalsOfItsInterface()
{
    BusMonitor monitor(m_bus);
    QVERIFY2(monitor.start(), monitor.errorText());
    Valve valve("Pump");
    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
    Q_EMIT valve.opened(45);

    QVERIFY(waitUntil([&] {
        const QVector<RecordedMessage> messages = monitor.receivedSoFar();
        return std::any_of(messages.begin(), messages.end(), [](const RecordedMessage& message) {
            return message.member == QLatin1String("opened") &&
                   message.interface == QLatin1String("Interface.Valve") &&
                   message.path == QLatin1String("/Valve");
        });
    }));
}

void tst_DBusServiceProviderBaseClass::addsNothingToTheMetaObject()
{
    const QMetaObject& type = DBusServiceProviderBaseClass::staticMetaObject;

    QCOMPARE(type.methodCount(), QObject::staticMetaObject.methodCount());
    QCOMPARE(type.propertyCount(), QObject::staticMetaObject.propertyCount());
}

void tst_DBusServiceProviderBaseClass::sharesTheNameAmongTheObjectsOfAModule()
{
    auto first = std::make_unique<Valve>("Pump", "First");
    const Valve second("Pump", "Second");
    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
    QCOMPARE(call(busName("Pump"), "/First"), QVariant(30));

    first.reset();
    QVERIFY(!call(busName("Pump"), "/First").isValid());
    QCOMPARE(call(busName("Pump"), "/Second"), QVariant(30));
}

void tst_DBusServiceProviderBaseClass::offersTheObjectAloneWhenTheNameIsNotWanted()
{
    const Valve valve("Nameless", "Valve", false);
    QVERIFY(waitUntil(
        [&] { return call(DBusConnection::getQDBusConnection().baseService()) == QVariant(30); }));
    QVERIFY(!m_bus.hasOwner(busName("Nameless")));
}

void tst_DBusServiceProviderBaseClass::warnsAboutATakenPath()
{
    m_warnings.expect(
        QStringLiteral("Cannot offer the D-Bus object \"/Valve\" of \"%1\" - its path is taken in "
                       "this process, or not allowed")
            .arg(busName("Other")),
        QStringLiteral("DBusServiceProviderBaseClass"));
    const Valve first("Pump");
    {
        const Valve second("Other");
        QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
    }

    QCOMPARE(call(busName("Pump")), QVariant(30));
    QVERIFY(!m_bus.hasOwner(busName("Other")));
}

void tst_DBusServiceProviderBaseClass::takesATakenNameWhenItComesFree()
{
    m_warnings.expect(
        QStringLiteral("The bus name \"%1\" of the D-Bus object \"/Valve\" belongs to another "
                       "process; it is taken as soon as it comes free")
            .arg(busName("Taken")),
        QStringLiteral("DBusServiceProviderBaseClass"));
    ForeignService owner(m_bus, busName("Taken"));
    QVERIFY2(owner.start(), owner.errorText());
    const Valve valve("Taken");
    QVERIFY(waitUntil([&] { return m_warnings.messages().size() == 1; }));
    owner.kill();

    QVERIFY(waitUntil([&] { return call(busName("Taken")) == QVariant(30); }));
}

void tst_DBusServiceProviderBaseClass::warnsAboutARefusedName()
{
    m_warnings.expectMatch(QStringLiteral("The bus refuses the name \"%1\" for the D-Bus object "
                                          "\"/Valve\" - \".*not allowed to own.*\"")
                               .arg(QRegularExpression::escape(busName("Refused"))),
                           QStringLiteral("DBusServiceProviderBaseClass"));
    const Valve valve("Refused");

    QVERIFY(waitUntil([&] { return m_warnings.messages().size() == 1; }));
}

void tst_DBusServiceProviderBaseClass::warnsAboutAForbiddenName()
{
    m_warnings.expectMatch(QStringLiteral("The bus refuses the name \"%1\" for .*")
                               .arg(QRegularExpression::escape(busName("no name"))));
    const Valve valve("no name");

    QVERIFY(waitUntil([&] { return m_warnings.messages().size() == 1; }));
}

void tst_DBusServiceProviderBaseClass::isPublishedAgainAfterARestartOfTheBus()
{
    const Valve valve("Pump");
    QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
    for (int restart = 0; restart < 3; ++restart)
    {
        QVERIFY2(m_bus.restart(), m_bus.errorText());
        QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
        QCOMPARE(call(busName("Pump")), QVariant(30));
    }
}

void tst_DBusServiceProviderBaseClass::canBeMadeAndEndedWhileTheBusRestarts()
{
    for (int restart = 0; restart < 4; ++restart)
    {
        m_bus.kill();
        for (int i = 0; i < 50; ++i)
        {
            const Valve valve("Pump");
        }
        const Valve last("Pump");
        QVERIFY2(m_bus.start(), m_bus.errorText());
        for (int i = 0; i < 50; ++i)
        {
            const Valve valve("Pump");
            QCoreApplication::processEvents();
        }
        QVERIFY(waitUntil([&] { return m_bus.hasOwner(busName("Pump")); }));
        m_warnings.take();
    }
}

QTEST_GUILESS_MAIN(tst_DBusServiceProviderBaseClass)
#include "tst_DBusServiceProviderBaseClass.moc"
