#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include "TestSupport/PrivateMember.h"
#include "bus/CentralServiceTest.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QThread>
#include <QTimeZone>

#include <functional>
#include <limits>

using Connector = EventlistHandlerDBusConnectorRead;

namespace
{
const QString context = QStringLiteral("lang_de");
const QString path = QStringLiteral("/EventlistRead");
const QString interface = QStringLiteral("Interface.EventlistRead");
const QString changedEventlist = QStringLiteral("changedEventlist");

QDateTime berlinTime(int hour)
{
    return QDateTime(QDate(2026, 3, 14), QTime(hour, 26, 53, 589), QTimeZone("Europe/Berlin"));
}

// Counts how often the base lets it subscribe.
class CountingConnector : public Connector
{
    Q_OBJECT
public:
    using Connector::Connector;

    int connectCount = 0;

protected Q_SLOTS:
    void connectServices() override
    {
        ++connectCount;
        Connector::connectServices();
    }
};
} // namespace

PRIVATE_MEMBER(pollingHandler, QSharedPointer<DBusConnectionSignalPollingHandler> Connector::*,
               &Connector::m_eventlistPollingHandler)

class tst_EventlistHandlerDBusConnectorRead : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void placesEachQueryAsAMethodOfItsOwn();
    void keepsTheSignaturesWithEmptyLists();
    void sendsTimesAsTextWithMillisecondsAndOffset_data();
    void sendsTimesAsTextWithMillisecondsAndOffset();
    void handsNumbersOnUnchanged();
    void handsTheAnswerToTheModule();
    void handsTheErrorOfTheServiceToTheModule();
    void queriesDoNotWaitForAFrozenService();
    void eachQueryWarnsOnceWithoutService();

    void emitsItsSignalForEachSignalOfTheService();
    void takesTheSignalFromAnyInterfaceAndWithFurtherArguments();
    void ignoresOtherSignalsOtherPathsAndOtherSenders();
    void warnsAtEachPollInSignalMode();
    void givesOneTrueForAnyNumberOfSignals();
    void pollsWithoutInitObject();
    void keepsSignalsUntilTheFirstPoll();
    void neverEmitsInPollingMode();
    void takesNothingBackInPollingMode();
    void warnsWhenThePollingHandlerIsMissing();

    void warnsWhenTheSubscriptionIsRefused();
    void warnsWithoutBusAndSubscribesWhenItComes();
    void takesAnyNumberOfConnectsAndDisconnectsInTurn();
    void isSubscribedOnceAfterRestartsOfTheService();
    void isSubscribedOnceAfterRestartsOfTheBus();
    void pollsAfterRestartsOfServiceAndBus();
    void declaresOneSignalAndTwoProtectedSlots();

private:
    bool sendChangedEventlist(int times = 1)
    {
        return emitSignal(path, interface, changedEventlist, QString(), {}, times);
    }
};

void tst_EventlistHandlerDBusConnectorRead::placesEachQueryAsAMethodOfItsOwn()
{
    const auto connector = Connector::createAndConnect(false);
    const auto list = [](const char* text) { return QStringList{QString::fromLatin1(text)}; };
    connector->getCompleteEventlist(context);
    connector->getListOfEventTypes(QString());
    connector->getPartOfEventlist(context, list("a"), list("b"), list("c"), list("d"),
                                  berlinTime(9), berlinTime(10), list("e"), -5);
    connector->getPartOfEventlistUnixTime(context, list("a"), list("b"), list("c"), list("d"), 17,
                                          18, list("e"), 6);
    connector->getPartOfEventlistById(context, list("a"), list("b"), list("c"), list("d"), 19, 20,
                                      list("e"), 7, true);

    const QVector<RecordedMessage> received = m_service.received();
    const QByteArray head = "call /EventlistRead Interface.EventlistRead.";
    QCOMPARE(received.size(), 5);
    QCOMPARE(received[0].toText(), head + "getCompleteEventlist \"s\" [\"lang_de\"]");
    QCOMPARE(received[1].toText(), head + "getListOfEventTypes \"s\" [\"\"]");
    QCOMPARE(received[2].toText(),
             head + "getPartOfEventlist \"sasasasasssasi\" [\"lang_de\",[\"a\"],[\"b\"],[\"c\"],"
                    "[\"d\"],\"2026-03-14T09:26:53.589+01:00\",\"2026-03-14T10:26:53.589+01:00\","
                    "[\"e\"],-5]");
    QCOMPARE(received[3].toText(),
             head + "getPartOfEventlistUnixTime \"sasasasasxxasi\" [\"lang_de\",[\"a\"],[\"b\"],"
                    "[\"c\"],[\"d\"],17,18,[\"e\"],6]");
    QCOMPARE(received[4].toText(),
             head + "getPartOfEventlistById \"sasasasasxxasib\" [\"lang_de\",[\"a\"],[\"b\"],"
                    "[\"c\"],[\"d\"],19,20,[\"e\"],7,true]");
    for (const RecordedMessage& query : received)
    {
        QCOMPARE(query.destination, ForeignService::centralServiceName());
        QVERIFY(query.isReplyExpected);
    }
}

