#include "Common/TestConnector.h"

#include "TestSupport/ChildProcess.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/WarningRecorder.h"

#include "Platform/DBusConnectionParameter.h"
#include "Platform/ErrorContainer.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

Q_DECLARE_METATYPE(DBusReply)

namespace
{
const QString& serviceName()
{
    static const QString name = ForeignService::centralServiceName();
    return name;
}

QString messageFor(const QString& reason)
{
    return QStringLiteral("D-Bus interface Interface.Pump of /Pump cannot be reached: ") + reason;
}

QString noServiceMessage()
{
    return messageFor(QStringLiteral("nobody on the bus owns the name ") + serviceName());
}

QString noBusMessage()
{
    return messageFor(QStringLiteral("no connection to the bus, on which to find ") +
                      serviceName());
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

/// Waits for a condition and lets no event run meanwhile, as a thread without event loop.
bool waitWithoutEvents(const std::function<bool()>& condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition() && timer.elapsed() < defaultDeadline.count())
    {
        std::this_thread::yield();
    }
    return condition();
}

/// What this process has asked of the daemon.
struct DaemonCalls
{
    int awaited = 0;
    int matchRules = 0;
};

DaemonCalls countDaemonCalls(BusMonitor& monitor)
{
    DaemonCalls calls;
    const QString ourselves = DBusConnection::getQDBusConnection().baseService();
    const QVector<RecordedMessage> messages = monitor.receivedSoFar();
    for (const RecordedMessage& message : messages)
    {
        if (message.kind == QLatin1String("call") && message.sender == ourselves &&
            message.destination == QLatin1String("org.freedesktop.DBus"))
        {
            calls.matchRules += message.member == QLatin1String("AddMatch") ? 1 : 0;
            calls.matchRules -= message.member == QLatin1String("RemoveMatch") ? 1 : 0;
            calls.awaited += message.isReplyExpected ? 1 : 0;
        }
    }
    return calls;
}
} // namespace

class tst_DBusConnectorBase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void doesNotWaitWithoutABus();
    void saysThatTheBusIsMissing();
    void findsTheBusThatComesLater();

    void warnsOncePerAsynchronousAndTwicePerSynchronousCallWithoutService();
    void saysWhichNameIsForbidden();
    void composesItsAddress();
    void placesCallsWithoutInitObject();
    void callsConnectServicesOnceInInitObject();
    void sendsWithoutExpectingAReply();
    void sendsEveryArgumentAsItsOwnType();
    void sendsAReplyAsOneStructure_data();
    void sendsAReplyAsOneStructure();
    void doesNotSeeThatTheServiceRefusesAFireAndForgetCall();
    void handsOutTheFailureOfAnAsynchronousCall();
    void warnsTwiceWhenABlockingCallFails();
    void readsTheReplyOfABlockingCall();
    void takesAVariantWithoutStructureAsAnEmptyReply_data();
    void takesAVariantWithoutStructureAsAnEmptyReply();

    void followsTheServiceWithoutEventLoop();
    void receivesSignalsOverARestartOfTheService();
    void followsTheBusWithoutEventLoop();
    void connectsServicesOncePerBusConnection();
    void connectsServicesAtTheNextCallOfAThreadWithoutEventLoop();
    void survivesManyRestartsOfTheBus();
    void canBeDisconnectedAndConnectedByOthers();
    void refusesAForeignThreadWhileItsProxyIsReplaced();
    void outlivesTheThreadThatMadeIt();
    void endsInOtherThreadsWhileTheBusRestarts();
    void costsTheBusNothingMoreForAThousandConnectors();

    void worksWithoutApplicationAndBeforeMain();
    void endsWithTheProcess_data();
    void endsWithTheProcess();

private:
    bool restartBus();

    PrivateBus m_bus;
    ForeignService m_service{m_bus, serviceName()};
    WarningRecorder m_warnings;
};

void tst_DBusConnectorBase::initTestCase()
{
    QVERIFY(!m_bus.isRunning());
}

