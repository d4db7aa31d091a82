#include "EventHandlers/EventHandlerBaseClass.h"

#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/AuditTrailHandler.h"
#include "EventHandlers/EventHandler.h"
#include "EventHandlers/FaultHandler.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "TestSupport/FakeTextManager.h"
#include "bus/CentralServiceTest.h"
#include "bus/WorkedExample.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/RecorderUrlHashHandling.h"

#include <QUuid>

#include <functional>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;
using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;

namespace
{
const QString moduleName = QStringLiteral("PumpControl");
const QString started = QStringLiteral("PumpControl/Started");
const QStringList keywords{QStringLiteral("Error")};

// The fields of an event as the service gets them.
struct Event
{
    explicit Event(const RecordedMessage& message) : arguments(message.arguments) {}

    QString type() const { return arguments[0].toArray()[0].toString(); }
    QString state() const { return arguments[0].toArray()[1].toString(); }
    QString icon() const { return arguments[0].toArray()[2].toString(); }
    QString module() const { return arguments[2].toString(); }
    QString description() const { return arguments[3].toString(); }
    QJsonArray words() const { return arguments[4].toArray(); }
    QString user() const { return arguments[5].toString(); }
    QString additionalData() const { return arguments[6].toString(); }
    QString alarmId() const { return arguments[7].toString(); }

    QJsonArray arguments;
};

bool isUuid(const QString& text)
{
    return text == QUuid::fromString(text).toString() && !QUuid::fromString(text).isNull();
}
} // namespace

/// What the four producers send over the bus, field by field.
class tst_EventHandlerBaseClass : public CentralServiceTest
{
    Q_OBJECT
public:
    tst_EventHandlerBaseClass();

private Q_SLOTS:
    void producersSendTheWorkedExampleByteForByte();
    void eachStateOfEachProducerHasItsFields_data();
    void eachStateOfEachProducerHasItsFields();
    void alarmsAndFaultsComeAndGoOnce_data();
    void alarmsAndFaultsComeAndGoOnce();
    void eventsGoOnAndOffWithoutAnAlarmId();
    void oneShotEventsRepeatAndLeaveTheStateAlone();
    void auditTrailEntriesCarryTheirUserFirst();
    void describesFromAConfigurationLeaf();
    void sendsAKeyInPlaceOfAMissingText();
    void sendsSourceHashesAndTheirType();
    void refusesAnotherDescriptionOfAnAlarmOrFault_data();
    void refusesAnotherDescriptionOfAnAlarmOrFault();
    void sendsNothingWhenItIsDeletedWhileItIsOn();
    void losesAnEventWithoutServiceAndRemembersTheState();

private:
    FakeTextManager m_texts;
};

tst_EventHandlerBaseClass::tst_EventHandlerBaseClass() : m_texts(FakeTextManager::pumpTexts())
{
    m_texts.setTexts(started, QStringLiteral("Gestartet"), QStringLiteral("Started"));
}

void tst_EventHandlerBaseClass::producersSendTheWorkedExampleByteForByte()
{
    AlarmHandler alarm(moduleName, m_texts, WorkedExample::eventId(), keywords);

    alarm.changeState(true, m_texts,
                      Arguments{{QStringLiteral("%1"), QStringLiteral("PumpControl/PumpName3")}},
                      Arguments{{QStringLiteral("%2"), QStringLiteral("97.5")}});

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].signature, QStringLiteral("assssassss"));
    QVERIFY(!received[0].isReplyExpected);
    const Event event(received[0]);
    QCOMPARE(event.arguments[0].toArray(), (QJsonArray{QStringLiteral("0"), QStringLiteral("1"),
                                                       QStringLiteral("EventlistAlarmOn")}));
    QCOMPARE(event.module(), moduleName);
    QCOMPARE(event.description(), WorkedExample::description());
    QCOMPARE(event.words(), (QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}));
    QCOMPARE(event.user(), QString());
    QCOMPARE(event.additionalData(), WorkedExample::additionalData());
    QVERIFY2(isUuid(event.alarmId()), qPrintable(event.alarmId()));
}

