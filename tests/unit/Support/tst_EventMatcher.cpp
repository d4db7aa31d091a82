#include "TestSupport/EventMatcher.h"

#include "TestSupport/ForeignService.h"
#include "TestSupport/SpoolFolder.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

namespace
{
const QString overTemperature = QStringLiteral("PumpControl/OverTemperature");

RecordedMessage messageOf(const QJsonArray& arguments,
                          const QString& signature = QStringLiteral("assssassss"))
{
    RecordedMessage message;
    message.kind = QStringLiteral("call");
    message.path = QStringLiteral("/EventlistWrite");
    message.interface = QStringLiteral("Interface.EventlistWrite");
    message.member = QStringLiteral("logEvent");
    message.signature = signature;
    message.arguments = arguments;
    return message;
}

// JSON text, written with single quotes for double ones: moc does not understand raw strings.
QString json(const char* text)
{
    return QString::fromUtf8(text).replace(QLatin1Char('\''), QLatin1Char('"'));
}

QJsonArray arrayOf(const char* text)
{
    return QJsonDocument::fromJson(json(text).toUtf8()).array();
}

// What a module sends about a pump that is too hot, spelled here once more.
RecordedEvent alarmOf(const char* state)
{
    const QString metaData = json("{'Arguments':{'%1':{'type':'text','value':{'lang_en':'pump 3'}},"
                                  "'%2':{'type':'string','value':'97.5'}}}");
    const QJsonObject additional{{QStringLiteral("EventId"), overTemperature},
                                 {QStringLiteral("MetaData"), metaData},
                                 {QStringLiteral("SourceHashType"), 4},
                                 {QStringLiteral("SourceHashes"), QStringLiteral("ab")}};
    return RecordedEvent::fromCall(messageOf(QJsonArray{
        QJsonArray{QStringLiteral("0"), QLatin1String(state), QStringLiteral("EventlistAlarmOn")},
        QStringLiteral("2026-03-14T09:26:53.589+01:00"), QStringLiteral("PumpControl"),
        json("{'lang_de':'Pumpe 3 zu heiß: 97.5','lang_en':'pump 3 too hot: 97.5'}"),
        arrayOf("['Error','Firmware']"), QStringLiteral("anna"),
        QString::fromUtf8(QJsonDocument(additional).toJson(QJsonDocument::Compact)),
        QStringLiteral("{id}")}));
}
} // namespace

class tst_EventMatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAnEventFromACall();
    void saysThatACallIsNoEvent_data();
    void saysThatACallIsNoEvent();
    void readsTheEventsOfASpoolFolderInTheOrderOfTheirTimes();
    void tellsEachKindOfEventFromTheOthers();
    void tellsEveryFieldThatDiffers();
    void tellsWhatIsMissingFromWhatIsEmpty();
    void matchesNothingThatIsNoEvent();
    void comparesAWholeListInOrder();
    void showsWhatIsMissingBesideTheNearestEvent();
    void showsAnEventThatNobodyExpected();
};

void tst_EventMatcher::readsAnEventFromACall()
{
    const RecordedEvent event = alarmOf("1");

    QCOMPARE(event.problem, QString());
    QCOMPARE(event.type, 0);
    QCOMPARE(event.state, 1);
    QCOMPARE(event.icon, QStringLiteral("EventlistAlarmOn"));
    QCOMPARE(event.time, QStringLiteral("2026-03-14T09:26:53.589+01:00"));
    QCOMPARE(event.moduleName, QStringLiteral("PumpControl"));
    QCOMPARE(event.text(QStringLiteral("lang_de")), QStringLiteral("Pumpe 3 zu heiß: 97.5"));
    QCOMPARE(event.keywords, (QStringList{QStringLiteral("Error"), QStringLiteral("Firmware")}));
    QCOMPARE(event.user, QStringLiteral("anna"));
    QCOMPARE(event.eventId, overTemperature);
    QCOMPARE(event.alarmId, QStringLiteral("{id}"));
    QCOMPARE(event.argument(QStringLiteral("%2")), QStringLiteral("97.5"));
    QCOMPARE(event.argument(QStringLiteral("%1"), QStringLiteral("lang_en")),
             QStringLiteral("pump 3"));
    QCOMPARE(event.sourceHashType, 4);
    QCOMPARE(event.sourceHashes, QStringLiteral("ab"));
}

