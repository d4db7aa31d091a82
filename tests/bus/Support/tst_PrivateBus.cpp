#include "TestSupport/PrivateBus.h"
#include "TestSupport/WarningRecorder.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusReply>
#include <QDir>
#include <QTest>

namespace
{
QDBusMessage askForId()
{
    return QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
}

/// A connection that is given back, whatever happens.
class Client
{
public:
    explicit Client(const PrivateBus& bus)
        : m_name(QStringLiteral("client-%1").arg(++sm_count)), m_connection(bus.connect(m_name))
    {
    }
    ~Client() { QDBusConnection::disconnectFromBus(m_name); }
    Q_DISABLE_COPY(Client)

    QDBusConnection* operator->() { return &m_connection; }

    QString idOfTheBus()
    {
        return QDBusReply<QString>(m_connection.call(askForId(), QDBus::Block)).value();
    }

private:
    static int sm_count;

    const QString m_name;
    QDBusConnection m_connection;
};

int Client::sm_count = 0;
} // namespace

class tst_PrivateBus : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void isTheSystemBusOfThisProcess();
    void isTheSystemBusOfItsChildren();
    void hasAnAddressBeforeItRuns();
    void givesTheEnvironmentBack();
    void keepsItsAddressOverARestart_data();
    void keepsItsAddressOverARestart();
    void tellsItsClientsThatItIsGone();
    void standsStillAndGoesOn();
    void knowsOwners();
    void knowsNothingOfAnotherBus();
    void holdsTheLimitsOfASystemBus_data();
    void holdsTheLimitsOfASystemBus();
    void obeysAPolicy();
    void saysWhyItDoesNotStart();
    void leavesNothingBehind();

private:
    WarningRecorder m_warnings;
    PrivateBus m_bus;
};

void tst_PrivateBus::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
}

void tst_PrivateBus::init()
{
    m_warnings.start();
    QVERIFY2(m_bus.start(), m_bus.errorText());
}

void tst_PrivateBus::isTheSystemBusOfThisProcess()
{
    const QString name = QStringLiteral("system");
    const QDBusConnection connection =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
    const QString id = QDBusReply<QString>(connection.call(askForId(), QDBus::Block)).value();
    QDBusConnection::disconnectFromBus(name);

    QVERIFY(!id.isEmpty());
    QCOMPARE(id, Client(m_bus).idOfTheBus());
}

void tst_PrivateBus::isTheSystemBusOfItsChildren()
{
    ChildProcess child;
    QVERIFY(child.startAndWait(
        QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("echo \"$DBUS_SYSTEM_BUS_ADDRESS\"")}));

    QCOMPARE(child.readOutputLine(), m_bus.address().toUtf8());
}

void tst_PrivateBus::hasAnAddressBeforeItRuns()
{
    const PrivateBus bus;

    QVERIFY(bus.address().startsWith(QLatin1String("unix:path=/")));
    QVERIFY(bus.address() != m_bus.address());
    QVERIFY(!bus.isRunning());
    QVERIFY(!bus.hasOwner(QStringLiteral("org.freedesktop.DBus")));
}