void tst_EventHandlerBaseClass::eachStateOfEachProducerHasItsFields_data()
{
    QTest::addColumn<int>("producer");
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("icon");
    const auto rows = [](EventType producer, const char* name, const QStringList& icons) {
        for (int state = 0; state < 3; ++state)
        {
            QTest::addRow("%s, state %d", name, state) << int(producer) << state << icons[state];
        }
    };
    rows(EventType::alarm, "alarm",
         {QString(), QStringLiteral("EventlistAlarmOn"), QStringLiteral("EventlistAlarmOff")});
    rows(EventType::fault, "fault",
         {QString(), QStringLiteral("EventlistFaultOn"), QStringLiteral("EventlistFaultOff")});
    rows(EventType::otherEvents, "event",
         {QStringLiteral("EventlistEvent"), QStringLiteral("EventlistEventOn"),
          QStringLiteral("EventlistEventOff")});
    rows(EventType::auditTrail, "audit trail",
         {QStringLiteral("EventlistAuditTrail"), QString(), QString()});
}

void tst_EventHandlerBaseClass::eachStateOfEachProducerHasItsFields()
{
    QFETCH(int, producer);
    QFETCH(int, state);
    QFETCH(QString, icon);
    AlarmHandler alarm(moduleName, m_texts, started, keywords);
    FaultHandler fault(moduleName, m_texts, started, keywords);
    EventHandler event(moduleName, m_texts, started, keywords);
    AuditTrailHandler auditTrail(moduleName, m_texts, started, keywords);
    EventHandlerBaseClass* const producers[] = {&alarm, &auditTrail, &fault, &event};

    producers[producer]->logEvent(EventType(producer), State(state), Arguments(),
                                  QStringLiteral("anna"), QStringLiteral("the id"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    const Event sent(received[0]);
    QCOMPARE(sent.type(), QString::number(producer));
    QCOMPARE(sent.state(), QString::number(state));
    QCOMPARE(sent.icon(), icon);
    QCOMPARE(sent.module(), moduleName);
    QCOMPARE(sent.description(), json("{'lang_de':'Gestartet','lang_en':'Started'}"));
    QCOMPARE(sent.words(), (QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}));
    QCOMPARE(sent.user(), QStringLiteral("anna"));
    QCOMPARE(sent.additionalData(),
             json("{'EventId':'PumpControl/Started','MetaData':'{\\'Arguments\\':{},"
                  "\\'DescriptionScheme\\':{\\'lang_de\\':\\'Gestartet\\',"
                  "\\'lang_en\\':\\'Started\\'}}','SourceHashType':0,'SourceHashes':''}"));
    QCOMPARE(sent.alarmId(), QStringLiteral("the id"));
}

void tst_EventHandlerBaseClass::alarmsAndFaultsComeAndGoOnce_data()
{
    QTest::addColumn<bool>("isFault");
    QTest::newRow("alarm") << false;
    QTest::newRow("fault") << true;
}

void tst_EventHandlerBaseClass::alarmsAndFaultsComeAndGoOnce()
{
    QFETCH(bool, isFault);
    AlarmHandler alarm(moduleName, m_texts, started, keywords);
    FaultHandler fault(moduleName, m_texts, started, keywords);
    const auto change = [&](bool state) {
        isFault ? fault.changeState(state, Arguments()) : alarm.changeState(state, Arguments());
    };

    for (const bool state : {false, true, true, false, false, true})
    {
        change(state);
    }

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 3);
    const QString kind = isFault ? QStringLiteral("Fault") : QStringLiteral("Alarm");
    const QString alarmId = Event(received[0]).alarmId();
    QVERIFY2(isUuid(alarmId), qPrintable(alarmId));
    for (int i = 0; i < 3; ++i)
    {
        const Event sent(received[i]);
        const bool isOn = i != 1;
        QCOMPARE(sent.type(), QString::number(isFault ? 2 : 0));
        QCOMPARE(sent.state(), QString::number(isOn ? 1 : 2));
        QCOMPARE(sent.icon(), QStringLiteral("Eventlist%1%2")
                                  .arg(kind, isOn ? QStringLiteral("On") : QStringLiteral("Off")));
        QCOMPARE(sent.words(), (QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}));
        QCOMPARE(sent.user(), QString());
        QCOMPARE(sent.alarmId(), alarmId);
        QVERIFY(sent.additionalData().startsWith(json("{'EventId':'PumpControl/Started',")));
    }
}

