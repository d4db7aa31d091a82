#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include "bus/CentralServiceTest.h"
#include "bus/WorkedExample.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QSignalSpy>

#include <thread>
#include <vector>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;

class tst_EventlistHandlerDBusConnectorWrite : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void sendsTheWorkedExampleByteForByte();
    void sendsTypeAndStateAsDecimalText_data();
    void sendsTypeAndStateAsDecimalText();
    void stampsTheTimeOfTheCall();
    void sendsAnEmptyMetadataObjectAsAStringOfTwoBrackets();
    void sendsSourceHashesInTheAdditionalDataOnly();
    void signatureFollowsTheTypeOfTheDescription_data();
    void signatureFollowsTheTypeOfTheDescription();
    void cutsATextAtTheFirstNul();
    void deletesTheEventlist();
    void suppressesEventProcessingAndEndsIt();
    void logsNothingWhenTheServiceRefuses();
    void warnsTwiceForEachCallWithoutService();
    void placesTheNextCallWhenTheServiceIsBack();
    void placesTheNextCallWhenTheBusIsBack();
    void losesCallsWithoutBusWithTwoWarnings();
    void placesCallsWithoutInitObject();
    void sendsNothingWhenItIsDestroyed();
    void keepsTheOrderOfItsCalls();
    void worksOnSeveralThreadsWithAConnectorEach();
    void hasNoSignalsAndNoSlotsOfItsOwn();
};

namespace
{
const QString logEvent = QStringLiteral("logEvent");
const QString signatureOfLogEvent = QStringLiteral("assssassss");

// A connector of which only the time and the contents that a test looks at are interesting.
void logPlainEvent(EventlistHandlerDBusConnectorWrite& connector, const QString& user = QString(),
                   const QVariant& description = QStringLiteral("{}"))
{
    connector.logEvent(EventType::otherEvents, State::neutral, QString(),
                       QStringLiteral("PumpControl"), description, QStringList(), user, QString(),
                       QJsonObject(), QString(), QString(), SourceHashType::noSourceHash);
}
} // namespace

void tst_EventlistHandlerDBusConnectorWrite::sendsTheWorkedExampleByteForByte()
{
    const auto connector = EventlistHandlerDBusConnectorWrite::createAndConnect(false);

    connector->logEvent(
        QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("EventlistAlarmOn")},
        WorkedExample::time(), QStringLiteral("PumpControl"), WorkedExample::description(),
        QStringList{QStringLiteral("Error"), QStringLiteral("Firmware")}, QString(),
        QStringLiteral("PumpControl/OverTemperature"), WorkedExample::metaDataObject(),
        WorkedExample::alarmId(), QString(), SourceHashType::noSourceHash);

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    const RecordedMessage& event = received[0];
    QCOMPARE(event.kind, QStringLiteral("call"));
    QCOMPARE(event.destination, ForeignService::centralServiceName());
    QCOMPARE(event.path, QStringLiteral("/EventlistWrite"));
    QCOMPARE(event.interface, QStringLiteral("Interface.EventlistWrite"));
    QCOMPARE(event.member, logEvent);
    QCOMPARE(event.signature, signatureOfLogEvent);
    QVERIFY(!event.isReplyExpected);
    QCOMPARE(event.arguments.size(), 8);
    QCOMPARE(event.arguments[0].toArray(), (QJsonArray{QStringLiteral("0"), QStringLiteral("1"),
                                                       QStringLiteral("EventlistAlarmOn")}));
    QCOMPARE(event.arguments[1].toString(), WorkedExample::time());
    QCOMPARE(event.arguments[2].toString(), QStringLiteral("PumpControl"));
    QCOMPARE(event.arguments[3].toString(), WorkedExample::description());
    QCOMPARE(event.arguments[4].toArray(),
             (QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}));
    QCOMPARE(event.arguments[5], QJsonValue(QString()));
    QCOMPARE(event.arguments[6].toString(), WorkedExample::additionalData());
    QCOMPARE(event.arguments[7].toString(), WorkedExample::alarmId());
}

