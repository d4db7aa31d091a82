#include "core/EventDecoder.h"

#include "TestSupport/FakeTextManager.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace eventlistd;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

QJsonObject entry()
{
    return {{s("AlarmID"), s("{id}")},
            {s("DateTimeMsUTC"), s("2026-03-14T09:26:53.589+01:00")},
            {s("Description"), s("{\"lang_en\":\"Hello\"}")},
            {s("EventId"), s("PumpControl/OverTemperature")},
            {s("EventType"), 0},
            {s("IconType"), s("EventlistAlarmOn")},
            {s("KeywordName"), s("Error;Firmware")},
            {s("MetaData"), QJsonObject{{s("DescriptionScheme"), QJsonObject()}}},
            {s("ModuleName"), s("PumpControl")},
            {s("SourceHashType"), -7},
            {s("SourceHashes"), s("abcd")},
            {s("State"), 1},
            {s("User"), s("meier")}};
}

QByteArray bytes(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

DecodedEvent fromBus(const QStringList& attributes, const QString& additionalData)
{
    return EventDecoder::fromBus(attributes, s("2026-03-14T09:26:53.589+01:00"), s("pump"), s("{}"),
                                 {s("Firmware")}, s("meier"), additionalData, s("{id}"));
}
} // namespace

class tst_EventDecoder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsAllMembersOfASpoolFile();
    void readsNoKeywordAsAnEmptyList();
    void refusesASpoolFile_data();
    void refusesASpoolFile();
    void needsEveryMember();
    void readsTheArgumentsOfACall();
    void keepsAStateThatIsNone();
    void refusesWrongAttributes_data();
    void refusesWrongAttributes();
    void refusesAnEventThatIsTooLarge();
    void readsTheTimeOrTakesTheArrival();

private:
    FakeTextManager m_texts;
    const EventDecoder m_decoder{m_texts};
};

void tst_EventDecoder::readsAllMembersOfASpoolFile()
{
    const DecodedEvent decoded = m_decoder.fromSpoolFile(bytes(entry()));
    QCOMPARE(decoded.error, QString());
    const Event& event = decoded.event;
    QCOMPARE(event.alarmId, s("{id}"));
    QCOMPARE(event.timestamp, s("2026-03-14T09:26:53.589+01:00"));
    QCOMPARE(event.description, s("{\"lang_en\":\"Hello\"}"));
    QCOMPARE(event.eventId, s("PumpControl/OverTemperature"));
    QCOMPARE(event.type, int(alarm));
    QCOMPARE(event.state, int(active));
    QCOMPARE(event.icon, s("EventlistAlarmOn"));
    QCOMPARE(event.keywords, QStringList({s("Error"), s("Firmware")}));
    QCOMPARE(event.metaData, s("{\"DescriptionScheme\":{}}"));
    QCOMPARE(event.moduleName, s("PumpControl"));
    QCOMPARE(event.sourceHashType, -7);
    QCOMPARE(event.sourceHashes, s("abcd"));
    QCOMPARE(event.user, s("meier"));
}

void tst_EventDecoder::readsNoKeywordAsAnEmptyList()
{
    QJsonObject object = entry();
    object.insert(s("KeywordName"), QString());
    QCOMPARE(m_decoder.fromSpoolFile(bytes(object)).event.keywords, QStringList());
}

void tst_EventDecoder::refusesASpoolFile_data()
{
    QTest::addColumn<QByteArray>("content");
    const auto changed = [](const char* name, const QJsonValue& value) {
        QJsonObject object = entry();
        object.insert(s(name), value);
        return bytes(object);
    };
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("no object") << QByteArray("[]");
    QTest::newRow("torn") << bytes(entry()).chopped(1);
    QTest::newRow("two objects") << bytes(entry()) + bytes(entry());
    QTest::newRow("key twice") << bytes(entry()).chopped(1) + ",\"User\":\"\"}";
    QTest::newRow("further member") << changed("Further", 1);
    QTest::newRow("type beyond") << changed("EventType", 4);
    QTest::newRow("type below") << changed("EventType", -1);
    QTest::newRow("type fraction") << changed("EventType", 0.5);
    QTest::newRow("type text") << changed("EventType", s("0"));
    QTest::newRow("state fraction") << changed("State", 0.5);
    QTest::newRow("state null") << changed("State", QJsonValue::Null);
    QTest::newRow("hash type beyond int") << changed("SourceHashType", 3e9);
    QTest::newRow("user null") << changed("User", QJsonValue::Null);
    QTest::newRow("metadata text") << changed("MetaData", s("{}"));
    QTest::newRow("module number") << changed("ModuleName", 1);
    QTest::newRow("too large") << changed("User", QString(1100000, QLatin1Char('x')));
}