void tst_DBusConnectorBase::init()
{
    m_warnings.start();
    if (m_service.isRunning())
    {
        // What an earlier test has sent is not to arrive in this one.
        QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
        m_service.clear();
    }
}

void tst_DBusConnectorBase::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

bool tst_DBusConnectorBase::restartBus()
{
    return m_bus.restart() && m_service.reconnect();
}

void tst_DBusConnectorBase::doesNotWaitWithoutABus()
{
    QElapsedTimer timer;
    timer.start();
    const TestConnector first;
    const TestConnector second;

    QVERIFY(!first.isDBusInterfaceValid());
    QVERIFY(!second.isDBusInterfaceValid());
    QVERIFY(first.proxy() != nullptr);
    QVERIFY2(timer.elapsed() < 500, QByteArray::number(timer.elapsed()));
}

void tst_DBusConnectorBase::saysThatTheBusIsMissing()
{
    m_warnings.expect(quoted(noBusMessage()));
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();

    QVERIFY(connector->ask(QStringLiteral("state")).isNull());
    QCOMPARE(connector->connectCount(), 1);
    QCOMPARE(connector->failedConnectCount(), 1);
    QVERIFY(!DBusConnection::getQDBusConnection().isConnected());
}

void tst_DBusConnectorBase::findsTheBusThatComesLater()
{
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());

    QVERIFY(waitUntil([&] { return connector->isDBusInterfaceValid(); }));
    QCOMPARE(connector->connectCount(), 2);
    QCOMPARE(connector->failedConnectCount(), 1);
    QVERIFY(!connector->send(QStringLiteral("log")).isError());
    QCOMPARE(m_service.received().size(), 1);
}

void tst_DBusConnectorBase::warnsOncePerAsynchronousAndTwicePerSynchronousCallWithoutService()
{
    QVERIFY(m_service.disown(serviceName()));
    const QString file = QStringLiteral("DBusConnectorBase");
    const QString text = quoted(noServiceMessage());
    m_warnings.expect(text, file, QStringLiteral("DBusConnectorBase::asyncCallHelper"));
    for (int i = 0; i < 4; ++i)
    {
        m_warnings.expect(text, file,
                          i < 2 ? QStringLiteral("DBusConnectorBase::syncCallNoBlock")
                                : QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }
    const TestConnector connector;
    QVERIFY(waitUntil([&] { return !connector.isDBusInterfaceValid(); }));
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);

    QVERIFY(connector.ask(QStringLiteral("state"), QStringLiteral("x")).isNull());
    QCOMPARE(errors.size(), 1);
    const DBusReply unsent = connector.send(QStringLiteral("log"), 5);
    QCOMPARE(errors.size(), 2);
    const DBusReply unanswered = connector.wait(QStringLiteral("register"));
    QCOMPARE(errors.size(), 3);

    for (const DBusReply& reply : {unsent, unanswered})
    {
        QCOMPARE(reply.getErrorCode(), ErrorContainer::getDefaultErrorCode());
        QCOMPARE(reply.getErrorText(), noServiceMessage());
        QVERIFY(!reply.getValue().isValid());
    }
    QCOMPARE(connector.getRefusedCallCount(), quint64(3));
    QVERIFY(m_service.own(serviceName()));
    QVERIFY(waitUntil([&] { return connector.isDBusInterfaceValid(); }));
    QCOMPARE(m_service.received().size(), 0);
}

void tst_DBusConnectorBase::saysWhichNameIsForbidden()
{
    const TestConnector badObject(QStringLiteral("no path"));
    const TestConnector badModule(QStringLiteral("Pump"), QStringLiteral("no name"));

    QVERIFY(!badObject.isDBusInterfaceValid());
    QVERIFY(!badModule.isDBusInterfaceValid());
    QVERIFY(badObject.proxy() != nullptr);
    QCOMPARE(badObject.getInvalidDBusInterfaceMessage(),
             QStringLiteral("D-Bus interface Interface.Pump of /no path cannot be reached: D-Bus "
                            "forbids one of these names, or the bus name ") +
                 serviceName());
}

