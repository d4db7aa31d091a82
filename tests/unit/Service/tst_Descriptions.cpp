#include "core/Descriptions.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

using namespace eventlistd;

namespace
{
QJsonObject parsed(const QString& text)
{
    return QJsonDocument::fromJson(text.toUtf8()).object();
}

QString s(const char* text)
{
    return QString::fromUtf8(text);
}
} // namespace

class tst_Descriptions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void showsOneLanguage_data();
    void showsOneLanguage();
    void tellsTheEmergencyFormFromTheOrdinaryOne();
    void makesASentenceOfTheEmergencyForm();
    void standsInForTextsThatAreMissing();
    void keepsAPlaceholderThatWouldBlowTheSentenceUp();
    void ignoresAnEmptyPlaceholder();
};

void tst_Descriptions::showsOneLanguage_data()
{
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("shown");
    const QString both = s(R"({"lang_de":"Hallo","lang_en":"Hello"})");
    QTest::newRow("there") << both << s("lang_de") << s("Hallo");
    QTest::newRow("all") << both << QString() << both;
    QTest::newRow("last resort") << both << s("lang_fr") << s("Hello");
    QTest::newRow("any") << s(R"({"lang_fr":"Salut"})") << s("lang_de") << s("Salut");
    QTest::newRow("empty object") << s("{}") << s("lang_de") << s("{}");
    QTest::newRow("sentence") << s("plain") << s("lang_de") << s("plain");
    QTest::newRow("broken") << s("{\"lang_de\":") << s("lang_de") << s("{\"lang_de\":");
    QTest::newRow("twice") << s(R"({"a":"1","a":"2"})") << s("a") << s(R"({"a":"1","a":"2"})");
    QTest::newRow("nothing") << QString() << s("lang_de") << QString();
}

void tst_Descriptions::showsOneLanguage()
{
    QFETCH(QString, description);
    QFETCH(QString, language);
    QTEST(inLanguage(description, language), "shown");
}

void tst_Descriptions::tellsTheEmergencyFormFromTheOrdinaryOne()
{
    QVERIFY(isEmergencyForm(parsed(s(R"({"Arguments":[{"%1":"x"}]})"))));
    QVERIFY(!isEmergencyForm(parsed(s(R"({"Arguments":{},"DescriptionScheme":{}})"))));
    QVERIFY(!isEmergencyForm(parsed(s(R"({"Arguments":[],"DescriptionScheme":{}})"))));
    QVERIFY(!isEmergencyForm(parsed(s(R"({"Arguments":{}})"))));
    QVERIFY(!isEmergencyForm(QJsonObject()));
}

void tst_Descriptions::makesASentenceOfTheEmergencyForm()
{
    Event event;
    event.eventId = s("EventlistHandler/SystemWatchdog");
    resolveEmergency(event, {{s("lang_de"), s("Wachhund: %1")}, {s("lang_en"), s("Watchdog: %1")}},
                     parsed(s(R"({"Arguments":[{"%1":"PumpControl"}]})")));
    QCOMPARE(event.description,
             s(R"({"lang_de":"Wachhund: PumpControl","lang_en":"Watchdog: PumpControl"})"));
    QCOMPARE(event.metaData,
             s(R"({"Arguments":{"%1":{"type":"string","value":"PumpControl"}},"DescriptionScheme":)"
               R"({"lang_de":"Wachhund: %1","lang_en":"Watchdog: %1"}})"));
}

void tst_Descriptions::standsInForTextsThatAreMissing()
{
    Event event;
    event.eventId = s("Some/Url");
    resolveEmergency(event, {}, parsed(s(R"({"Arguments":[{"%1":"PumpControl"}]})")));
    QCOMPARE(event.description, s(R"({"lang_en":"Some/Url PumpControl"})"));
}

void tst_Descriptions::keepsAPlaceholderThatWouldBlowTheSentenceUp()
{
    Event event;
    const QString many = QString(2000, QLatin1Char('a'));
    describe(event, {{s("lang_en"), many}}, {{s("a"), QString(2000, QLatin1Char('b'))}});
    QCOMPARE(parsed(event.description).value(s("lang_en")).toString(), many);
}

void tst_Descriptions::ignoresAnEmptyPlaceholder()
{
    Event event;
    describe(event, {{s("lang_en"), s("abc")}}, {{QString(), s("-")}});
    QCOMPARE(parsed(event.description).value(s("lang_en")).toString(), s("abc"));
}

QTEST_APPLESS_MAIN(tst_Descriptions)
#include "tst_Descriptions.moc"