void tst_EventlistHandlerDBusConnectorWrite::sendsTypeAndStateAsDecimalText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("icon");
    QTest::addColumn<QStringList>("attributes");
    for (int type = 0; type < 4; ++type)
    {
        for (int state = 0; state < 3; ++state)
        {
            QTest::addRow("type %d, state %d", type, state)
                << type << state << QStringLiteral("Icon")
                << QStringList{QString::number(type), QString::number(state),
                               QStringLiteral("Icon")};
        }
    }
    QTest::newRow("empty icon") << int(EventType::otherEvents) << int(State::neutral) << QString()
                                << QStringList{QStringLiteral("3"), QStringLiteral("0"), QString()};
}

void tst_EventlistHandlerDBusConnectorWrite::sendsTypeAndStateAsDecimalText()
{
    QFETCH(int, type);
    QFETCH(int, state);
    QFETCH(QString, icon);
    QFETCH(QStringList, attributes);
    EventlistHandlerDBusConnectorWrite connector(false);

    connector.logEvent(EventType(type), State(state), icon, QStringLiteral("PumpControl"),
                       WorkedExample::description(), QStringList(), QStringLiteral("anna"),
                       QStringLiteral("PumpControl/Started"), QJsonObject(),
                       WorkedExample::alarmId(), QString(), SourceHashType::noSourceHash);

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].signature, signatureOfLogEvent);
    QCOMPARE(received[0].arguments[0].toArray(), QJsonArray::fromStringList(attributes));
    QCOMPARE(received[0].arguments[2].toString(), QStringLiteral("PumpControl"));
    QCOMPARE(received[0].arguments[3].toString(), WorkedExample::description());
    QCOMPARE(received[0].arguments[4].toArray(), QJsonArray());
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("anna"));
    QCOMPARE(received[0].arguments[7].toString(), WorkedExample::alarmId());
}

void tst_EventlistHandlerDBusConnectorWrite::stampsTheTimeOfTheCall()
{
    EventlistHandlerDBusConnectorWrite connector(false);

    const QDateTime before = QDateTime::currentDateTime();
    logPlainEvent(connector);
    const QDateTime after = QDateTime::currentDateTime();

    const QString text = m_service.received().value(0).arguments[1].toString();
    const QRegularExpression form(
        QStringLiteral("^\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}[+-]\\d\\d:\\d\\d$"));
    QVERIFY2(form.match(text).hasMatch(), qPrintable(text));
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    QVERIFY2(before <= time && time <= after, qPrintable(text));
}

void tst_EventlistHandlerDBusConnectorWrite::sendsAnEmptyMetadataObjectAsAStringOfTwoBrackets()
{
    EventlistHandlerDBusConnectorWrite connector(false);

    connector.logEvent(QStringList{QStringLiteral("3"), QStringLiteral("0"), QString()},
                       WorkedExample::time(), QStringLiteral("PumpControl"), QStringLiteral("{}"),
                       QStringList(), QString(), QStringLiteral("PumpControl/OverTemperature"),
                       QJsonObject(), QString(), QString(), SourceHashType::noSourceHash);

    QCOMPARE(m_service.received().value(0).arguments[6].toString(),
             json("{'EventId':'PumpControl/"
                  "OverTemperature','MetaData':'{}','SourceHashType':0,'SourceHashes':''}"));
}

void tst_EventlistHandlerDBusConnectorWrite::sendsSourceHashesInTheAdditionalDataOnly()
{
    EventlistHandlerDBusConnectorWrite connector(false);

    connector.logEvent(QStringList{QStringLiteral("3"), QStringLiteral("0"), QString()},
                       WorkedExample::time(), QString(), QStringLiteral("{}"), QStringList(),
                       QString(), QString(), QJsonObject(), QString(), QStringLiteral("0123abcd"),
                       SourceHashType(7));

    const QJsonArray arguments = m_service.received().value(0).arguments;
    QCOMPARE(arguments.size(), 8);
    QCOMPARE(arguments[6].toString(),
             json("{'EventId':'','MetaData':'{}','SourceHashType':7,'SourceHashes':'0123abcd'}"));
}