void tst_EventHandlerBaseClass::eventsGoOnAndOffWithoutAnAlarmId()
{
    EventHandler event(moduleName, m_texts, started, QStringList());
    event.changeState(false, Arguments());
    event.changeState(true, Arguments());
    event.changeState(true, Arguments());
    event.changeState(false, Arguments());

    VERIFY_EVENTS(m_service.events(), {EventMatcher()
                                           .eventId(started)
                                           .type(3)
                                           .state(1)
                                           .icon(QStringLiteral("EventlistEventOn"))
                                           .alarmId(QString()),
                                       EventMatcher()
                                           .eventId(started)
                                           .type(3)
                                           .state(2)
                                           .icon(QStringLiteral("EventlistEventOff"))
                                           .alarmId(QString())
                                           .keywords({QStringLiteral("Firmware")})});
}

void tst_EventHandlerBaseClass::oneShotEventsRepeatAndLeaveTheStateAlone()
{
    EventHandler event(moduleName, m_texts, started, keywords);
    event.changeState(true, Arguments());
    event.logEvent(Arguments());
    event.logEvent(Arguments());
    event.logEvent(QStringLiteral("PumpControl/PumpName3"), Arguments());
    event.changeState(true, Arguments());
    event.changeDescription(QStringLiteral("PumpControl/PumpName3"));
    event.logEvent(Arguments());

    const EventMatcher once =
        EventMatcher::otherEvent(started).icon(QStringLiteral("EventlistEvent"));
    const EventMatcher other = EventMatcher::otherEvent(QStringLiteral("PumpControl/PumpName3"))
                                   .icon(QStringLiteral("EventlistEvent"));
    VERIFY_EVENTS(m_service.events(),
                  {EventMatcher().eventId(started).type(3).state(1), once, once, other, other});
}

void tst_EventHandlerBaseClass::auditTrailEntriesCarryTheirUserFirst()
{
    AuditTrailHandler auditTrail(moduleName, m_texts, started, keywords);
    auditTrail.logAuditTrail(Arguments());
    auditTrail.logAuditTrail(QStringLiteral("anna"), Arguments());
    auditTrail.logAuditTrail(QStringLiteral("anna"), QStringLiteral("PumpControl/PumpName3"),
                             Arguments());

    const auto entry = [](const QString& url) {
        return EventMatcher::auditTrail(url)
            .icon(QStringLiteral("EventlistAuditTrail"))
            .alarmId(QString());
    };
    const QString anna = QStringLiteral("anna");
    VERIFY_EVENTS(m_service.events(), {entry(started).user(QString()), entry(started).user(anna),
                                       entry(QStringLiteral("PumpControl/PumpName3")).user(anna)});
}

void tst_EventHandlerBaseClass::describesFromAConfigurationLeaf()
{
    const QVariantMap text{{QStringLiteral("lang_de"), QStringLiteral("Druck %1")},
                           {QStringLiteral("lang_en"), QStringLiteral("Pressure %1")}};
    const QVariantMap leaf{{QStringLiteral("value"), text}};
    auto root = QSharedPointer<ConfigurationAndProcessDataBase>::create(
        QVariantMap{{QStringLiteral("Pressure"), leaf}});
    EventHandler event(moduleName, m_texts, root, QStringLiteral("Pressure"), keywords);

    event.logEvent(m_texts,
                   Arguments{{QStringLiteral("%1"), QStringLiteral("PumpControl/PumpName3")}},
                   Arguments());

    VERIFY_EVENTS(m_service.events(),
                  {EventMatcher::otherEvent(QStringLiteral("Pressure"))
                       .languages({QStringLiteral("lang_de"), QStringLiteral("lang_en")})
                       .text(QStringLiteral("lang_de"), QStringLiteral("Druck Pumpe 3"))
                       .text(QStringLiteral("lang_en"), QStringLiteral("Pressure pump 3"))});
}