void tst_EventDecoder::refusesASpoolFile()
{
    QFETCH(QByteArray, content);
    QVERIFY(!m_decoder.fromSpoolFile(content).isGood());
}

void tst_EventDecoder::needsEveryMember()
{
    const QStringList members = entry().keys();
    QCOMPARE(members.size(), 13);
    for (const QString& member : members)
    {
        QJsonObject object = entry();
        object.remove(member);
        const DecodedEvent decoded = m_decoder.fromSpoolFile(bytes(object));
        QVERIFY2(decoded.error.contains(member), qPrintable(member));
    }
}

void tst_EventDecoder::readsTheArgumentsOfACall()
{
    const DecodedEvent decoded =
        fromBus({s("2"), s("1"), s("icon")},
                s(R"({"EventId":"a/b","MetaData":"{}","SourceHashType":3,"SourceHashes":"ff"})"));
    QVERIFY(decoded.isGood());
    QCOMPARE(decoded.event.type, int(fault));
    QCOMPARE(decoded.event.state, int(active));
    QCOMPARE(decoded.event.icon, s("icon"));
    QCOMPARE(decoded.event.eventId, s("a/b"));
    QCOMPARE(decoded.event.metaData, s("{}"));
    QCOMPARE(decoded.event.sourceHashType, 3);
    QCOMPARE(decoded.event.sourceHashes, s("ff"));
}

void tst_EventDecoder::keepsAStateThatIsNone()
{
    QJsonObject object = entry();
    object.insert(s("State"), 3);
    const DecodedEvent fromFile = m_decoder.fromSpoolFile(bytes(object));
    QVERIFY(fromFile.isGood());
    QCOMPARE(fromFile.event.state, 3);

    const DecodedEvent decoded = fromBus({s("0"), s("3"), QString()}, s("{}"));
    QVERIFY(decoded.isGood());
    QCOMPARE(decoded.event.state, 3);
}

void tst_EventDecoder::refusesWrongAttributes_data()
{
    QTest::addColumn<QStringList>("attributes");
    QTest::newRow("none") << QStringList();
    QTest::newRow("two") << QStringList({s("0"), s("0")});
    QTest::newRow("four") << QStringList({s("0"), s("0"), s("i"), s("i")});
    QTest::newRow("type beyond") << QStringList({s("4"), s("0"), s("i")});
    QTest::newRow("state beyond int") << QStringList({s("0"), s("3000000000"), s("i")});
    QTest::newRow("negative") << QStringList({s("-1"), s("0"), s("i")});
    QTest::newRow("name") << QStringList({s("alarm"), s("0"), s("i")});
    QTest::newRow("hexadecimal") << QStringList({s("0x1"), s("0"), s("i")});
    QTest::newRow("empty") << QStringList({QString(), QString(), QString()});
}

void tst_EventDecoder::refusesWrongAttributes()
{
    QFETCH(QStringList, attributes);
    QVERIFY(!fromBus(attributes, s("{}")).isGood());
}

void tst_EventDecoder::refusesAnEventThatIsTooLarge()
{
    const QString large(int(maximumEventSize), QLatin1Char('x'));
    QVERIFY(!fromBus({s("0"), s("0"), large}, s("{}")).isGood());
    QVERIFY(!fromBus({s("0"), s("0"), s("i")}, large).isGood());
    QVERIFY(fromBus({s("0"), s("0"), large.chopped(200)}, s("{}")).isGood());
}

void tst_EventDecoder::readsTheTimeOrTakesTheArrival()
{
    Event event;
    event.timestamp = s("2026-03-14T09:26:53.589+01:00");
    event.setArrival(5);
    QCOMPARE(event.timeMs, qint64(1773476813589));
    QCOMPARE(event.offsetSeconds, 3600);
    QCOMPARE(event.arrivalMs, qint64(5));
    event.timestamp = s("nonsense");
    event.setArrival(1773476813589);
    QCOMPARE(event.timeMs, qint64(1773476813589));
    QCOMPARE(event.timestamp, s("2026-03-14T09:26:53.589+01:00"));
}

QTEST_APPLESS_MAIN(tst_EventDecoder)
#include "tst_EventDecoder.moc"