void tst_EventlistHandlerDBusConnectorRead::keepsTheSignaturesWithEmptyLists()
{
    const auto connector = Connector::createAndConnect(false);
    const QStringList empty;
    connector->getPartOfEventlist(context, empty, empty, empty, empty, berlinTime(9),
                                  berlinTime(10), empty, 0);
    connector->getPartOfEventlistUnixTime(context, empty, empty, empty, empty, 0, 0, empty, 0);
    connector->getPartOfEventlistById(context, empty, empty, empty, empty, 0, 0, empty, 0, false);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 3);
    QCOMPARE(received[0].signature, QStringLiteral("sasasasasssasi"));
    QCOMPARE(received[1].signature, QStringLiteral("sasasasasxxasi"));
    QCOMPARE(received[2].signature, QStringLiteral("sasasasasxxasib"));
    QCOMPARE(received[2].arguments[1].toArray(), QJsonArray());
}

void tst_EventlistHandlerDBusConnectorRead::sendsTimesAsTextWithMillisecondsAndOffset_data()
{
    QTest::addColumn<QDateTime>("time");
    QTest::addColumn<QString>("text");
    QTest::newRow("summer") << QDateTime(QDate(2026, 7, 1), QTime(0, 0), QTimeZone("Europe/Berlin"))
                            << QStringLiteral("2026-07-01T00:00:00.000+02:00");
    QTest::newRow("UTC") << QDateTime(QDate(2026, 7, 1), QTime(0, 0, 0, 7), Qt::UTC)
                         << QStringLiteral("2026-07-01T00:00:00.007+00:00");
    QTest::newRow("invalid") << QDateTime() << QString();
}

void tst_EventlistHandlerDBusConnectorRead::sendsTimesAsTextWithMillisecondsAndOffset()
{
    QFETCH(QDateTime, time);
    QFETCH(QString, text);
    const auto connector = Connector::createAndConnect(false);
    const QStringList empty;
    connector->getPartOfEventlist(context, empty, empty, empty, empty, time, berlinTime(9), empty,
                                  0);
    connector->getPartOfEventlist(context, empty, empty, empty, empty, berlinTime(9), time, empty,
                                  0);
    const QVector<RecordedMessage> received = m_service.received();
    const QString other = QStringLiteral("2026-03-14T09:26:53.589+01:00");
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].arguments[5].toString(), text);
    QCOMPARE(received[0].arguments[6].toString(), other);
    QCOMPARE(received[1].arguments[5].toString(), other);
    QCOMPARE(received[1].arguments[6].toString(), text);
}

void tst_EventlistHandlerDBusConnectorRead::handsNumbersOnUnchanged()
{
    const auto connector = Connector::createAndConnect(false);
    const QStringList empty;
    constexpr auto lowest = std::numeric_limits<long long>::min();
    constexpr auto highest = std::numeric_limits<long long>::max();
    connector->getPartOfEventlistUnixTime(context, empty, empty, empty, empty, highest, lowest,
                                          empty, std::numeric_limits<int>::min());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("9223372036854775807"));
    QCOMPARE(received[0].arguments[6].toString(), QStringLiteral("-9223372036854775808"));
    QCOMPARE(received[0].arguments[8].toDouble(), -2147483648.0);
}