void tst_DBusConnectorBase::composesItsAddress()
{
    const DBusConnectorBase connector(
        DBusConnectionParameter::createFromTavikInternal(
            QStringLiteral("Valve-2"), QStringLiteral("State"), QStringLiteral("Interface.State")),
        nullptr, DBusConnectorBase::defaultMode);

    QCOMPARE(connector.getServiceName(),
             QString(QString(serviceName())
                         .replace(QLatin1String("EventlistHandler"), QLatin1String("Valve-2"))));
    QCOMPARE(connector.getDBusPath(), QStringLiteral("/State"));
}

void tst_DBusConnectorBase::placesCallsWithoutInitObject()
{
    const TestConnector connector;

    QVERIFY(!connector.send(QStringLiteral("log")).isError());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().path, QStringLiteral("/Pump"));
    QCOMPARE(received.first().interface, QStringLiteral("Interface.Pump"));
    QCOMPARE(connector.connectCount(), 0);
}

void tst_DBusConnectorBase::callsConnectServicesOnceInInitObject()
{
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    connector->initObject();
    QCoreApplication::processEvents();

    QCOMPARE(connector->connectCount(), 1);
    QCOMPARE(connector->failedConnectCount(), 0);
}

void tst_DBusConnectorBase::sendsWithoutExpectingAReply()
{
    const TestConnector connector;
    connector.send(QStringLiteral("log"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QVERIFY(!received.first().isReplyExpected);
}

void tst_DBusConnectorBase::sendsEveryArgumentAsItsOwnType()
{
    const TestConnector connector;
    connector.send(QStringLiteral("log"), QStringLiteral("s"), QStringList(), 1, 2LL, true,
                   QVariant(QStringLiteral("s")), QVariant(3));
    connector.send(QStringLiteral("log"), QVariant(true));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received.at(0).signature, QStringLiteral("sasixbsi"));
    QCOMPARE(received.at(1).signature, QStringLiteral("b"));
}

void tst_DBusConnectorBase::sendsAReplyAsOneStructure_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonValue>("sent");
    const QJsonObject gap{{QStringLiteral("variant"), QStringLiteral("s")},
                          {QStringLiteral("value"), QString()}};
    QTest::newRow("no value") << QVariant() << QStringLiteral("s") << QJsonValue(QString());
    QTest::newRow("number") << QVariant(42) << QStringLiteral("i") << QJsonValue(42);
    // libdbus would end the process.
    QTest::newRow("gap in a list") << QVariant(QVariantList{QVariant()}) << QStringLiteral("av")
                                   << QJsonValue(QJsonArray{gap});
    QTest::newRow("gap in a map") << QVariant(QVariantMap{{QStringLiteral("a"), QVariant()}})
                                  << QStringLiteral("a{sv}")
                                  << QJsonValue(QJsonObject{{QStringLiteral("a"), gap}});
}

void tst_DBusConnectorBase::sendsAReplyAsOneStructure()
{
    QFETCH(const QVariant, value);
    QFETCH(const QString, signature);
    QFETCH(const QJsonValue, sent);
    qDBusRegisterMetaType<DBusReply>();
    DBusReply reply;
    reply.setValue(value);
    const TestConnector connector;
    connector.send(QStringLiteral("log"), QVariant::fromValue(reply));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received.first().signature, QStringLiteral("(isv)"));
    const QJsonArray structure = received.first().arguments.first().toArray();
    QCOMPARE(structure.at(0), QJsonValue(0));
    QCOMPARE(structure.at(1), QJsonValue(QString()));
    QCOMPARE(structure.at(2).toObject(), (QJsonObject{{QStringLiteral("variant"), signature},
                                                      {QStringLiteral("value"), sent}}));
}