void tst_EventlistHandlerDBusConnectorWrite::signatureFollowsTheTypeOfTheDescription_data()
{
    QTest::addColumn<QVariant>("description");
    QTest::addColumn<QString>("signature");
    const auto row = [](const char* name, const QVariant& description, const char* signature) {
        QTest::newRow(name) << description
                            << QStringLiteral("asss%1assss").arg(QLatin1String(signature));
    };
    row("text", QStringLiteral("{}"), "s");
    row("null text", QString(), "s");
    row("int", 5, "i");
    row("long long", Q_INT64_C(5), "x");
    row("bool", true, "b");
    row("double", 97.5, "d");
    row("list", QStringList{QStringLiteral("a")}, "as");
    row("text object", QVariantMap{{QStringLiteral("lang_en"), QStringLiteral("a")}}, "a{sv}");
    row("bytes", QByteArray("a"), "ay");
}

void tst_EventlistHandlerDBusConnectorWrite::signatureFollowsTheTypeOfTheDescription()
{
    QFETCH(QVariant, description);
    QFETCH(QString, signature);
    EventlistHandlerDBusConnectorWrite connector(false);
    logPlainEvent(connector, QString(), description);
    QCOMPARE(m_service.received().value(0).signature, signature);
}

void tst_EventlistHandlerDBusConnectorWrite::cutsATextAtTheFirstNul()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    logPlainEvent(connector, QStringLiteral("an") + QChar(0) + QStringLiteral("na"));
    QCOMPARE(m_service.received().value(0).arguments[5].toString(), QStringLiteral("an"));
}

void tst_EventlistHandlerDBusConnectorWrite::deletesTheEventlist()
{
    EventlistHandlerDBusConnectorWrite(false).deleteEventlist();
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(),
             QByteArray("call /EventlistWrite Interface.EventlistWrite.deleteEventlist \"\" [] no "
                        "reply expected"));
}

void tst_EventlistHandlerDBusConnectorWrite::suppressesEventProcessingAndEndsIt()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    connector.suppressEventProcessing(true);
    connector.suppressEventProcessing(false);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].toText(),
             QByteArray("call /EventlistWrite Interface.EventlistWrite.suppressEventProcessing "
                        "\"b\" [true] no reply expected"));
    QCOMPARE(received[1].toText(),
             QByteArray("call /EventlistWrite Interface.EventlistWrite.suppressEventProcessing "
                        "\"b\" [false] no reply expected"));
}

void tst_EventlistHandlerDBusConnectorWrite::logsNothingWhenTheServiceRefuses()
{
    for (const char* const member : {"logEvent", "deleteEventlist", "suppressEventProcessing"})
    {
        QVERIFY(m_service.answerError(QString::fromLatin1(member),
                                      QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"),
                                      QStringLiteral("No such method")));
    }
    EventlistHandlerDBusConnectorWrite connector(false);
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);

    logPlainEvent(connector);
    connector.deleteEventlist();
    connector.suppressEventProcessing(true);

    QCOMPARE(m_service.received().size(), 3);
    QCOMPARE(connectionErrors.size(), 0);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_EventlistHandlerDBusConnectorWrite::warnsTwiceForEachCallWithoutService()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    for (int i = 0; i < 3; ++i)
    {
        expectRefusedCall(connector);
    }

    logPlainEvent(connector);
    QCOMPARE(connectionErrors.size(), 1);
    connector.deleteEventlist();
    QCOMPARE(connectionErrors.size(), 2);
    connector.suppressEventProcessing(true);
    QCOMPARE(connectionErrors.size(), 3);
    QCOMPARE(connector.getRefusedCallCount(), quint64(3));
}

void tst_EventlistHandlerDBusConnectorWrite::placesTheNextCallWhenTheServiceIsBack()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    QVERIFY(takeServiceAway());
    expectRefusedCall(connector);
    logPlainEvent(connector, QStringLiteral("lost"));
    QVERIFY(bringServiceBack());

    logPlainEvent(connector, QStringLiteral("received"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("received"));
}