void tst_EventlistHandlerDBusConnectorRead::handsTheAnswerToTheModule()
{
    const QJsonObject header{{QStringLiteral("variant"), QStringLiteral("as")},
                             {QStringLiteral("value"), QJsonArray{QStringLiteral("EventId")}}};
    QVERIFY(m_service.answer(QStringLiteral("getCompleteEventlist"), QStringLiteral("a{sv}"),
                             QJsonArray{QJsonObject{{QStringLiteral("header"), header}}}));
    const auto connector = Connector::createAndConnect(false);

    const auto reply = connector->getCompleteEventlist(context);

    QVERIFY(!reply.isNull());
    QTRY_VERIFY(reply->isFinished());
    QVERIFY(!reply->isError());
    QCOMPARE(reply->values().size(), 1);
}

void tst_EventlistHandlerDBusConnectorRead::handsTheErrorOfTheServiceToTheModule()
{
    QVERIFY(m_service.answerError(QStringLiteral("getListOfEventTypes"),
                                  QStringLiteral("org.example.Busy"), QStringLiteral("Later")));
    const auto connector = Connector::createAndConnect(false);
    const auto reply = connector->getListOfEventTypes(context);
    QVERIFY(!reply.isNull());
    QTRY_VERIFY(reply->isFinished());
    QVERIFY(reply->isError());
    QCOMPARE(reply->error().message(), QStringLiteral("Later"));
}

void tst_EventlistHandlerDBusConnectorRead::queriesDoNotWaitForAFrozenService()
{
    const auto connector = Connector::createAndConnect(false);
    QVERIFY(m_service.freeze());
    QElapsedTimer timer;
    timer.start();
    const auto reply = connector->getCompleteEventlist(context);
    const auto lateConnector = Connector::createAndConnect(false);
    const auto lateReply = lateConnector->getCompleteEventlist(context);
    // The service answers after the thaw only: whoever had waited for it would be waiting still.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!reply->isFinished());
    QVERIFY(!lateReply->isFinished());
    m_service.thaw();
    QTRY_VERIFY(reply->isFinished());
    QTRY_VERIFY(lateReply->isFinished());
}

void tst_EventlistHandlerDBusConnectorRead::eachQueryWarnsOnceWithoutService()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy connectionErrors(connector.data(), &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    for (int i = 0; i < 5; ++i)
    {
        expectRefusedQuery(*connector);
    }
    const QStringList empty;
    const QDateTime time;

    QVERIFY(connector->getCompleteEventlist(context).isNull());
    QVERIFY(connector->getListOfEventTypes(context).isNull());
    QVERIFY(connector->getPartOfEventlist(context, empty, empty, empty, empty, time, time, empty, 0)
                .isNull());
    QVERIFY(
        connector->getPartOfEventlistUnixTime(context, empty, empty, empty, empty, 0, 0, empty, 0)
            .isNull());
    QVERIFY(connector
                ->getPartOfEventlistById(context, empty, empty, empty, empty, 0, 0, empty, 0, false)
                .isNull());
    QCOMPARE(connectionErrors.size(), 5);
}

void tst_EventlistHandlerDBusConnectorRead::emitsItsSignalForEachSignalOfTheService()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    QVERIFY(sendChangedEventlist(3));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 3);
}

void tst_EventlistHandlerDBusConnectorRead::takesTheSignalFromAnyInterfaceAndWithFurtherArguments()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    QVERIFY(emitSignal(path, QStringLiteral("org.example.Other"), changedEventlist));
    QVERIFY(emitSignal(path, interface, changedEventlist, QStringLiteral("s"),
                       {QStringLiteral("further")}));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 2);
}