void tst_EventMatcher::saysThatACallIsNoEvent_data()
{
    QTest::addColumn<QJsonArray>("arguments");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QString>("problem");

    QTest::newRow("other signature")
        << QJsonArray() << QStringLiteral("as")
        << QStringLiteral("no event: call /EventlistWrite Interface.EventlistWrite.logEvent "
                          "\"as\" []");
    QTest::newRow("two attributes")
        << arrayOf("[['0','1'],'','','',[],'','','']") << QStringLiteral("assssassss")
        << QStringLiteral("not three attributes: call /EventlistWrite "
                          "Interface.EventlistWrite.logEvent \"assssassss\" "
                          "[[\"0\",\"1\"],\"\",\"\",\"\",[],\"\",\"\",\"\"]");
}

void tst_EventMatcher::saysThatACallIsNoEvent()
{
    QFETCH(QJsonArray, arguments);
    QFETCH(QString, signature);

    QTEST(RecordedEvent::fromCall(messageOf(arguments, signature)).problem, "problem");
}

void tst_EventMatcher::readsTheEventsOfASpoolFolderInTheOrderOfTheirTimes()
{
    const QTemporaryDir folder;
    const SpoolFolder spool(folder.filePath(QStringLiteral("spool")));
    const auto write = [&](const char* name, const QString& content) {
        QFile file(spool.filePath(QLatin1String(name)));
        return file.open(QFile::WriteOnly) && file.write(content.toUtf8()) > 0;
    };
    // The second in time stands first by name, and its clock shows an earlier hour.
    QVERIFY(write("a.event.json",
                  json("{'EventType':2,'State':1,'EventId':'Second','KeywordName':'Boot;Firmware',"
                       "'DateTimeMsUTC':'2026-03-14T08:26:54.000+00:00'}")));
    QVERIFY(
        write("b.event.json",
              QStringLiteral("{\"EventType\":3,\"State\":0,\"EventId\":\"First\",\"Description\":"
                             "\"{\\\"lang_en\\\":\\\"text\\\"}\",\"DateTimeMsUTC\":\"2026-03-14T09:"
                             "26:53.000+01:00\"}")));
    QVERIFY(write("half", QStringLiteral("{")));

    VERIFY_EVENTS(spool.events(),
                  {EventMatcher::otherEvent(QStringLiteral("First"))
                       .text(QStringLiteral("lang_en"), QStringLiteral("text")),
                   EventMatcher::faultBegins(QStringLiteral("Second"))
                       .keywords({QStringLiteral("Boot"), QStringLiteral("Firmware")})});

    QVERIFY(write("c.event.json", QStringLiteral("{")));
    const QVector<RecordedEvent> events = spool.events();
    QCOMPARE(events.size(), 3);
    QCOMPARE(events.at(0).problem, QStringLiteral("no event: {}"));
}

void tst_EventMatcher::tellsEachKindOfEventFromTheOthers()
{
    const QVector<EventMatcher> kinds = {
        EventMatcher::alarmBegins(overTemperature), EventMatcher::alarmEnds(overTemperature),
        EventMatcher::faultBegins(overTemperature), EventMatcher::faultEnds(overTemperature),
        EventMatcher::auditTrail(overTemperature),  EventMatcher::otherEvent(overTemperature)};
    const QVector<QPair<int, int>> numbers = {{0, 1}, {0, 2}, {2, 1}, {2, 2}, {1, 0}, {3, 0}};
    for (int kind = 0; kind < kinds.size(); ++kind)
    {
        for (int other = 0; other < numbers.size(); ++other)
        {
            RecordedEvent event = alarmOf("1");
            event.type = numbers.at(other).first;
            event.state = numbers.at(other).second;
            QCOMPARE(kinds.at(kind).matches(event), kind == other);
        }
    }
}

