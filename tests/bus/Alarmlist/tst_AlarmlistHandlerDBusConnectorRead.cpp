#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"

#include "TestSupport/PrivateMember.h"
#include "TestSupport/Waiting.h"
#include "bus/CentralServiceTest.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>

#include <atomic>
#include <thread>

using Connector = AlarmlistHandlerDBusConnectorRead;

namespace
{
const QString path = QStringLiteral("/AlarmlistRead");
const QString interface = QStringLiteral("Interface.AlarmlistRead");

// The six signals in their order; all but the first carry a state.
const QStringList signalNames{QStringLiteral("changedAlarmlist"),
                              QStringLiteral("changedAlarmInAlarmlist"),
                              QStringLiteral("changedActiveAlarmInAlarmlist"),
                              QStringLiteral("changedFaultInAlarmlist"),
                              QStringLiteral("changedActiveFaultInAlarmlist"),
                              QStringLiteral("changedCentralDetector")};

using Poll = bool (Connector::*)(bool&);
const Poll polls[] = {nullptr,
                      &Connector::changedFlagAlarmInAlarmlist,
                      &Connector::changedFlagActiveAlarmInAlarmlist,
                      &Connector::changedFlagFaultInAlarmlist,
                      &Connector::changedFlagActiveFaultInAlarmlist,
                      &Connector::changedFlagCentralDetector};

// Asks the polling function of a signal by its number.
bool poll(Connector& connector, int number, bool& state)
{
    return number == 0 ? connector.changedFlagAlarmlist() : (connector.*polls[number])(state);
}

QByteArray qtSignal(int number)
{
    return QByteArray("2") + signalNames[number].toLatin1() + (number == 0 ? "()" : "(bool)");
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

using Handler = QSharedPointer<DBusConnectionSignalPollingHandler> Connector::*;
PRIVATE_MEMBER(alarmlistHandler, Handler, &Connector::m_alarmlistPollingHandler)
PRIVATE_MEMBER(alarmInAlarmlistHandler, Handler, &Connector::m_alarmInAlarmlistPollingHandler)
PRIVATE_MEMBER(activeAlarmInAlarmlistHandler, Handler,
               &Connector::m_activeAlarmInAlarmlistPollingHandler)
PRIVATE_MEMBER(faultInAlarmlistHandler, Handler, &Connector::m_faultInAlarmlistPollingHandler)
PRIVATE_MEMBER(activeFaultInAlarmlistHandler, Handler,
               &Connector::m_activeFaultInAlarmlistPollingHandler)
PRIVATE_MEMBER(centralDetectorHandler, Handler, &Connector::m_centralDetectorPollingHandler)

class tst_AlarmlistHandlerDBusConnectorRead : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void placesItsTwoQueries();
    void handsAnswersAndErrorsToTheModule();
    void queriesWarnOnceWithoutService();
    void queriesDoNotWaitForAFrozenService();

    void emitsEachSignalWithItsState_data() { rowsOfSignals(); }
    void emitsEachSignalWithItsState();
    void ignoresSignalsOfAnotherShape_data() { rowsOfSignals(1); }
    void ignoresSignalsOfAnotherShape();

    void saysFalseWhenNothingHasChanged_data() { rowsOfSignals(); }
    void saysFalseWhenNothingHasChanged();
    void pollsEachSignalByItself_data() { rowsOfSignals(); }
    void pollsEachSignalByItself();
    void givesEveryStateInTheOrderOfArrival_data() { rowsOfSignals(1); }
    void givesEveryStateInTheOrderOfArrival();
    void givesOneTrueForAnyNumberOfListChanges();
    void warnsAtEachPollInSignalMode_data() { rowsOfSignals(); }
    void warnsAtEachPollInSignalMode();
    void warnsWhenAPollingHandlerIsMissing_data() { rowsOfSignals(); }
    void warnsWhenAPollingHandlerIsMissing();
    void neverEmitsInPollingMode();
    void takesNothingBackInPollingMode_data() { rowsOfSignals(); }
    void takesNothingBackInPollingMode();
    void pollsInAThreadWithoutEventLoop();

    void warnsOfTheOneSubscriptionThatFails_data() { rowsOfSignals(); }
    void warnsOfTheOneSubscriptionThatFails();
    void warnsOfAllSubscriptionsInOrderWithoutBus();
    void takesItsSubscriptionsBack();
    void isSubscribedOnceAfterRestartsOfServiceAndBus();
    void pollsAfterRestartsOfServiceAndBus();
    void declaresSixSignalsAndTwoProtectedSlots();

private:
    // All signals, or only the five with a state.
    static void rowsOfSignals(int first = 0)
    {
        QTest::addColumn<int>("number");
        for (int number = first; number < signalNames.size(); ++number)
        {
            QTest::newRow(signalNames[number].toLatin1().constData()) << number;
        }
    }

    bool send(int number, bool state)
    {
        return number == 0 ? emitSignal(path, interface, signalNames[0])
                           : emitSignal(path, interface, signalNames[number], QStringLiteral("b"),
                                        QJsonArray{state});
    }
};

void tst_AlarmlistHandlerDBusConnectorRead::placesItsTwoQueries()
{
    const auto connector = Connector::createAndConnect();
    QVERIFY(!connector->getCompleteAlarmlist(QStringLiteral("lang_de")).isNull());
    QVERIFY(!connector->getAlarmState(QString()).isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].toText(),
             QByteArray("call /AlarmlistRead Interface.AlarmlistRead.getCompleteAlarmlist \"s\" "
                        "[\"lang_de\"]"));
    QCOMPARE(received[1].toText(),
             QByteArray("call /AlarmlistRead Interface.AlarmlistRead.getAlarmState \"s\" [\"\"]"));
    QCOMPARE(received[1].destination, ForeignService::centralServiceName());
}

