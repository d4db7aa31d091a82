#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "TestSupport/FakeTextManager.h"
#include "TestSupport/WarningRecorder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <memory>
#include <type_traits>

using Functions = EventlistHandlerConvenienceFunctions;
using Argument = EventlistHandlerStructs::stDescriptionArgument;
using UrlArgument = Functions::stDescriptionUrlArgument;

static_assert(std::is_aggregate<UrlArgument>::value, "a plain record");
static_assert(std::has_virtual_destructor<Functions>::value, "it may be derived from");
static_assert(std::is_default_constructible<Functions>::value, "it may be made");
static_assert(sizeof(Functions) == sizeof(void*), "it has no fields");

namespace
{

const QString deKey = QStringLiteral("lang_de");
const QString enKey = QStringLiteral("lang_en");
const QString frKey = QStringLiteral("lang_fr");
const QString overTemperature = QStringLiteral("PumpControl/OverTemperature");

// The metadata of an over-temperature, byte for byte.
const char* const pumpMetaData =
    R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
    R"("%2":{"type":"string","value":"97.5"}},)"
    R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
    R"("lang_en":"Overtemperature at %1, value %2"}})";

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QJsonObject fromJson(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object();
}

QVariantMap english(const QString& text)
{
    return {{enKey, text}};
}

QVariantMap pumpText(const QString& url)
{
    return FakeTextManager::pumpTexts().value(url);
}

} // namespace

class tst_EventlistHandlerConvenienceFunctions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void writesTheMetadataOfTheWorkedExample();
    void looksUrlArgumentsUpInTheTextManager();
    void writesEmptyArgumentsRatherThanNone();
    void filesTheDescriptionUnderTheLanguageOfLastResortWhenItHasNoText();
    void usesTheDescriptionOnlyWithoutAText();
    void keepsAnEmptyTextObjectOfAnUnknownUrlArgumentWithoutAWarning();
    void letsTheUrlArgumentReplaceALiteralOneOfTheSamePlaceholder();
    void keepsTheLaterOfTwoArgumentsInOneList();
    void replacesMembersThatAreThereAndLeavesOthersAlone();
    void takesAnyStringAsPlaceholder_data();
    void takesAnyStringAsPlaceholder();
    void addsArgumentsToThoseThatAreThere();

    void resolvesTheWorkedExample();
    void resolvesMetadata_data();
    void resolvesMetadata();
    void leavesTheListAloneWithoutAScheme_data();
    void leavesTheListAloneWithoutAScheme();
    void emptiesTheListForAnEmptyScheme_data();
    void emptiesTheListForAnEmptyScheme();
    void keepsThePlaceholdersWithoutArguments_data();
    void keepsThePlaceholdersWithoutArguments();
    void dropsWhatTheListHeldBefore();
    void warnsAboutABadArgumentAndGoesOn_data();
    void warnsAboutABadArgumentAndGoesOn();
    void neverResolvesAPlaceholderWithASlash();
    void stopsAtTheMetadataOfTheEmergencyEvent();
    void turnsATextThatIsNoStringIntoOneWhenItReplaces();
    void leavesATextThatIsNoStringAloneWithoutArguments();

    void putsTheSameTextIntoEveryLanguage();
    void putsEachLanguagesOwnTextIntoIt();
    void ignoresLanguagesThatOnlyTheArgumentHas();
    void replacesNothingInAnEmptyList();
    void endsWithWhatIsDerivedFromIt();

private:
    WarningRecorder m_warnings;
};

void tst_EventlistHandlerConvenienceFunctions::writesTheMetadataOfTheWorkedExample()
{
    QJsonObject metaData;

    Functions::generateMetaData(
        metaData, pumpText(overTemperature), {{QStringLiteral("%2"), QStringLiteral("97.5")}},
        QList<UrlArgument>{
            {QStringLiteral("%1"), pumpText(QStringLiteral("PumpControl/PumpName3"))}},
        overTemperature);

    QCOMPARE(compact(metaData), QByteArray(pumpMetaData));
}