void tst_PrivateBus::givesTheEnvironmentBack()
{
    {
        const PrivateBus bus;
        QCOMPARE(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"), bus.address());
    }
    QCOMPARE(qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS"), m_bus.address());
}

void tst_PrivateBus::keepsItsAddressOverARestart_data()
{
    QTest::addColumn<bool>("isKilled");

    QTest::newRow("killed") << true;
    QTest::newRow("stopped") << false;
}

void tst_PrivateBus::keepsItsAddressOverARestart()
{
    QFETCH(bool, isKilled);
    const QString address = m_bus.address();
    const QString id = Client(m_bus).idOfTheBus();
    const qint64 processId = m_bus.processId();

    if (!isKilled)
    {
        m_bus.stop();
        QVERIFY(!m_bus.isRunning());
    }
    QVERIFY2(m_bus.restart(), m_bus.errorText());

    QCOMPARE(m_bus.address(), address);
    QVERIFY(m_bus.processId() != processId);
    const QString newId = Client(m_bus).idOfTheBus();
    QVERIFY(!newId.isEmpty());
    QVERIFY(newId != id);
}

void tst_PrivateBus::tellsItsClientsThatItIsGone()
{
    Client client(m_bus);
    QVERIFY(client->isConnected());

    m_bus.kill();

    QTRY_VERIFY(!client->isConnected());
    QVERIFY(!Client(m_bus)->isConnected());
}

void tst_PrivateBus::standsStillAndGoesOn()
{
    Client client(m_bus);
    QVERIFY(m_bus.freeze());
    QDBusPendingCall pending = client->asyncCall(askForId());
    // A call with a deadline of its own tells that nobody answers.
    QCOMPARE(client->call(askForId(), QDBus::Block, 50).type(), QDBusMessage::ErrorMessage);
    QVERIFY(!pending.isFinished());

    m_bus.thaw();

    pending.waitForFinished();
    QVERIFY(!pending.isError());
}

void tst_PrivateBus::knowsOwners()
{
    const QString name = QStringLiteral("org.example.Pump");
    Client client(m_bus);
    QVERIFY(!m_bus.hasOwner(name));

    QVERIFY(client->registerService(name));
    QVERIFY(m_bus.hasOwner(name));

    QVERIFY(client->unregisterService(name));
    QVERIFY(!m_bus.hasOwner(name));
}

void tst_PrivateBus::knowsNothingOfAnotherBus()
{
    const QString name = QStringLiteral("org.example.Pump");
    PrivateBus other;
    QVERIFY2(other.start(), other.errorText());
    Client client(other);
    QVERIFY(client->registerService(name));

    QVERIFY(other.hasOwner(name));
    QVERIFY(!m_bus.hasOwner(name));
}

void tst_PrivateBus::holdsTheLimitsOfASystemBus_data()
{
    QTest::addColumn<bool>("isLimited");

    QTest::newRow("system") << true;
    QTest::newRow("none") << false;
}

void tst_PrivateBus::holdsTheLimitsOfASystemBus()
{
    QFETCH(bool, isLimited);
    PrivateBus::Options options;
    options.limits = isLimited ? PrivateBus::Limits::system : PrivateBus::Limits::none;
    PrivateBus bus(options);
    QVERIFY2(bus.start(), bus.errorText());
    Client client(bus);

    QDBusMessage last;
    for (int i = 0; i < 600 && last.type() != QDBusMessage::ErrorMessage; ++i)
    {
        QDBusMessage subscribe = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("AddMatch"));
        subscribe << QStringLiteral("type='signal',path='/p%1'").arg(i);
        last = client->call(subscribe, QDBus::Block);
    }

    QCOMPARE(last.type(), isLimited ? QDBusMessage::ErrorMessage : QDBusMessage::ReplyMessage);
    if (isLimited)
    {
        QCOMPARE(last.errorName(), QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded"));
    }
}

void tst_PrivateBus::obeysAPolicy()
{
    PrivateBus::Options options;
    options.policy = QStringLiteral("<policy context=\"default\">"
                                    "<allow own=\"org.example.Pump\"/>"
                                    "<allow send_destination=\"org.example.Pump\" "
                                    "send_interface=\"Interface.Pump\" send_member=\"start\"/>"
                                    "</policy>");
    PrivateBus bus(options);
    QVERIFY2(bus.start(), bus.errorText());
    Client service(bus);
    Client client(bus);

    QVERIFY(!service->registerService(QStringLiteral("org.example.Valve")));
    QVERIFY(service->registerService(QStringLiteral("org.example.Pump")));
    const auto errorOf = [&client](const char* member) {
        return client
            ->call(QDBusMessage::createMethodCall(
                       QStringLiteral("org.example.Pump"), QStringLiteral("/"),
                       QStringLiteral("Interface.Pump"), QLatin1String(member)),
                   QDBus::BlockWithGui)
            .errorName();
    };
    // Nothing is offered there: the service's own answer tells that the call went through.
    QCOMPARE(errorOf("start"), QStringLiteral("org.freedesktop.DBus.Error.UnknownObject"));
    QCOMPARE(errorOf("stop"), QStringLiteral("org.freedesktop.DBus.Error.AccessDenied"));
}

void tst_PrivateBus::saysWhyItDoesNotStart()
{
    PrivateBus::Options options;
    options.policy = QStringLiteral("<nonsense/>");
    PrivateBus bus(options);

    QVERIFY(!bus.start());

    QVERIFY2(QByteArray(bus.errorText()).contains("nonsense"), bus.errorText());
    QVERIFY(!bus.isRunning());
}

void tst_PrivateBus::leavesNothingBehind()
{
    QString folder;
    {
        PrivateBus bus;
        QVERIFY2(bus.start(), bus.errorText());
        folder = bus.folder();
        QVERIFY(QDir(folder).exists());
    }
    QVERIFY(!QDir(folder).exists());
}

QTEST_GUILESS_MAIN(tst_PrivateBus)
#include "tst_PrivateBus.moc"