void tst_EventHandlerBaseClass::sendsAKeyInPlaceOfAMissingText()
{
    EventHandler event(moduleName, m_texts, QStringLiteral("PumpControl/Unknown"), keywords);
    m_warnings.expect(QStringLiteral("No description data: \"PumpControl/Unknown\""),
                      QStringLiteral("EventlistHandlerConvenienceFunctions"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions::generateMetaData"));

    event.logEvent(Arguments{{QStringLiteral("%1"), QStringLiteral("no place")}});

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(Event(received[0]).description(),
             json("{'%1':'PumpControl/Unknown'}")
                 .arg(LanguageDefinitions::getSecondFallbackLanguageFilename()));
}

void tst_EventHandlerBaseClass::sendsSourceHashesAndTheirType()
{
    EventHandler event(moduleName, m_texts, started, keywords);
    event.addSourceTag(QStringLiteral("Plant/Pump3"), SourceHashType(4));
    event.addSourceTag(QStringLiteral("Plant/Öl"), SourceHashType(5));

    event.logEvent(Arguments());

    const QByteArray hashes =
        RecorderUrlHashHandling::createUrlHash(QByteArray("Plant/Pump3")).toHex() +
        RecorderUrlHashHandling::createUrlHash(QStringLiteral("Plant/Öl").toUtf8()).toHex();
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QVERIFY(
        Event(received[0])
            .additionalData()
            .endsWith(
                json(",'SourceHashType':5,'SourceHashes':'%1'}").arg(QString::fromLatin1(hashes))));
}

void tst_EventHandlerBaseClass::refusesAnotherDescriptionOfAnAlarmOrFault_data()
{
    QTest::addColumn<bool>("isFault");
    QTest::newRow("alarm") << false;
    QTest::newRow("fault") << true;
}

void tst_EventHandlerBaseClass::refusesAnotherDescriptionOfAnAlarmOrFault()
{
    QFETCH(bool, isFault);
    AlarmHandler alarm(moduleName, m_texts, started, keywords);
    FaultHandler fault(moduleName, m_texts, started, keywords);
    EventHandlerBaseClass& producer = isFault ? static_cast<EventHandlerBaseClass&>(fault) : alarm;
    const QString className =
        isFault ? QStringLiteral("FaultHandler") : QStringLiteral("AlarmHandler");
    m_warnings.expect(
        QStringLiteral("Description from a fault can't change: \"PumpControl/PumpName3\""),
        className, className + QStringLiteral("::changeDescription"));

    producer.changeDescription(QStringLiteral("PumpControl/PumpName3"));
    producer.changeState(true, EventType::alarm, Arguments(), QString());

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QVERIFY(
        Event(received[0]).additionalData().startsWith(json("{'EventId':'PumpControl/Started',")));
}

void tst_EventHandlerBaseClass::sendsNothingWhenItIsDeletedWhileItIsOn()
{
    {
        AlarmHandler alarm(moduleName, m_texts, started, keywords);
        FaultHandler fault(moduleName, m_texts, started, keywords);
        EventHandler event(moduleName, m_texts, started, keywords);
        alarm.changeState(true, Arguments());
        fault.changeState(true, Arguments());
        event.changeState(true, Arguments());
    }
    AuditTrailHandler marker(moduleName, m_texts, started, keywords);
    marker.logAuditTrail(Arguments());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 4);
    QCOMPARE(Event(received[3]).type(), QStringLiteral("1"));
}

void tst_EventHandlerBaseClass::losesAnEventWithoutServiceAndRemembersTheState()
{
    AlarmHandler alarm(moduleName, m_texts, started, keywords);
    QVERIFY(takeServiceAway());
    expectRefusedCall(EventlistHandlerDBusConnectorWrite(false));
    alarm.changeState(true, Arguments());
    QVERIFY(bringServiceBack());

    alarm.changeState(true, Arguments());
    alarm.changeState(false, Arguments());

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(Event(received[0]).state(), QStringLiteral("2"));
}

QTEST_GUILESS_MAIN(tst_EventHandlerBaseClass)
#include "tst_EventHandlerBaseClass.moc"
