#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/WarningRecorder.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QDBusMessage>
#include <QSharedPointer>
#include <QTest>

#include <algorithm>
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

using Handler = DBusConnectionSignalPollingHandler;

namespace
{
QSharedPointer<Handler> makeHandler(const char* signal, Handler::SlotSignature signature,
                                    const char* object = "Pump")
{
    return QSharedPointer<Handler>(new Handler(QStringLiteral("EventlistHandler"),
                                               QString::fromLatin1(object),
                                               QString::fromLatin1(signal), signature, false));
}
} // namespace

/// Nowhere here does an event loop run: what arrives, arrives without it.
class tst_DBusConnectionSignalPollingHandler : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void isSilentWithoutABus();
    void listensWhenItsConstructorReturns();
    void storesNothingBeforeTheFirstSignal();
    void storesOneOccurrenceOfASignalWithoutArgument();
    void storesTheArgumentsInTheirOrder();
    void forgetsExactlyTheOccurrenceThatWasRead();
    void forgetsAll();
    void keepsTheNewestOccurrences();
    void takesTheSignalFromEveryInterface();
    void ignoresOtherShapesPathsNamesAndSenders();
    void feedsEveryHandlerOfOneSignal();
    void addsOneMatchRuleForEqualHandlers();
    void outlivesARestartOfTheService();
    void outlivesARestartOfTheBus();
    void warnsAboutAForbiddenName();
    void canEndWhileSignalsArrive();

private:
    bool send(const char* member, const QJsonArray& arguments = QJsonArray(),
              const char* path = "/Pump", const char* interface = "Interface.Pump", int times = 1);
    bool synchronise();

    PrivateBus m_bus;
    ForeignService m_service{m_bus, ForeignService::centralServiceName()};
    WarningRecorder m_warnings;
};

void tst_DBusConnectionSignalPollingHandler::initTestCase()
{
    QVERIFY(!m_bus.isRunning());
}

void tst_DBusConnectionSignalPollingHandler::init()
{
    m_warnings.start();
}

void tst_DBusConnectionSignalPollingHandler::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

bool tst_DBusConnectionSignalPollingHandler::synchronise()
{
    return m_service.synchronise(DBusConnection::getQDBusConnection());
}

/// Sends a signal, and returns when it is here and all subscriptions before it were there.
bool tst_DBusConnectionSignalPollingHandler::send(const char* member, const QJsonArray& arguments,
                                                  const char* path, const char* interface,
                                                  int times)
{
    QString signature;
    for (const QJsonValue& argument : arguments)
    {
        signature += argument.isBool() ? QLatin1Char('b') : QLatin1Char('s');
    }
    return synchronise() &&
           m_service.emitSignal(QString::fromLatin1(path), QString::fromLatin1(interface),
                                QString::fromLatin1(member), signature, arguments, times) &&
           synchronise();
}