void tst_DBusConnectorBase::doesNotSeeThatTheServiceRefusesAFireAndForgetCall()
{
    QVERIFY(m_service.answerError(QStringLiteral("log"), QStringLiteral("org.example.Refused"),
                                  QStringLiteral("no")));
    const TestConnector connector;
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);

    QVERIFY(!connector.send(QStringLiteral("log")).isError());
    QCOMPARE(m_service.received().size(), 1);
    QVERIFY(errors.isEmpty());
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_DBusConnectorBase::handsOutTheFailureOfAnAsynchronousCall()
{
    QVERIFY(m_service.answerError(QStringLiteral("state"), QStringLiteral("org.example.Refused"),
                                  QStringLiteral("no state")));
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("state"));

    QVERIFY(!reply.isNull());
    reply->waitForFinished();
    QVERIFY(reply->isError());
    QCOMPARE(reply->error().message(), QStringLiteral("no state"));
}

void tst_DBusConnectorBase::warnsTwiceWhenABlockingCallFails()
{
    QVERIFY(m_service.answerError(QStringLiteral("registerEventHash"),
                                  QStringLiteral("org.example.Refused"), QString()));
    const QString text = QStringLiteral("D-Bus call to method registerEventHash failed: !");
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(quoted(text), QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }
    const TestConnector connector;
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);
    const DBusReply reply =
        connector.wait(QStringLiteral("registerEventHash"), QStringLiteral("3fa9c1"));

    QCOMPARE(reply.getErrorCode(), ErrorContainer::getDefaultErrorCode());
    QCOMPARE(reply.getErrorText(), text);
    QCOMPARE(errors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_DBusConnectorBase::readsTheReplyOfABlockingCall()
{
    QVERIFY(m_service.answerVariant(
        QStringLiteral("register"), QStringLiteral("(isv)"),
        QJsonArray{7, QStringLiteral("out of range"),
                   QJsonObject{{QStringLiteral("variant"), QStringLiteral("i")},
                               {QStringLiteral("value"), 42}}}));
    const TestConnector connector;
    const DBusReply reply = connector.wait(QStringLiteral("register"));

    QCOMPARE(reply.getErrorCode(), 7);
    QCOMPARE(reply.getErrorText(), QStringLiteral("out of range"));
    QCOMPARE(reply.getValue(), QVariant(42));
}

void tst_DBusConnectorBase::takesAVariantWithoutStructureAsAnEmptyReply_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonValue>("value");
    QTest::newRow("string") << QStringLiteral("s") << QJsonValue(QStringLiteral("x"));
    QTest::newRow("number") << QStringLiteral("i") << QJsonValue(5);
    QTest::newRow("list of strings") << QStringLiteral("as") << QJsonValue(QJsonArray{});
    QTest::newRow("list of numbers") << QStringLiteral("ai") << QJsonValue(QJsonArray{1, 2});
    QTest::newRow("other structure")
        << QStringLiteral("(is)") << QJsonValue(QJsonArray{1, QStringLiteral("x")});
    QTest::newRow("dictionary") << QStringLiteral("a{ss}") << QJsonValue(QJsonObject{});
}

void tst_DBusConnectorBase::takesAVariantWithoutStructureAsAnEmptyReply()
{
    QFETCH(const QString, signature);
    QFETCH(const QJsonValue, value);
    QVERIFY(m_service.answerVariant(QStringLiteral("register"), signature, value));
    const TestConnector connector;
    const DBusReply reply = connector.wait(QStringLiteral("register"));

    QVERIFY(!reply.isError());
    QVERIFY(!reply.getValue().isValid());
}

void tst_DBusConnectorBase::followsTheServiceWithoutEventLoop()
{
    const TestConnector connector;
    QVERIFY(connector.isDBusInterfaceValid());
    m_service.kill();
    QVERIFY(waitWithoutEvents([&] { return !connector.isDBusInterfaceValid(); }));
    QCOMPARE(connector.getInvalidDBusInterfaceMessage(), noServiceMessage());

    QVERIFY2(m_service.start(), m_service.errorText());
    QVERIFY(waitWithoutEvents([&] { return connector.isDBusInterfaceValid(); }));
    connector.send(QStringLiteral("log"));
    QCOMPARE(m_service.received().size(), 1);
}