void tst_AlarmlistHandlerDBusConnectorRead::handsAnswersAndErrorsToTheModule()
{
    QVERIFY(m_service.answer(QStringLiteral("getAlarmState"), QStringLiteral("bb"), {true, false}));
    QVERIFY(m_service.answerError(QStringLiteral("getCompleteAlarmlist"),
                                  QStringLiteral("org.example.Busy"), QStringLiteral("Later")));
    Connector connector(false);
    const auto state = connector.getAlarmState(QString());
    const auto list = connector.getCompleteAlarmlist(QString());
    QTRY_VERIFY(state->isFinished() && list->isFinished());
    QCOMPARE(state->values(), (QVariantList{true, false}));
    QVERIFY(list->isError());
    QCOMPARE(list->error().message(), QStringLiteral("Later"));
}

void tst_AlarmlistHandlerDBusConnectorRead::queriesWarnOnceWithoutService()
{
    const auto connector = Connector::createAndConnect();
    QSignalSpy connectionErrors(connector.data(), &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    expectRefusedQuery(*connector);
    expectRefusedQuery(*connector);
    QVERIFY(connector->getCompleteAlarmlist(QString()).isNull());
    QVERIFY(connector->getAlarmState(QString()).isNull());
    QCOMPARE(connectionErrors.size(), 2);
}

void tst_AlarmlistHandlerDBusConnectorRead::queriesDoNotWaitForAFrozenService()
{
    const auto connector = Connector::createAndConnect();
    QVERIFY(m_service.freeze());
    QElapsedTimer timer;
    timer.start();
    // One that polls, and that is made now, does not wait either.
    Connector lateConnector(true);
    const QVector<DBusPendingReply::SharedPointer> replies{
        connector->getCompleteAlarmlist(QString()), connector->getAlarmState(QString()),
        lateConnector.getCompleteAlarmlist(QString()), lateConnector.getAlarmState(QString())};
    QVERIFY(!lateConnector.changedFlagAlarmlist());
    // The service answers after the thaw only: whoever had waited for it would be waiting still.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    for (const auto& reply : replies)
    {
        QVERIFY(!reply.isNull());
        QVERIFY(!reply->isFinished());
    }
    m_service.thaw();
    for (const auto& reply : replies)
    {
        QTRY_VERIFY(reply->isFinished());
        QVERIFY(!reply->isError());
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::emitsEachSignalWithItsState()
{
    QFETCH(int, number);
    const auto connector = Connector::createAndConnect();
    QSignalSpy spy(connector.data(), qtSignal(number).constData());
    QVector<QSignalSpy*> others;
    for (int other = 0; other < signalNames.size(); ++other)
    {
        others << new QSignalSpy(connector.data(), qtSignal(other).constData());
        others.last()->setParent(connector.data());
    }

    QVERIFY(send(number, true));
    QVERIFY(send(number, false));

    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 2);
    if (number != 0)
    {
        QCOMPARE(spy[0][0].toBool(), true);
        QCOMPARE(spy[1][0].toBool(), false);
    }
    for (int other = 0; other < signalNames.size(); ++other)
    {
        QCOMPARE(others[other]->size(), other == number ? 2 : 0);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::ignoresSignalsOfAnotherShape()
{
    QFETCH(int, number);
    const auto connector = Connector::createAndConnect();
    QSignalSpy spy(connector.data(), qtSignal(number).constData());
    Connector polling(true);
    for (const char* const signature : {"i", "s"})
    {
        QVERIFY(
            emitSignal(path, interface, signalNames[number], QString::fromLatin1(signature),
                       QJsonArray{signature[0] == 'i' ? QJsonValue(1) : QJsonValue(QString())}));
    }
    QVERIFY(emitSignal(path, interface, signalNames[number]));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 0);
    bool state = true;
    QVERIFY(!poll(polling, number, state));
    QVERIFY(state);
}

void tst_AlarmlistHandlerDBusConnectorRead::saysFalseWhenNothingHasChanged()
{
    QFETCH(int, number);
    Connector connector(true);
    for (const bool before : {true, false})
    {
        bool state = before;
        QVERIFY(!poll(connector, number, state));
        QCOMPARE(state, before);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::pollsEachSignalByItself()
{
    QFETCH(int, number);
    Connector connector(true);
    connector.initObject();
    for (const bool sent : {true, false})
    {
        QVERIFY(send(number, sent));
        QVERIFY(takeWhatWasSent());
        for (int other = 0; other < signalNames.size(); ++other)
        {
            bool state = !sent;
            QCOMPARE(poll(connector, other, state), other == number);
            QCOMPARE(state, other == number && number != 0 ? sent : !sent);
        }
        bool state = !sent;
        QVERIFY(!poll(connector, number, state));
        QCOMPARE(state, !sent);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::givesEveryStateInTheOrderOfArrival()
{
    QFETCH(int, number);
    Connector connector(true);
    const QVector<bool> sent{true, true, false, true, false, false};
    for (const bool state : sent)
    {
        QVERIFY(send(number, state));
    }
    QVERIFY(takeWhatWasSent());

    QVector<bool> polled;
    bool state = false;
    while (poll(connector, number, state))
    {
        polled << state;
    }
    QCOMPARE(polled, sent);
}

void tst_AlarmlistHandlerDBusConnectorRead::givesOneTrueForAnyNumberOfListChanges()
{
    Connector connector(true);
    for (const int signalCount : {1, 2, 50})
    {
        QVERIFY(emitSignal(path, interface, signalNames[0], QString(), {}, signalCount));
        QVERIFY(takeWhatWasSent());
        QVERIFY(connector.changedFlagAlarmlist());
        QVERIFY(!connector.changedFlagAlarmlist());
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::warnsAtEachPollInSignalMode()
{
    QFETCH(int, number);
    const auto connector = Connector::createAndConnect();
    QSignalSpy spy(connector.data(), qtSignal(number).constData());
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(
            QStringLiteral("PollingMode not active"),
            QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
            QStringLiteral("AlarmlistHandlerDBusConnectorRead::checkPollingModeAccess"));
    }
    bool state = true;
    QVERIFY(!poll(*connector, number, state));
    QVERIFY(send(number, false));
    QVERIFY(takeWhatWasSent());
    QVERIFY(!poll(*connector, number, state));
    QVERIFY(state);
    QCOMPARE(spy.size(), 1);
}

void tst_AlarmlistHandlerDBusConnectorRead::warnsWhenAPollingHandlerIsMissing()
{
    QFETCH(int, number);
    const Handler handlers[] = {
        alarmlistHandler(),        alarmInAlarmlistHandler(),       activeAlarmInAlarmlistHandler(),
        faultInAlarmlistHandler(), activeFaultInAlarmlistHandler(), centralDetectorHandler()};
    Connector connector(true);
    (connector.*handlers[number]).reset();
    m_warnings.expect(QStringLiteral("Nollpointer access"),
                      QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
                      QStringLiteral("AlarmlistHandlerDBusConnectorRead::checkPollingModeAccess"));
    for (int other = 0; other < signalNames.size(); ++other)
    {
        bool state = true;
        QVERIFY(!poll(connector, other, state));
        QVERIFY(state);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::takesNothingBackInPollingMode()
{
    QFETCH(int, number);
    Connector polling(true);
    QSignalSpy spy(&polling, qtSignal(number).constData());
    // Somebody else has done what the connector itself does in signal mode.
    QVERIFY(DBusConnection::getQDBusConnection().connect(
        polling.getServiceName(), polling.getDBusPath(), QString(), signalNames[number], &polling,
        qtSignal(number).constData()));

    QVERIFY(QMetaObject::invokeMethod(&polling, "disconnectServices"));

    QVERIFY(send(number, true));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_AlarmlistHandlerDBusConnectorRead::neverEmitsInPollingMode()
{
    Connector polling(true);
    polling.initObject();
    QVERIFY(QMetaObject::invokeMethod(&polling, "connectServices"));
    QVERIFY(QMetaObject::invokeMethod(&polling, "disconnectServices"));
    const auto marker = Connector::createAndConnect();
    QSignalSpy markerSpy(marker.data(), &Connector::changedCentralDetector);
    QVector<QSignalSpy*> spies;
    for (int number = 0; number < signalNames.size(); ++number)
    {
        spies << new QSignalSpy(&polling, qtSignal(number).constData());
        spies.last()->setParent(marker.data());
        QVERIFY(send(number, true));
    }
    QVERIFY(takeWhatWasSent());
    QCOMPARE(markerSpy.size(), 1);
    for (int number = 0; number < signalNames.size(); ++number)
    {
        QCOMPARE(spies[number]->size(), 0);
        bool state = false;
        QVERIFY(poll(polling, number, state));
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::pollsInAThreadWithoutEventLoop()
{
    constexpr int stateCount = 1000;
    std::atomic<bool> isReady{false};
    QVector<bool> polled;
    bool hasListChanged = false;
    std::thread controller([&] {
        Connector connector(true);
        isReady = true;
        QElapsedTimer timer;
        timer.start();
        while (polled.size() < stateCount && timer.elapsed() < defaultDeadline.count())
        {
            bool state = false;
            if (connector.changedFlagCentralDetector(state))
            {
                polled << state;
            }
            hasListChanged = connector.changedFlagAlarmlist() || hasListChanged;
            std::this_thread::yield();
        }
    });
    while (!isReady)
    {
        std::this_thread::yield();
    }

    QVERIFY(send(0, true));
    for (int i = 0; i < stateCount; ++i)
    {
        if (!send(5, i % 3 == 0))
        {
            break;
        }
    }
    controller.join();

    QVERIFY(hasListChanged);
    QCOMPARE(polled.size(), stateCount);
    for (int i = 0; i < stateCount; ++i)
    {
        QCOMPARE(polled[i], i % 3 == 0);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::warnsOfTheOneSubscriptionThatFails()
{
    QFETCH(int, number);
    Connector connector(false);
    // QtDBus refuses what is subscribed already, so exactly this one fails.
    QVERIFY(DBusConnection::getQDBusConnection().connect(
        connector.getServiceName(), connector.getDBusPath(), QString(), signalNames[number],
        &connector, qtSignal(number).constData()));
    m_warnings.expect(QStringLiteral("Cannot connect to signal '%1'!").arg(signalNames[number]),
                      QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
                      QStringLiteral("AlarmlistHandlerDBusConnectorRead::connectServices"));

    connector.initObject();

    for (int other = 0; other < signalNames.size(); ++other)
    {
        QSignalSpy spy(&connector, qtSignal(other).constData());
        QVERIFY(send(other, true));
        QVERIFY(takeWhatWasSent());
        QCOMPARE(spy.size(), 1);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::warnsOfAllSubscriptionsInOrderWithoutBus()
{
    QVERIFY(takeBusAway());
    for (const QString& signalName : signalNames)
    {
        m_warnings.expect(QStringLiteral("Cannot connect to signal '%1'!").arg(signalName),
                          QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
                          QStringLiteral("AlarmlistHandlerDBusConnectorRead::connectServices"));
    }
    CountingConnector connector(false);
    connector.initObject();

    QVERIFY(bringBusBack());
    QTRY_COMPARE(connector.connectCount, 2);
    QVERIFY(takeWhatWasSent());
    for (int number = 0; number < signalNames.size(); ++number)
    {
        QSignalSpy spy(&connector, qtSignal(number).constData());
        QVERIFY(send(number, true));
        QVERIFY(takeWhatWasSent());
        QCOMPARE(spy.size(), 1);
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::takesItsSubscriptionsBack()
{
    const auto connector = Connector::createAndConnect();
    const auto marker = Connector::createAndConnect();
    QVERIFY(QMetaObject::invokeMethod(connector.data(), "disconnectServices"));
    QVERIFY(QMetaObject::invokeMethod(connector.data(), "disconnectServices"));
    for (int number = 0; number < signalNames.size(); ++number)
    {
        QSignalSpy spy(connector.data(), qtSignal(number).constData());
        QSignalSpy markerSpy(marker.data(), qtSignal(number).constData());
        QVERIFY(send(number, true));
        QVERIFY(takeWhatWasSent());
        QCOMPARE(markerSpy.size(), 1);
        QCOMPARE(spy.size(), 0);
    }
    QVERIFY(QMetaObject::invokeMethod(connector.data(), "connectServices"));
    QSignalSpy spy(connector.data(), &Connector::changedCentralDetector);
    QVERIFY(takeWhatWasSent());
    QVERIFY(send(5, true));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_AlarmlistHandlerDBusConnectorRead::isSubscribedOnceAfterRestartsOfServiceAndBus()
{
    CountingConnector connector(false);
    connector.initObject();
    for (int restarts = 1; restarts <= 3; ++restarts)
    {
        QVERIFY(takeServiceAway());
        QVERIFY(bringServiceBack());
        QVERIFY(takeBusAway());
        QVERIFY(bringBusBack());
        QTRY_COMPARE(connector.connectCount, 1 + restarts);
        QVERIFY(takeWhatWasSent());
        for (int number = 0; number < signalNames.size(); ++number)
        {
            QSignalSpy spy(&connector, qtSignal(number).constData());
            QVERIFY(send(number, true));
            QVERIFY(takeWhatWasSent());
            QCOMPARE(spy.size(), 1);
        }
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::pollsAfterRestartsOfServiceAndBus()
{
    Connector connector(true);
    QVERIFY(takeServiceAway());
    QVERIFY(bringServiceBack());
    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    QVERIFY(takeWhatWasSent());
    for (int number = 0; number < signalNames.size(); ++number)
    {
        QVERIFY(send(number, true));
        QVERIFY(takeWhatWasSent());
        bool state = false;
        QVERIFY(poll(connector, number, state));
        QCOMPARE(state, number != 0);
        QVERIFY(!poll(connector, number, state));
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::declaresSixSignalsAndTwoProtectedSlots()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;
    const int offset = metaObject.methodOffset();
    QCOMPARE(metaObject.methodCount() - offset, 8);
    for (int number = 0; number < 6; ++number)
    {
        const QMetaMethod method = metaObject.method(offset + number);
        QCOMPARE(method.methodType(), QMetaMethod::Signal);
        QCOMPARE(QByteArray("2") + method.methodSignature(), qtSignal(number));
        QCOMPARE(method.parameterNames(),
                 number == 0 ? QList<QByteArray>() : QList<QByteArray>{"bState"});
    }
    for (int number = 6; number < 8; ++number)
    {
        const QMetaMethod method = metaObject.method(offset + number);
        QCOMPARE(method.methodType(), QMetaMethod::Slot);
        QCOMPARE(method.access(), QMetaMethod::Protected);
    }
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandlerDBusConnectorRead)
#include "tst_AlarmlistHandlerDBusConnectorRead.moc"