void tst_DBusConnectionSignalPollingHandler::isSilentWithoutABus()
{
    const QSharedPointer<Handler> handler = makeHandler("changed", Handler::noArgument);

    QVERIFY(!handler->isSignalOccured());

    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
    QVERIFY(waitUntil([] { return DBusConnection::getQDBusConnection().isConnected(); }));
    QVERIFY(send("changed"));
    QVERIFY(handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::listensWhenItsConstructorReturns()
{
    for (int round = 0; round < 50; ++round)
    {
        const QSharedPointer<Handler> handler = makeHandler("changed", Handler::noArgument);
        // At once: nothing on our connection tells that the subscription has arrived.
        QVERIFY(m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                     QStringLiteral("changed")));
        QVERIFY(synchronise());
        QVERIFY(handler->isSignalOccured());
    }
}

void tst_DBusConnectionSignalPollingHandler::storesNothingBeforeTheFirstSignal()
{
    const QSharedPointer<Handler> handler = makeHandler("changed", Handler::boolArgument);

    QVERIFY(!handler->isSignalOccured());
    QVERIFY(!handler->getSignalParameter().isValid());
    handler->resetLastSignal();
    handler->resetAllSignals();
    QVERIFY(!handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::storesOneOccurrenceOfASignalWithoutArgument()
{
    const QSharedPointer<Handler> handler = makeHandler("changed", Handler::noArgument);
    QVERIFY(send("changed"));
    QVERIFY(send("changed"));

    QVERIFY(handler->isSignalOccured());
    QVERIFY(!handler->getSignalParameter().isValid());
    handler->resetLastSignal();
    QVERIFY(!handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::storesTheArgumentsInTheirOrder()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    const QVector<bool> sent{true, false, false, true};
    for (const bool state : sent)
    {
        QVERIFY(send("state", {state}));
    }

    QVector<bool> polled;
    while (handler->isSignalOccured())
    {
        polled.append(handler->getSignalParameter().toBool());
        handler->resetLastSignal();
    }
    QCOMPARE(polled, sent);
}

void tst_DBusConnectionSignalPollingHandler::forgetsExactlyTheOccurrenceThatWasRead()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    QVERIFY(send("state", {true}));
    QCOMPARE(handler->getSignalParameter(), QVariant(true));
    QVERIFY(send("state", {false}));

    handler->resetLastSignal();
    QVERIFY(handler->isSignalOccured());
    // Not read yet, so there is nothing to forget.
    handler->resetLastSignal();
    QCOMPARE(handler->getSignalParameter(), QVariant(false));
    QCOMPARE(handler->getSignalParameter(), QVariant(false));
    handler->resetLastSignal();
    QVERIFY(!handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::forgetsAll()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    QVERIFY(send("state", {true}, "/Pump", "Interface.Pump", 3));

    handler->resetAllSignals();
    QVERIFY(!handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::keepsTheNewestOccurrences()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    QVERIFY(send("state", {true}, "/Pump", "Interface.Pump", 10));
    QCOMPARE(handler->getSignalParameter(), QVariant(true));
    QVERIFY(send("state", {false}, "/Pump", "Interface.Pump", 4096));

    // What was read is gone already: nothing is forgotten in its place.
    handler->resetLastSignal();
    int count = 0;
    while (handler->isSignalOccured())
    {
        QCOMPARE(handler->getSignalParameter(), QVariant(false));
        handler->resetLastSignal();
        ++count;
    }
    QCOMPARE(count, 4096);
}

void tst_DBusConnectionSignalPollingHandler::takesTheSignalFromEveryInterface()
{
    const QSharedPointer<Handler> handler = makeHandler("changed", Handler::noArgument);
    QVERIFY(send("changed", {}, "/Pump", "Interface.Other"));

    QVERIFY(handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::ignoresOtherShapesPathsNamesAndSenders()
{
    const QSharedPointer<Handler> without = makeHandler("changed", Handler::noArgument);
    const QSharedPointer<Handler> with = makeHandler("changed", Handler::boolArgument);
    QVERIFY(send("changed", {QStringLiteral("text")}));
    QVERIFY(send("changed", {true, true}));
    QVERIFY(send("changed", {}, "/Valve"));
    QVERIFY(send("changed", {true}, "/Pump/Valve"));
    QVERIFY(send("Changed"));
    // Another process, to which the bus delivers as well, because we ask for its signals too.
    ForeignService stranger(m_bus, QStringLiteral("org.example.Stranger"));
    QVERIFY2(stranger.start(), stranger.errorText());
    QVERIFY(QDBusConnection(DBusConnection::getQDBusConnection())
                .connect(stranger.busName(), QStringLiteral("/Pump"), QString(),
                         QStringLiteral("changed"), this, SIGNAL(objectNameChanged(QString))));
    QVERIFY(stranger.synchronise(DBusConnection::getQDBusConnection()));
    QVERIFY(stranger.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                QStringLiteral("changed"), QStringLiteral("b"), {true}));
    QVERIFY(stranger.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                QStringLiteral("changed")));
    QVERIFY(stranger.synchronise(DBusConnection::getQDBusConnection()));

    QVERIFY(!without->isSignalOccured());
    QVERIFY(!with->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::feedsEveryHandlerOfOneSignal()
{
    const QSharedPointer<Handler> first = makeHandler("changed", Handler::noArgument);
    QSharedPointer<Handler> second = makeHandler("changed", Handler::noArgument);
    QVERIFY(send("changed"));
    QVERIFY(first->isSignalOccured());
    QVERIFY(second->isSignalOccured());

    second.clear();
    first->resetAllSignals();
    QVERIFY(send("changed"));
    QVERIFY(first->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::addsOneMatchRuleForEqualHandlers()
{
    BusMonitor monitor(m_bus);
    QVERIFY2(monitor.start(), monitor.errorText());
    {
        std::vector<QSharedPointer<Handler>> handlers;
        for (int i = 0; i < 100; ++i)
        {
            handlers.push_back(makeHandler("counted", Handler::noArgument));
        }
    }
    // Our own signal, after all the rest. No ping: libdbus would answer it in the monitor too, and
    // the bus throws a monitor out that sends.
    DBusConnection::getQDBusConnection().send(QDBusMessage::createSignal(
        QStringLiteral("/"), QStringLiteral("Interface.Marker"), QStringLiteral("marker")));
    QVERIFY(waitUntil([&] {
        const QVector<RecordedMessage> messages = monitor.receivedSoFar();
        return std::any_of(messages.begin(), messages.end(), [](const RecordedMessage& message) {
            return message.member == QLatin1String("marker");
        });
    }));

    QStringList rules;
    for (const RecordedMessage& message : monitor.receivedSoFar())
    {
        if (message.member.endsWith(QLatin1String("Match")))
        {
            rules.append(message.member);
        }
    }
    QCOMPARE(rules, QStringList({QStringLiteral("AddMatch"), QStringLiteral("RemoveMatch")}));
}

void tst_DBusConnectionSignalPollingHandler::outlivesARestartOfTheService()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    QVERIFY2(m_service.restart(), m_service.errorText());
    QVERIFY(send("state", {true}));

    QVERIFY(handler->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::outlivesARestartOfTheBus()
{
    const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
    for (int restart = 0; restart < 3; ++restart)
    {
        QVERIFY2(m_bus.restart(), m_bus.errorText());
        QVERIFY2(m_service.reconnect(), m_service.errorText());
        QVERIFY(waitUntil([] { return DBusConnection::getQDBusConnection().isConnected(); }));
        QVERIFY(send("state", {true}));

        QVERIFY(handler->isSignalOccured());
        handler->resetAllSignals();
    }
}

void tst_DBusConnectionSignalPollingHandler::warnsAboutAForbiddenName()
{
    const QString text = QStringLiteral("Cannot listen for a signal, D-Bus forbids one of its "
                                        "names: \"") +
                         ForeignService::centralServiceName();
    m_warnings.expect(text + QStringLiteral("\" \"/a path\" \"changed\""),
                      QStringLiteral("DBusConnectionSignalPollingHandler"));
    m_warnings.expect(text + QStringLiteral("\" \"/Pump\" \"x',path='/\""),
                      QStringLiteral("DBusConnectionSignalPollingHandler"));

    QVERIFY(!makeHandler("changed", Handler::noArgument, "a path")->isSignalOccured());
    QVERIFY(!makeHandler("x',path='/", Handler::noArgument)->isSignalOccured());
}

void tst_DBusConnectionSignalPollingHandler::canEndWhileSignalsArrive()
{
    std::atomic<int> runningCount{3};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i)
    {
        threads.emplace_back([&runningCount] {
            for (int round = 0; round < 300; ++round)
            {
                const QSharedPointer<Handler> handler = makeHandler("state", Handler::boolArgument);
                handler->isSignalOccured();
                handler->getSignalParameter();
                handler->resetLastSignal();
            }
            --runningCount;
        });
    }
    bool isSent = true;
    do
    {
        isSent = isSent && send("state", {true}, "/Pump", "Interface.Pump", 100);
    }
    while (runningCount > 0);
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    QVERIFY(isSent);
}

QTEST_GUILESS_MAIN(tst_DBusConnectionSignalPollingHandler)
#include "tst_DBusConnectionSignalPollingHandler.moc"