void tst_DBusConnectorBase::receivesSignalsOverARestartOfTheService()
{
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    QSignalSpy changes(connector.data(), &TestConnector::changed);
    QVERIFY(m_service.restart());
    QVERIFY(waitUntil([&] { return connector->isDBusInterfaceValid(); }));

    QVERIFY(m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                 QStringLiteral("changed")));
    QVERIFY(waitUntil([&] { return changes.size() == 1; }));
    QCOMPARE(connector->connectCount(), 1);
}

void tst_DBusConnectorBase::followsTheBusWithoutEventLoop()
{
    const TestConnector connector;
    const QString before = DBusConnection::getQDBusConnection().baseService();
    m_bus.kill();
    QVERIFY(waitWithoutEvents([&] { return !connector.isDBusInterfaceValid(); }));
    QCOMPARE(connector.getInvalidDBusInterfaceMessage(), noBusMessage());
    QVERIFY(!DBusConnection::getQDBusConnection().isConnected());

    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.reconnect(), m_service.errorText());
    QVERIFY(waitWithoutEvents([&] { return connector.isDBusInterfaceValid(); }));
    connector.send(QStringLiteral("log"));
    QCOMPARE(m_service.received().size(), 1);
    QVERIFY(!before.isEmpty());
}

void tst_DBusConnectorBase::connectsServicesOncePerBusConnection()
{
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    QSignalSpy changes(connector.data(), &TestConnector::changed);
    for (int restart = 1; restart <= 3; ++restart)
    {
        QVERIFY(restartBus());
        // Through the event loop alone: nothing is called here.
        QVERIFY(waitUntil([&] { return connector->connectCount() == 1 + restart; }));
        QVERIFY(waitUntil([&] { return connector->isDBusInterfaceValid(); }));
        QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
        QVERIFY(m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                     QStringLiteral("changed")));
        QVERIFY(waitUntil([&] { return changes.size() == restart; }));
        // A second subscription would have brought the signal twice before this answer.
        QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
        QCoreApplication::processEvents();
        QCOMPARE(changes.size(), restart);
    }
    QCOMPARE(connector->connectCount(), 4);
    QCOMPARE(connector->failedConnectCount(), 0);
}

void tst_DBusConnectorBase::connectsServicesAtTheNextCallOfAThreadWithoutEventLoop()
{
    std::promise<void> isMade;
    std::promise<void> isRestarted;
    std::promise<int> connectCount;
    std::thread worker([&] {
        const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
        isMade.set_value();
        isRestarted.get_future().wait();
        waitWithoutEvents([&] { return connector->isDBusInterfaceValid(); });
        connectCount.set_value(connector->connectCount() - 10 * connector->failedConnectCount());
    });
    isMade.get_future().wait();
    const TestConnector own;
    m_bus.kill();
    const bool wasLost = waitWithoutEvents([&] { return !own.isDBusInterfaceValid(); });
    const bool isBack = m_bus.start() && m_service.reconnect();
    isRestarted.set_value();
    const int count = connectCount.get_future().get();
    worker.join();

    QVERIFY(wasLost && isBack);
    QCOMPARE(count, 2);
}

void tst_DBusConnectorBase::survivesManyRestartsOfTheBus()
{
    // The campaign runs this test alone.
    QVERIFY(m_bus.start() && (m_service.isRunning() || m_service.start()));
    // Idle all the time, so that it holds what it had at first.
    const TestConnector idle;
    const TestConnector connector;
    const int wanted = qEnvironmentVariableIntValue("EVENTLISTHANDLER_TEST_RESTARTS");
    constexpr int shortForm = 12;
    for (int restart = 0; restart < (wanted > 0 ? wanted : shortForm); ++restart)
    {
        m_bus.kill();
        QVERIFY(waitWithoutEvents([&] { return !connector.isDBusInterfaceValid(); }));
        QVERIFY(m_bus.start() && m_service.reconnect());
        QVERIFY(waitWithoutEvents([&] { return connector.isDBusInterfaceValid(); }));
    }
    QVERIFY(idle.isDBusInterfaceValid());
}