void tst_EventlistHandlerConvenienceFunctions::looksUrlArgumentsUpInTheTextManager()
{
    const FakeTextManager texts(FakeTextManager::pumpTexts());
    QJsonObject metaData;

    Functions::generateMetaData(
        metaData, pumpText(overTemperature), {{QStringLiteral("%2"), QStringLiteral("97.5")}},
        QList<Argument>{{QStringLiteral("%1"), QStringLiteral("PumpControl/PumpName3")}}, texts,
        overTemperature);

    QCOMPARE(compact(metaData), QByteArray(pumpMetaData));
    QCOMPARE(texts.lookUpCount(), 1);
}

void tst_EventlistHandlerConvenienceFunctions::writesEmptyArgumentsRatherThanNone()
{
    QJsonObject metaData;

    Functions::generateMetaData(metaData, english(QStringLiteral("Door open")), {},
                                QList<UrlArgument>(), overTemperature);

    QCOMPARE(compact(metaData),
             QByteArray(R"({"Arguments":{},"DescriptionScheme":{"lang_en":"Door open"}})"));
}

void tst_EventlistHandlerConvenienceFunctions::
    filesTheDescriptionUnderTheLanguageOfLastResortWhenItHasNoText()
{
    QJsonObject metaData;
    m_warnings.expect(QStringLiteral(R"(No description data: "PumpControl/OverTemperature")"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions::generateMetaData"));

    Functions::generateMetaData(metaData, QVariantMap(),
                                {{QStringLiteral("%1"), QStringLiteral("x")}}, QList<UrlArgument>(),
                                overTemperature);

    QCOMPARE(compact(metaData),
             QByteArray(R"({"Arguments":{"%1":{"type":"string","value":"x"}},)"
                        R"("DescriptionScheme":{"lang_en":"PumpControl/OverTemperature"}})"));
}

void tst_EventlistHandlerConvenienceFunctions::usesTheDescriptionOnlyWithoutAText()
{
    QJsonObject metaData;

    Functions::generateMetaData(metaData, english(QStringLiteral("Door open")), {},
                                QList<UrlArgument>(), QStringLiteral("never seen"));

    QVERIFY(!compact(metaData).contains("never seen"));
}

void tst_EventlistHandlerConvenienceFunctions::
    keepsAnEmptyTextObjectOfAnUnknownUrlArgumentWithoutAWarning()
{
    const FakeTextManager texts;
    QJsonObject metaData;

    Functions::generateMetaData(
        metaData, english(QStringLiteral("%1")), {},
        QList<Argument>{{QStringLiteral("%1"), QStringLiteral("PumpControl/Unknown")}}, texts,
        overTemperature);

    QCOMPARE(compact(metaData), QByteArray(R"({"Arguments":{"%1":{"type":"text","value":{}}},)"
                                           R"("DescriptionScheme":{"lang_en":"%1"}})"));
}

void tst_EventlistHandlerConvenienceFunctions::
    letsTheUrlArgumentReplaceALiteralOneOfTheSamePlaceholder()
{
    QJsonObject metaData;

    Functions::generateMetaData(
        metaData, english(QStringLiteral("%1")), {{QStringLiteral("%1"), QStringLiteral("x")}},
        QList<UrlArgument>{{QStringLiteral("%1"), english(QStringLiteral("y"))}}, overTemperature);

    QCOMPARE(compact(metaData),
             QByteArray(R"({"Arguments":{"%1":{"type":"text","value":{"lang_en":"y"}}},)"
                        R"("DescriptionScheme":{"lang_en":"%1"}})"));
}

void tst_EventlistHandlerConvenienceFunctions::keepsTheLaterOfTwoArgumentsInOneList()
{
    QJsonObject literals;
    QJsonObject texts;

    Functions::generateJsonObjectDescriptionArguments(
        literals, {{QStringLiteral("%1"), QStringLiteral("first")},
                   {QStringLiteral("%1"), QStringLiteral("second")}});
    Functions::generateJsonObjectDescriptionUrlArguments(
        texts, {{QStringLiteral("%1"), english(QStringLiteral("first"))},
                {QStringLiteral("%1"), english(QStringLiteral("second"))}});

    QCOMPARE(compact(literals), QByteArray(R"({"%1":{"type":"string","value":"second"}})"));
    QCOMPARE(compact(texts), QByteArray(R"({"%1":{"type":"text","value":{"lang_en":"second"}}})"));
}

void tst_EventlistHandlerConvenienceFunctions::replacesMembersThatAreThereAndLeavesOthersAlone()
{
    QJsonObject metaData = fromJson(R"({"Arguments":{"%9":1},"DescriptionScheme":{"lang_fr":"?"},)"
                                    R"("Other":"stays"})");

    Functions::generateMetaData(metaData, english(QStringLiteral("Door open")), {},
                                QList<UrlArgument>(), overTemperature);

    QCOMPARE(compact(metaData),
             QByteArray(R"({"Arguments":{},"DescriptionScheme":{"lang_en":"Door open"},)"
                        R"("Other":"stays"})"));
}

void tst_EventlistHandlerConvenienceFunctions::takesAnyStringAsPlaceholder_data()
{
    QTest::addColumn<QString>("placeholder");

    QTest::newRow("a word that is in no text") << QStringLiteral("nowhere");
    QTest::newRow("empty") << QString();
    QTest::newRow("with a slash") << QStringLiteral("a/b");
    QTest::newRow("with a quote") << QStringLiteral("\"");
    QTest::newRow("not ASCII") << QStringLiteral("ä%");
    QTest::newRow("with U+0000") << QString(QChar(0));
}

void tst_EventlistHandlerConvenienceFunctions::takesAnyStringAsPlaceholder()
{
    QFETCH(QString, placeholder);
    QJsonObject arguments;

    Functions::generateJsonObjectDescriptionArguments(arguments,
                                                      {{placeholder, QStringLiteral("x")}});

    QCOMPARE(arguments.keys(), QStringList(placeholder));
    QCOMPARE(compact(arguments.value(placeholder).toObject()),
             QByteArray(R"({"type":"string","value":"x"})"));
}

void tst_EventlistHandlerConvenienceFunctions::addsArgumentsToThoseThatAreThere()
{
    QJsonObject arguments = fromJson(R"({"%0":0,"%2":2,"%4":4,"%6":6})");

    Functions::generateJsonObjectDescriptionArguments(
        arguments, {{QStringLiteral("%5"), QStringLiteral("e")},
                    {QStringLiteral("%2"), QStringLiteral("b")},
                    {QStringLiteral("%7"), QStringLiteral("g")},
                    {QStringLiteral("%1"), QStringLiteral("a")}});
    Functions::generateJsonObjectDescriptionArguments(arguments, {});

    QCOMPARE(compact(arguments), QByteArray(R"({"%0":0,"%1":{"type":"string","value":"a"},)"
                                            R"("%2":{"type":"string","value":"b"},"%4":4,)"
                                            R"("%5":{"type":"string","value":"e"},"%6":6,)"
                                            R"("%7":{"type":"string","value":"g"}})"));
}

void tst_EventlistHandlerConvenienceFunctions::resolvesTheWorkedExample()
{
    QVariantMap textList;

    Functions::generateDescriptionTextlist(textList, fromJson(pumpMetaData));

    QCOMPARE(compact(QJsonObject::fromVariantMap(textList)),
             QByteArray(R"({"lang_de":"Übertemperatur an Pumpe 3, Wert 97.5",)"
                        R"("lang_en":"Overtemperature at pump 3, value 97.5"})"));
}

void tst_EventlistHandlerConvenienceFunctions::resolvesMetadata_data()
{
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QByteArray>("arguments");
    QTest::addColumn<QString>("text");

    QTest::newRow("no arguments") << QStringLiteral("at %1") << QByteArray("{}")
                                  << QStringLiteral("at %1");
    QTest::newRow("%1 hits the place of %10")
        << QStringLiteral("%10")
        << QByteArray(R"({"%1":{"type":"string","value":"x"},"%10":{"type":"string","value":"y"}})")
        << QStringLiteral("x0");
    QTest::newRow("%10 before %2")
        << QStringLiteral("@")
        << QByteArray(R"({"%10":{"type":"string","value":"done"},)"
                      R"("%2":{"type":"string","value":"%10"},"%1":{"type":"string","value":""},)"
                      R"("!":{"type":"string","value":""},"@":{"type":"string","value":"%2"}})")
        << QStringLiteral("%2");
    QTest::newRow("an argument with a later placeholder is replaced again")
        << QStringLiteral("%1")
        << QByteArray(
               R"({"%1":{"type":"string","value":"see %2"},"%2":{"type":"string","value":"y"}})")
        << QStringLiteral("see y");
    QTest::newRow("an argument with an earlier placeholder stays")
        << QStringLiteral("%2")
        << QByteArray(
               R"({"%1":{"type":"string","value":"x"},"%2":{"type":"string","value":"see %1"}})")
        << QStringLiteral("see %1");
    QTest::newRow("any string is a placeholder")
        << QStringLiteral("the pump runs")
        << QByteArray(R"({"pump":{"type":"string","value":"valve"}})")
        << QStringLiteral("the valve runs");
    QTest::newRow("a placeholder that is nowhere")
        << QStringLiteral("at %1") << QByteArray(R"({"%7":{"type":"string","value":"x"}})")
        << QStringLiteral("at %1");
    QTest::newRow("a place without an argument")
        << QStringLiteral("%1 and %2") << QByteArray(R"({"%1":{"type":"string","value":"x"}})")
        << QStringLiteral("x and %2");
    QTest::newRow("capitals count")
        << QStringLiteral("Pump pump") << QByteArray(R"({"pump":{"type":"string","value":"x"}})")
        << QStringLiteral("Pump x");
    QTest::newRow("no pattern") << QStringLiteral("a.c abc")
                                << QByteArray(R"({"a.c":{"type":"string","value":"x"}})")
                                << QStringLiteral("x abc");
    QTest::newRow("text with an empty text object")
        << QStringLiteral("[%1]") << QByteArray(R"({"%1":{"type":"text","value":{}}})")
        << QStringLiteral("[]");
    QTest::newRow("text with a value that is no object")
        << QStringLiteral("[%1]") << QByteArray(R"({"%1":{"type":"text","value":"x"}})")
        << QStringLiteral("[]");
    QTest::newRow("text with null")
        << QStringLiteral("[%1]") << QByteArray(R"({"%1":{"type":"text","value":null}})")
        << QStringLiteral("[]");
    QTest::newRow("text in the language")
        << QStringLiteral("[%1]") << QByteArray(R"({"%1":{"type":"text","value":{"lang_en":"x"}}})")
        << QStringLiteral("[x]");
}

void tst_EventlistHandlerConvenienceFunctions::resolvesMetadata()
{
    QFETCH(QString, scheme);
    QFETCH(QByteArray, arguments);
    QFETCH(QString, text);
    const QJsonObject metaData{
        {QStringLiteral("DescriptionScheme"), QJsonObject{{enKey, scheme}}},
        {QStringLiteral("Arguments"), QJsonDocument::fromJson(arguments).object()}};
    QVariantMap textList;

    Functions::generateDescriptionTextlist(textList, metaData);

    QCOMPARE(textList, english(text));
}

void tst_EventlistHandlerConvenienceFunctions::leavesTheListAloneWithoutAScheme_data()
{
    QTest::addColumn<QByteArray>("metaData");

    QTest::newRow("nothing at all") << QByteArray("{}");
    QTest::newRow("arguments alone")
        << QByteArray(R"({"Arguments":{"%1":{"type":"string","value":"x"}}})");
    QTest::newRow("in other capitals")
        << QByteArray(R"({"Arguments":{},"descriptionScheme":{"lang_en":"x"}})");
}

void tst_EventlistHandlerConvenienceFunctions::leavesTheListAloneWithoutAScheme()
{
    QFETCH(QByteArray, metaData);
    QVariantMap textList = english(QStringLiteral("%1"));
    m_warnings.expect(
        QStringLiteral(R"(Key "DescriptionScheme" not fount in metaData)"),
        QStringLiteral("EventlistHandlerConvenienceFunctions"),
        QStringLiteral("EventlistHandlerConvenienceFunctions::generateDescriptionTextlist"));

    Functions::generateDescriptionTextlist(textList, QJsonDocument::fromJson(metaData).object());

    QCOMPARE(textList, english(QStringLiteral("%1")));
}

void tst_EventlistHandlerConvenienceFunctions::emptiesTheListForAnEmptyScheme_data()
{
    QTest::addColumn<QByteArray>("scheme");
    QTest::addColumn<QByteArray>("arguments");
    const QByteArray none = R"(,"Arguments":{})";

    QTest::newRow("an empty object") << QByteArray("{}") << none;
    QTest::newRow("null") << QByteArray("null") << none;
    QTest::newRow("a string") << QByteArray(R"("Door open")") << none;
    QTest::newRow("a number") << QByteArray("7") << none;
    QTest::newRow("an array") << QByteArray("[1]") << none;
    // The arguments are not looked for.
    QTest::newRow("an empty object alone") << QByteArray("{}") << QByteArray();
}

void tst_EventlistHandlerConvenienceFunctions::emptiesTheListForAnEmptyScheme()
{
    QFETCH(QByteArray, scheme);
    QFETCH(QByteArray, arguments);
    const QByteArray json = R"({"DescriptionScheme":)" + scheme + arguments + '}';
    QVariantMap textList = english(QStringLiteral("old"));
    m_warnings.expect(
        QStringLiteral("DescriptionsScheme without data. The QVariantMap is empty"),
        QStringLiteral("EventlistHandlerConvenienceFunctions"),
        QStringLiteral("EventlistHandlerConvenienceFunctions::generateDescriptionTextlist"));

    Functions::generateDescriptionTextlist(textList, fromJson(json));

    QCOMPARE(textList, QVariantMap());
}

void tst_EventlistHandlerConvenienceFunctions::keepsThePlaceholdersWithoutArguments_data()
{
    QTest::addColumn<QByteArray>("metaData");

    QTest::newRow("missing") << QByteArray(R"({"DescriptionScheme":{"lang_en":"at %1"}})");
    QTest::newRow("an array") << QByteArray(
        R"({"Arguments":[{"%1":"x"}],"DescriptionScheme":{"lang_en":"at %1"}})");
    QTest::newRow("null") << QByteArray(
        R"({"Arguments":null,"DescriptionScheme":{"lang_en":"at %1"}})");
}

void tst_EventlistHandlerConvenienceFunctions::keepsThePlaceholdersWithoutArguments()
{
    QFETCH(QByteArray, metaData);
    QVariantMap textList;
    m_warnings.expect(
        QStringLiteral(R"(Key "Arguments" not fount in metaData)"),
        QStringLiteral("EventlistHandlerConvenienceFunctions"),
        QStringLiteral("EventlistHandlerConvenienceFunctions::generateDescriptionTextlist"));

    Functions::generateDescriptionTextlist(textList, QJsonDocument::fromJson(metaData).object());

    QCOMPARE(textList, english(QStringLiteral("at %1")));
}

void tst_EventlistHandlerConvenienceFunctions::dropsWhatTheListHeldBefore()
{
    QVariantMap textList{{frKey, QStringLiteral("avant")}, {enKey, QStringLiteral("before")}};

    Functions::generateDescriptionTextlist(
        textList, fromJson(R"({"Arguments":{},"DescriptionScheme":{"lang_en":"now"}})"));

    QCOMPARE(textList, english(QStringLiteral("now")));
}

void tst_EventlistHandlerConvenienceFunctions::warnsAboutABadArgumentAndGoesOn_data()
{
    QTest::addColumn<QByteArray>("argument");
    QTest::addColumn<QString>("warning");

    const QString noKey = QStringLiteral(R"(No key "type" from placeholder "%1")");
    const QString noValue = QStringLiteral(R"(Unknown key value "value" from placeholder "%1")");

    QTest::newRow("no type") << QByteArray(R"({"value":"x"})") << noKey;
    QTest::newRow("a type that is no string") << QByteArray(R"({"type":1,"value":"x"})") << noKey;
    QTest::newRow("no argument object") << QByteArray(R"("x")") << noKey;
    QTest::newRow("null") << QByteArray("null") << noKey;
    QTest::newRow("an array") << QByteArray(R"([{"type":"string","value":"x"}])") << noKey;
    QTest::newRow("a string without a value") << QByteArray(R"({"type":"string"})") << noValue;
    QTest::newRow("a string with a number")
        << QByteArray(R"({"type":"string","value":97.5})") << noValue;
    QTest::newRow("a string with null")
        << QByteArray(R"({"type":"string","value":null})") << noValue;
    QTest::newRow("a text without a value") << QByteArray(R"({"type":"text"})") << noValue;
    QTest::newRow("an unknown type")
        << QByteArray(R"({"type":"number","value":"x"})")
        << QStringLiteral(R"(Unknown type "number" from placeholder "%1")");
    QTest::newRow("an unknown type without a value")
        << QByteArray(R"({"type":"number"})")
        << QStringLiteral(R"(Unknown type "number" from placeholder "%1")");
    QTest::newRow("a type in other capitals")
        << QByteArray(R"({"type":"Text","value":{}})")
        << QStringLiteral(R"(Unknown type "Text" from placeholder "%1")");
    QTest::newRow("an empty type") << QByteArray(R"({"type":"","value":"x"})")
                                   << QStringLiteral(R"(Unknown type "" from placeholder "%1")");
    QTest::newRow("a type with a quote")
        << QByteArray(R"({"type":"a\"b","value":"x"})")
        << QStringLiteral(R"(Unknown type "a\"b" from placeholder "%1")");
}

void tst_EventlistHandlerConvenienceFunctions::warnsAboutABadArgumentAndGoesOn()
{
    QFETCH(QByteArray, argument);
    QFETCH(QString, warning);
    const QByteArray json =
        QByteArray(R"({"%1":)").append(argument).append(R"(,"%2":{"type":"string","value":"y"}})");
    QVariantMap textList = english(QStringLiteral("%1 %2"));
    m_warnings.expect(warning, QStringLiteral("EventlistHandlerConvenienceFunctions"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions::replacePlaceholder"));

    Functions::replacePlaceholder(textList, fromJson(json));

    QCOMPARE(textList, english(QStringLiteral("%1 y")));
}

void tst_EventlistHandlerConvenienceFunctions::neverResolvesAPlaceholderWithASlash()
{
    QJsonObject metaData;
    QVariantMap textList;
    m_warnings.expect(QStringLiteral(R"(No key "type" from placeholder "a/b")"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions::replacePlaceholder"));

    Functions::generateMetaData(metaData, english(QStringLiteral("a/b")),
                                {{QStringLiteral("a/b"), QStringLiteral("x")}},
                                QList<UrlArgument>(), overTemperature);
    Functions::generateDescriptionTextlist(textList, metaData);

    QCOMPARE(textList, english(QStringLiteral("a/b")));
}

void tst_EventlistHandlerConvenienceFunctions::stopsAtTheMetadataOfTheEmergencyEvent()
{
    QVariantMap textList = english(QStringLiteral("%1"));
    m_warnings.expect(
        QStringLiteral(R"(Key "DescriptionScheme" not fount in metaData)"),
        QStringLiteral("EventlistHandlerConvenienceFunctions"),
        QStringLiteral("EventlistHandlerConvenienceFunctions::generateDescriptionTextlist"));

    Functions::generateDescriptionTextlist(textList, fromJson(R"({"Arguments":[{"%1":"Pump"}]})"));

    QCOMPARE(textList, english(QStringLiteral("%1")));
}

void tst_EventlistHandlerConvenienceFunctions::turnsATextThatIsNoStringIntoOneWhenItReplaces()
{
    QVariantMap textList;

    Functions::generateDescriptionTextlist(
        textList,
        fromJson(R"({"Arguments":{"%1":{"type":"string","value":"x"}},)"
                 R"("DescriptionScheme":{"lang_de":7,"lang_en":{"a":1},"lang_fr":true}})"));

    QCOMPARE(textList, QVariantMap({{deKey, QStringLiteral("7")},
                                    {enKey, QString()},
                                    {frKey, QStringLiteral("true")}}));
    for (const QVariant& text : qAsConst(textList))
    {
        QCOMPARE(text.userType(), int(QMetaType::QString));
    }
}

void tst_EventlistHandlerConvenienceFunctions::leavesATextThatIsNoStringAloneWithoutArguments()
{
    QVariantMap textList;

    Functions::generateDescriptionTextlist(
        textList, fromJson(R"({"Arguments":{},"DescriptionScheme":{"lang_de":true}})"));

    QCOMPARE(textList.value(deKey).userType(), int(QMetaType::Bool));
}

void tst_EventlistHandlerConvenienceFunctions::putsTheSameTextIntoEveryLanguage()
{
    QVariantMap textList{{deKey, QStringLiteral("%1 an %1")}, {enKey, QStringLiteral("at %1")}};

    Functions::replacePlaceholderWithArgumentString(textList, QStringLiteral("%1"),
                                                    QStringLiteral("P"));

    QCOMPARE(textList,
             QVariantMap({{deKey, QStringLiteral("P an P")}, {enKey, QStringLiteral("at P")}}));
}

void tst_EventlistHandlerConvenienceFunctions::putsEachLanguagesOwnTextIntoIt()
{
    QVariantMap textList{{deKey, QStringLiteral("an %1")},
                         {enKey, QStringLiteral("at %1")},
                         {frKey, QStringLiteral("sur %1")}};

    Functions::replacePlaceholderWithArgumentText(
        textList, QStringLiteral("%1"),
        {{deKey, QStringLiteral("Pumpe")}, {enKey, QStringLiteral("pump")}});

    // A language that the argument lacks gets what the text service answers for it.
    QCOMPARE(textList, QVariantMap({{deKey, QStringLiteral("an Pumpe")},
                                    {enKey, QStringLiteral("at pump")},
                                    {frKey, QStringLiteral("sur pump")}}));
}

void tst_EventlistHandlerConvenienceFunctions::ignoresLanguagesThatOnlyTheArgumentHas()
{
    QVariantMap textList = english(QStringLiteral("at %1"));

    Functions::replacePlaceholderWithArgumentText(
        textList, QStringLiteral("%1"),
        {{deKey, QStringLiteral("Pumpe")}, {enKey, QStringLiteral("pump")}});

    QCOMPARE(textList, english(QStringLiteral("at pump")));
}

void tst_EventlistHandlerConvenienceFunctions::replacesNothingInAnEmptyList()
{
    QVariantMap textList;

    Functions::replacePlaceholderWithArgumentString(textList, QString(), QStringLiteral("x"));
    Functions::replacePlaceholderWithArgumentText(textList, QString(), {});

    QVERIFY(textList.isEmpty());
}

void tst_EventlistHandlerConvenienceFunctions::endsWithWhatIsDerivedFromIt()
{
    struct Derived : Functions
    {
        explicit Derived(bool& isEnded) : m_isEnded(isEnded) {}
        ~Derived() override { m_isEnded = true; }
        bool& m_isEnded;
    };
    bool isEnded = false;
    std::unique_ptr<Functions> functions = std::make_unique<Derived>(isEnded);

    functions.reset();

    QVERIFY(isEnded);
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerConvenienceFunctions)
#include "tst_EventlistHandlerConvenienceFunctions.moc"