void tst_EventMatcher::tellsEveryFieldThatDiffers()
{
    EventMatcher matcher = EventMatcher::alarmEnds(QStringLiteral("PumpControl/Door"));
    matcher.moduleName(QStringLiteral("Valves"))
        .user(QStringLiteral("bert"))
        .icon(QStringLiteral("Bell"))
        .alarmId(QStringLiteral("{other}"))
        .text(QStringLiteral("lang_en"), QStringLiteral("pump 4 too hot"))
        .languages({QStringLiteral("lang_fr"), QStringLiteral("lang_de")})
        .keyword(QStringLiteral("Boot"))
        .keywords({QStringLiteral("Error")})
        .argument(QStringLiteral("%2"), QStringLiteral("98"))
        .argument(QStringLiteral("%1"), QStringLiteral("pump 4"), QStringLiteral("lang_en"));

    QCOMPARE(matcher.differences(alarmOf("1")).join(QLatin1Char('\n')),
             QStringLiteral(
                 "state: expected \"ends\", was \"begins\"\n"
                 "event id: expected \"PumpControl/Door\", was \"PumpControl/OverTemperature\"\n"
                 "module: expected \"Valves\", was \"PumpControl\"\n"
                 "user: expected \"bert\", was \"anna\"\n"
                 "icon: expected \"Bell\", was \"EventlistAlarmOn\"\n"
                 "alarm id: expected \"{other}\", was \"{id}\"\n"
                 "text in lang_en: expected \"pump 4 too hot\", was \"pump 3 too hot: 97.5\"\n"
                 "languages: expected \"lang_de lang_fr\", was \"lang_de lang_en\"\n"
                 "keyword: expected \"Boot\", was \"Error;Firmware\"\n"
                 "keywords: expected \"Error\", was \"Error;Firmware\"\n"
                 "argument %2: expected \"98\", was \"97.5\"\n"
                 "argument %1 in lang_en: expected \"pump 4\", was \"pump 3\""));
}

void tst_EventMatcher::tellsWhatIsMissingFromWhatIsEmpty()
{
    const EventMatcher matcher = EventMatcher()
                                     .text(QStringLiteral("lang_fr"), QStringLiteral(""))
                                     .keyword(QStringLiteral("Error"));

    QCOMPARE(matcher.differences(alarmOf("1")),
             QStringList{QStringLiteral("text in lang_fr: expected \"\", was missing")});
}

void tst_EventMatcher::matchesNothingThatIsNoEvent()
{
    QVERIFY(EventMatcher().matches(alarmOf("1")));
    QVERIFY(!EventMatcher().matches(RecordedEvent::fromSpoolFile(QJsonObject())));
}

void tst_EventMatcher::comparesAWholeListInOrder()
{
    const EventMatcher begins = EventMatcher::alarmBegins(overTemperature);
    const EventMatcher ends = EventMatcher::alarmEnds(overTemperature);

    QCOMPARE(compareEvents({}, {}), QByteArray());
    QCOMPARE(compareEvents({alarmOf("1"), alarmOf("2")}, {begins, ends}), QByteArray());
    QVERIFY(!compareEvents({alarmOf("2"), alarmOf("1")}, {begins, ends}).isEmpty());
}

void tst_EventMatcher::showsWhatIsMissingBesideTheNearestEvent()
{
    const EventMatcher hotter = EventMatcher::alarmBegins(overTemperature)
                                    .argument(QStringLiteral("%2"), QStringLiteral("98.1"));

    QCOMPARE(compareEvents({alarmOf("1"), alarmOf("2")},
                           {hotter, EventMatcher::alarmEnds(overTemperature)}),
             QByteArray("Events: = as expected, - missing, + not expected\n"
                        "  - type \"alarm\", state \"begins\", event id "
                        "\"PumpControl/OverTemperature\", argument %2 \"98.1\"\n"
                        "        argument %2: expected \"98.1\", was \"97.5\"\n"
                        "  + alarm begins: PumpControl/OverTemperature \"pump 3 too hot: 97.5\" "
                        "(module PumpControl, keywords Error;Firmware, user \"anna\", alarm id "
                        "\"{id}\")\n"
                        "  = alarm ends: PumpControl/OverTemperature \"pump 3 too hot: 97.5\" "
                        "(module PumpControl, keywords Error;Firmware, user \"anna\", alarm id "
                        "\"{id}\")"));
}

void tst_EventMatcher::showsAnEventThatNobodyExpected()
{
    QCOMPARE(compareEvents({alarmOf("2")}, {}),
             QByteArray("Events: = as expected, - missing, + not expected\n"
                        "  + alarm ends: PumpControl/OverTemperature \"pump 3 too hot: 97.5\" "
                        "(module PumpControl, keywords Error;Firmware, user \"anna\", alarm id "
                        "\"{id}\")"));
}

QTEST_GUILESS_MAIN(tst_EventMatcher)
#include "tst_EventMatcher.moc"