void tst_DBusConnectorBase::canBeDisconnectedAndConnectedByOthers()
{
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    QSignalSpy changes(connector.data(), &TestConnector::changed);
    const auto emitAndMark = [&] {
        // The marker comes after the signal, on the same connection.
        return m_service.synchronise(DBusConnection::getQDBusConnection()) &&
               m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                    QStringLiteral("changed")) &&
               m_service.synchronise(DBusConnection::getQDBusConnection());
    };

    QVERIFY(QMetaObject::invokeMethod(connector.data(), "disconnectServices"));
    QVERIFY(emitAndMark());
    QCoreApplication::processEvents();
    QCOMPARE(changes.size(), 0);
    QVERIFY(QMetaObject::invokeMethod(connector.data(), "connectServices"));
    QVERIFY(emitAndMark());
    QVERIFY(waitUntil([&] { return changes.size() == 1; }));
    QCOMPARE(connector->failedConnectCount(), 0);
}

void tst_DBusConnectorBase::refusesAForeignThreadWhileItsProxyIsReplaced()
{
    const TestConnector connector;
    const TestConnector observer;
    QVERIFY(std::async(std::launch::async, [&] { return connector.isDBusInterfaceValid(); }).get());
    m_bus.kill();
    QVERIFY(waitWithoutEvents([&] { return !observer.isDBusInterfaceValid(); }));
    QVERIFY(m_bus.start() && m_service.reconnect());
    QVERIFY(waitWithoutEvents([&] { return observer.isDBusInterfaceValid(); }));

    const QString message = std::async(std::launch::async, [&] {
                                return connector.isDBusInterfaceValid()
                                           ? QString()
                                           : connector.getInvalidDBusInterfaceMessage();
                            }).get();
    QCOMPARE(message, messageFor(QStringLiteral("a new connection to the bus waits for the thread "
                                                "of this connector, on which to find ") +
                                 serviceName()));
    QVERIFY(connector.isDBusInterfaceValid());
    QVERIFY(std::async(std::launch::async, [&] { return connector.isDBusInterfaceValid(); }).get());
}

void tst_DBusConnectorBase::outlivesTheThreadThatMadeIt()
{
    std::unique_ptr<TestConnector> connector;
    std::thread maker([&] {
        connector = std::make_unique<TestConnector>();
        connector->initObject();
    });
    maker.join();
    const TestConnector observer;
    m_bus.kill();
    QVERIFY(waitWithoutEvents([&] { return !observer.isDBusInterfaceValid(); }));
    QVERIFY(m_bus.start() && m_service.reconnect());

    QVERIFY(waitWithoutEvents([&] { return connector->isDBusInterfaceValid(); }));
    connector->send(QStringLiteral("log"));
    QCOMPARE(m_service.received().size(), 1);
    QCOMPARE(connector->connectCount(), 2);
}

void tst_DBusConnectorBase::endsInOtherThreadsWhileTheBusRestarts()
{
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
    {
        threads.emplace_back([&isOver] {
            while (!isOver)
            {
                const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
                const TestConnector further;
                connector->isDBusInterfaceValid();
            }
        });
    }
    bool isRestarted = true;
    for (int restart = 0; restart < 5; ++restart)
    {
        isRestarted = isRestarted && restartBus();
        const TestConnector connector;
        isRestarted =
            isRestarted && waitWithoutEvents([&] { return connector.isDBusInterfaceValid(); });
    }
    isOver = true;
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    QVERIFY(isRestarted);
    // QtDBus itself warns when a service comes just while a connector begins to listen for it, which
    // is all the time here. Nothing else may warn.
    const QVector<LoggedMessage> messages = m_warnings.take();
    for (const LoggedMessage& message : messages)
    {
        QVERIFY2(message.text.contains(QLatin1String("had owner '' but we thought it was")),
                 message.text.toUtf8());
    }
}