void tst_EventlistHandlerDBusConnectorWrite::placesTheNextCallWhenTheBusIsBack()
{
    const auto connector = EventlistHandlerDBusConnectorWrite::createAndConnect(false);
    EventlistHandlerDBusConnectorWrite plainConnector(false);
    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    QVERIFY(waitUntilValid(*connector));
    QVERIFY(waitUntilValid(plainConnector));

    logPlainEvent(*connector, QStringLiteral("first"));
    logPlainEvent(plainConnector, QStringLiteral("second"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("first"));
    QCOMPARE(received[1].arguments[5].toString(), QStringLiteral("second"));
}

void tst_EventlistHandlerDBusConnectorWrite::losesCallsWithoutBusWithTwoWarnings()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    QVERIFY(takeBusAway());
    expectRefusedCall(connector);
    logPlainEvent(connector);

    // One that is made without a bus is an ordinary one.
    const auto lateConnector = EventlistHandlerDBusConnectorWrite::createAndConnect(false);
    QVERIFY(!lateConnector.isNull());
    expectRefusedCall(*lateConnector);
    logPlainEvent(*lateConnector);

    QVERIFY(bringBusBack());
    QVERIFY(waitUntilValid(*lateConnector));
    logPlainEvent(*lateConnector, QStringLiteral("received"));
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventlistHandlerDBusConnectorWrite::placesCallsWithoutInitObject()
{
    EventlistHandlerDBusConnectorWrite connector(true);
    QVERIFY(connector.isDBusInterfaceValid());
    logPlainEvent(connector);
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventlistHandlerDBusConnectorWrite::sendsNothingWhenItIsDestroyed()
{
    {
        const auto connector = EventlistHandlerDBusConnectorWrite::createAndConnect(true);
        QVERIFY(connector->isDBusInterfaceValid());
    }
    EventlistHandlerDBusConnectorWrite marker(false);
    marker.deleteEventlist();
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventlistHandlerDBusConnectorWrite::keepsTheOrderOfItsCalls()
{
    EventlistHandlerDBusConnectorWrite connector(false);
    for (int i = 0; i < 500; ++i)
    {
        logPlainEvent(connector, QString::number(i));
    }
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 500);
    for (int i = 0; i < 500; ++i)
    {
        QCOMPARE(received[i].arguments[5].toString(), QString::number(i));
    }
}

void tst_EventlistHandlerDBusConnectorWrite::worksOnSeveralThreadsWithAConnectorEach()
{
    constexpr int threadCount = 4;
    constexpr int eventCount = 200;
    std::vector<std::thread> threads;
    for (int number = 0; number < threadCount; ++number)
    {
        threads.emplace_back([number] {
            const auto connector = EventlistHandlerDBusConnectorWrite::createAndConnect(false);
            for (int i = 0; i < eventCount; ++i)
            {
                logPlainEvent(*connector, QStringLiteral("%1 %2").arg(number).arg(i));
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), threadCount * eventCount);
    int next[threadCount] = {};
    for (const RecordedMessage& event : received)
    {
        const QStringList words = event.arguments[5].toString().split(QLatin1Char(' '));
        QCOMPARE(words.value(1).toInt(), next[words[0].toInt()]++);
    }
}

void tst_EventlistHandlerDBusConnectorWrite::hasNoSignalsAndNoSlotsOfItsOwn()
{
    const QMetaObject& metaObject = EventlistHandlerDBusConnectorWrite::staticMetaObject;
    QCOMPARE(metaObject.className(), "EventlistHandlerDBusConnectorWrite");
    QCOMPARE(metaObject.superClass(), &DBusConnectorBase::staticMetaObject);
    QCOMPARE(metaObject.methodCount(), DBusConnectorBase::staticMetaObject.methodCount());
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerDBusConnectorWrite)
#include "tst_EventlistHandlerDBusConnectorWrite.moc"