void tst_EventlistHandlerDBusConnectorRead::ignoresOtherSignalsOtherPathsAndOtherSenders()
{
    ForeignService stranger(m_bus, QStringLiteral("org.example.Stranger"));
    QVERIFY2(stranger.start(), stranger.errorText());
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    Connector polling(true);

    QVERIFY(takeWhatWasSent());
    QVERIFY(stranger.emitSignal(path, interface, changedEventlist));
    QVERIFY(stranger.synchronise(QDBusConnection(m_bus.connect(QStringLiteral("observer")))));
    QDBusConnection::disconnectFromBus(QStringLiteral("observer"));
    QVERIFY(emitSignal(QStringLiteral("/AlarmlistRead"), interface, changedEventlist));
    QVERIFY(emitSignal(path, interface, QStringLiteral("changedAlarmlist")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 0);
    QVERIFY(!polling.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::warnsAtEachPollInSignalMode()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(
            QStringLiteral("PollingMode not active"),
            QStringLiteral("EventlistHandlerDBusConnectorRead"),
            QStringLiteral("EventlistHandlerDBusConnectorRead::changedFlagEventlist"));
    }
    QVERIFY(!connector->changedFlagEventlist());
    QVERIFY(sendChangedEventlist());
    QVERIFY(takeWhatWasSent());
    QVERIFY(!connector->changedFlagEventlist());
    QCOMPARE(changed.size(), 1);
}

void tst_EventlistHandlerDBusConnectorRead::givesOneTrueForAnyNumberOfSignals()
{
    const auto connector = Connector::createAndConnect(true);
    QVERIFY(!connector->changedFlagEventlist());
    for (const int signalCount : {1, 2, 50})
    {
        QVERIFY(sendChangedEventlist(signalCount));
        QVERIFY(takeWhatWasSent());
        QVERIFY(connector->changedFlagEventlist());
        QVERIFY(!connector->changedFlagEventlist());
    }
}

void tst_EventlistHandlerDBusConnectorRead::pollsWithoutInitObject()
{
    Connector connector(true);
    QVERIFY(!connector.changedFlagEventlist());
    QVERIFY(sendChangedEventlist());
    QVERIFY(takeWhatWasSent());
    QVERIFY(connector.changedFlagEventlist());
    QVERIFY(!connector.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::keepsSignalsUntilTheFirstPoll()
{
    Connector connector(true);
    QVERIFY(sendChangedEventlist());
    QVERIFY(takeServiceAway());
    QVERIFY(connector.changedFlagEventlist());
    QVERIFY(!connector.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::neverEmitsInPollingMode()
{
    const auto polling = Connector::createAndConnect(true);
    const auto marker = Connector::createAndConnect(false);
    QSignalSpy changed(polling.data(), &Connector::changedEventlist);
    QSignalSpy changedMarker(marker.data(), &Connector::changedEventlist);
    QVERIFY(QMetaObject::invokeMethod(polling.data(), "connectServices"));
    QVERIFY(QMetaObject::invokeMethod(polling.data(), "disconnectServices"));

    QVERIFY(sendChangedEventlist());

    QVERIFY(takeWhatWasSent());
    QCOMPARE(changedMarker.size(), 1);
    QCOMPARE(changed.size(), 0);
    QVERIFY(polling->changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::takesNothingBackInPollingMode()
{
    const auto polling = Connector::createAndConnect(true);
    QSignalSpy changed(polling.data(), &Connector::changedEventlist);
    // Somebody else has done what the connector itself does in signal mode.
    QVERIFY(DBusConnection::getQDBusConnection().connect(
        polling->getServiceName(), polling->getDBusPath(), QString(), changedEventlist,
        polling.data(), SIGNAL(changedEventlist())));

    QVERIFY(QMetaObject::invokeMethod(polling.data(), "disconnectServices"));

    QVERIFY(sendChangedEventlist());
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 1);
}

void tst_EventlistHandlerDBusConnectorRead::warnsWhenThePollingHandlerIsMissing()
{
    Connector connector(true);
    (connector.*pollingHandler()).reset();
    m_warnings.expect(QStringLiteral("Nollpointer access"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead::changedFlagEventlist"));
    QVERIFY(!connector.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::warnsWhenTheSubscriptionIsRefused()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    m_warnings.expect(QStringLiteral("Cannot connect to signal 'changedEventlist'!"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead::connectServices"));

    // QtDBus refuses what is subscribed already.
    QVERIFY(QMetaObject::invokeMethod(connector.data(), "connectServices"));

    QVERIFY(!connector->getCompleteEventlist(context).isNull());
    QVERIFY(sendChangedEventlist());
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 1);
}

void tst_EventlistHandlerDBusConnectorRead::warnsWithoutBusAndSubscribesWhenItComes()
{
    QVERIFY(takeBusAway());
    m_warnings.expect(QStringLiteral("Cannot connect to signal 'changedEventlist'!"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead::connectServices"));
    CountingConnector connector(false);
    connector.initObject();
    QCOMPARE(connector.connectCount, 1);
    QSignalSpy changed(&connector, &Connector::changedEventlist);
    expectRefusedQuery(connector);
    QVERIFY(connector.getCompleteEventlist(context).isNull());

    QVERIFY(bringBusBack());

    QTRY_COMPARE(connector.connectCount, 2);
    QVERIFY(takeWhatWasSent());
    QVERIFY(sendChangedEventlist());
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 1);
    QVERIFY(!connector.getCompleteEventlist(context).isNull());
}

void tst_EventlistHandlerDBusConnectorRead::takesAnyNumberOfConnectsAndDisconnectsInTurn()
{
    const auto connector = Connector::createAndConnect(false);
    QSignalSpy changed(connector.data(), &Connector::changedEventlist);
    for (int i = 0; i < 3; ++i)
    {
        QVERIFY(QMetaObject::invokeMethod(connector.data(), "disconnectServices"));
        QVERIFY(QMetaObject::invokeMethod(connector.data(), "disconnectServices"));
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QCOMPARE(changed.size(), i);

        QVERIFY(QMetaObject::invokeMethod(connector.data(), "connectServices"));
        QVERIFY(takeWhatWasSent());
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QCOMPARE(changed.size(), i + 1);
    }
}

void tst_EventlistHandlerDBusConnectorRead::isSubscribedOnceAfterRestartsOfTheService()
{
    CountingConnector connector(false);
    connector.initObject();
    QSignalSpy changed(&connector, &Connector::changedEventlist);
    for (int restarts = 1; restarts <= 10; ++restarts)
    {
        QVERIFY(takeServiceAway());
        QVERIFY(bringServiceBack());
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QCOMPARE(changed.size(), restarts);
    }
    QCOMPARE(connector.connectCount, 1);
}

void tst_EventlistHandlerDBusConnectorRead::isSubscribedOnceAfterRestartsOfTheBus()
{
    CountingConnector connector(false);
    connector.initObject();
    QSignalSpy changed(&connector, &Connector::changedEventlist);
    for (int restarts = 1; restarts <= 5; ++restarts)
    {
        QVERIFY(takeBusAway());
        QVERIFY(bringBusBack());
        QTRY_COMPARE(connector.connectCount, 1 + restarts);
        // The subscription stands when the service has seen what was sent after it.
        QVERIFY(takeWhatWasSent());
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QCOMPARE(changed.size(), restarts);
    }
}

void tst_EventlistHandlerDBusConnectorRead::pollsAfterRestartsOfServiceAndBus()
{
    Connector connector(true);
    for (int restarts = 0; restarts < 3; ++restarts)
    {
        QVERIFY(takeServiceAway());
        QVERIFY(bringServiceBack());
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QVERIFY(connector.changedFlagEventlist());
        QVERIFY(takeBusAway());
        QVERIFY(bringBusBack());
        QVERIFY(takeWhatWasSent());
        QVERIFY(sendChangedEventlist());
        QVERIFY(takeWhatWasSent());
        QVERIFY(connector.changedFlagEventlist());
        QVERIFY(!connector.changedFlagEventlist());
    }
}

void tst_EventlistHandlerDBusConnectorRead::declaresOneSignalAndTwoProtectedSlots()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;
    QStringList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i)
    {
        const QMetaMethod method = metaObject.method(i);
        methods << QString::fromLatin1(method.methodSignature());
        QCOMPARE(method.methodType(),
                 i == metaObject.methodOffset() ? QMetaMethod::Signal : QMetaMethod::Slot);
        QCOMPARE(method.access(),
                 i == metaObject.methodOffset() ? QMetaMethod::Public : QMetaMethod::Protected);
    }
    QCOMPARE(methods,
             (QStringList{QStringLiteral("changedEventlist()"), QStringLiteral("connectServices()"),
                          QStringLiteral("disconnectServices()")}));
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerDBusConnectorRead)
#include "tst_EventlistHandlerDBusConnectorRead.moc"