void tst_DBusConnectorBase::costsTheBusNothingMoreForAThousandConnectors()
{
    const QSharedPointer<TestConnector> first = TestConnector::createAndConnect();
    QVERIFY(waitUntil([&] { return first->isDBusInterfaceValid(); }));
    BusMonitor monitor(m_bus);
    QVERIFY2(monitor.start(), monitor.errorText());

    std::vector<QSharedPointer<TestConnector>> connectors;
    for (int i = 0; i < 1000; ++i)
    {
        connectors.push_back(TestConnector::createAndConnect());
    }
    QVERIFY(connectors.back()->isDBusInterfaceValid());
    connectors.back()->send(QStringLiteral("marker"));
    QVERIFY(waitUntil([&] {
        const QVector<RecordedMessage> messages = monitor.receivedSoFar();
        return !messages.isEmpty() && messages.last().member == QLatin1String("marker");
    }));

    QCOMPARE(countDaemonCalls(monitor).awaited, 0);
    QCOMPARE(countDaemonCalls(monitor).matchRules, 0);
}

void tst_DBusConnectorBase::worksWithoutApplicationAndBeforeMain()
{
    ChildProcess module;
    const auto tell = [&module](const char* command) {
        module.write(command);
        module.write("\n");
        return module.readOutputLine();
    };
    QVERIFY(m_service.answer(QStringLiteral("state"), QStringLiteral("s"),
                             QJsonArray{QStringLiteral("running")}));
    QVERIFY(module.startAndWait(QStringLiteral(CONNECTOR_PROCESS), {}));

    QCOMPARE(tell("valid"), QByteArray("1"));
    QCOMPARE(tell("ask"), QByteArray("running"));
    QVERIFY(m_service.disown(serviceName()));
    QVERIFY(waitUntil([&] { return tell("valid") == "0"; }));
    QVERIFY(m_service.own(serviceName()));
    QVERIFY(waitUntil([&] { return tell("valid") == "1"; }));
    QVERIFY(restartBus());
    QVERIFY(waitUntil([&] { return tell("valid") == "1"; }));
    QVERIFY(m_service.countSoFar() == 1);
    QCOMPARE(tell("send"), QByteArray("1"));
    QVERIFY(waitUntil([&] { return m_service.countSoFar() == 2; }));
    QCOMPARE(tell("fork"), QByteArray("1"));
    QCOMPARE(tell("valid"), QByteArray("1"));
    QVERIFY(module.readAllStandardError().isEmpty());
}

void tst_DBusConnectorBase::endsWithTheProcess_data()
{
    QTest::addColumn<QByteArray>("command");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("exit()") << QByteArray("exit\n") << 3;
    QTest::newRow("return from main") << QByteArray("return\n") << 4;
}

void tst_DBusConnectorBase::endsWithTheProcess()
{
    QFETCH(const QByteArray, command);
    QFETCH(const int, exitCode);
    for (const bool isBusRunning : {true, false})
    {
        ChildProcess module;
        QVERIFY(module.startAndWait(QStringLiteral(CONNECTOR_PROCESS), {}));
        module.write("valid\n");
        QCOMPARE(module.readOutputLine(), QByteArray("1"));
        if (!isBusRunning)
        {
            m_bus.kill();
            QVERIFY(waitUntil([&] {
                module.write("valid\n");
                return module.readOutputLine() == "0";
            }));
        }
        module.write(command);
        QVERIFY(module.waitForFinished());
        QCOMPARE(module.exitStatus(), QProcess::NormalExit);
        QCOMPARE(module.exitCode(), exitCode);
        QCOMPARE(module.readAllStandardError(), QByteArray());
    }
    QVERIFY(m_bus.start() && m_service.reconnect());
    const TestConnector connector;
    QVERIFY(waitUntil([&] { return connector.isDBusInterfaceValid(); }));
}

QTEST_GUILESS_MAIN(tst_DBusConnectorBase)
#include "tst_DBusConnectorBase.moc"
