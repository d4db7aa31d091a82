#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "unit/EventProvider/PeerToPeer.h"
#include "unit/EventProvider/ProviderTest.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QJsonArray>
#include <QTest>

#include <memory>

namespace
{

// What a warning shows behind its head.
QString tail(int textSource, const char* moduleName, const char* objectName,
             const char* instanceName, const char* url)
{
    return QStringLiteral(R"( textSource:: %1 moduleName: "%2" objectName: "%3" )"
                          R"(descriptionInstanceName: "%4" descriptionUrl: "%5")")
        .arg(QString::number(textSource), text(moduleName), text(objectName), text(instanceName),
             text(url));
}

// Shapes that a client of the provider must not send, and may.
struct IntAndText
{
    int number = 7;
    QString word = QStringLiteral("x");
};

QDBusArgument& operator<<(QDBusArgument& argument, const IntAndText& value)
{
    argument.beginStructure();
    argument << value.number << value.word;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, IntAndText& value)
{
    argument.beginStructure();
    argument >> value.number >> value.word;
    argument.endStructure();
    return argument;
}

using TextMap = QMap<QString, QString>;
using NumberMap = QMap<int, QString>;

} // namespace

Q_DECLARE_METATYPE(IntAndText)
Q_DECLARE_METATYPE(QList<IntAndText>)
Q_DECLARE_METATYPE(TextMap)
Q_DECLARE_METATYPE(NumberMap)
Q_DECLARE_METATYPE(QList<QVariantMap>)

class tst_DescriptionData : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup()
    {
        m_provider.reset();
        VERIFY_WARNINGS(m_warnings);
    }

    void readsTheFixedKeys_data();
    void readsTheFixedKeys();
    void warnsAboutAMissingKeyAndKeepsItsOutput_data();
    void warnsAboutAMissingKeyAndKeepsItsOutput();
    void warnsAboutMissingKeysWhereNothingIsKept_data();
    void warnsAboutMissingKeysWhereNothingIsKept();
    void keepsAllOutputsForAnEmptyDictionary();
    void warnsAboutATextSourceThatIsNoNumber_data();
    void warnsAboutATextSourceThatIsNoNumber();
    void takesKeysOfOtherCapitalsForMissing();
    void showsInEachWarningWhatWasReadBefore();
    void readsTheListsBeforeTheFixedKeys();
    void readsTheLists_data();
    void readsTheLists();
    void readsEachListForItself();
    void keepsAListThatIsNoneAsItWas_data();
    void keepsAListThatIsNoneAsItWas();

    void convertsLiteralEntries_data();
    void convertsLiteralEntries();
    void warnsAboutALiteralEntryThatIsNoMap();
    void convertsUrlEntries_data();
    void convertsUrlEntries();
    void dropsAUrlEntryWithoutItsKeys();
    void warnsAboutAUrlEntryThatIsNoMap();
    void makesARecordForEachOfTwoEntriesWithOnePlaceholder();

    void unpacksTheWorkedExampleFromTheBus();
    void unpacksNothingElse_data();
    void unpacksNothingElse();
    void unpacksElementsOfAnyShape_data();
    void unpacksElementsOfAnyShape();
    void givesTheLastOfTwoEqualKeys();
    void appendsToWhatIsThere();
    void warnsAboutAListFromTheBusThatWasNotUnpacked();

private:
    PeerToPeer m_peers;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    TextManagerList m_list;
    std::unique_ptr<Provider> m_provider;
    WarningRecorder m_warnings;
};

void tst_DescriptionData::initTestCase()
{
    qDBusRegisterMetaType<IntAndText>();
    qDBusRegisterMetaType<QList<IntAndText>>();
    qDBusRegisterMetaType<TextMap>();
    qDBusRegisterMetaType<NumberMap>();
    qDBusRegisterMetaType<QList<QVariantMap>>();
    QVERIFY(m_peers.connectEnds());
}

void tst_DescriptionData::init()
{
    m_list = {{text("PumpControl"), &m_texts}};
    m_provider =
        std::make_unique<Provider>(text("PumpControl"), text("PumpControl"), m_list, QString());
    m_warnings.start();
    // Here the object is offered, to no bus.
    QCoreApplication::sendPostedEvents();
    m_warnings.take();
}

void tst_DescriptionData::readsTheFixedKeys_data()
{
    QTest::addColumn<QVariantMap>("changes");
    QTest::addColumn<int>("textSource");
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("isValid");

    const QString words = text("PumpControl|PumpControl||PumpControl/OverTemperature");
    QTest::newRow("all, an empty instance name") << QVariantMap() << 0 << words << true;
    QTest::newRow("an instance name")
        << QVariantMap{{text("InstanceName"), text("Channel1")}} << 0
        << text("PumpControl|PumpControl|Channel1|PumpControl/OverTemperature") << true;
    QTest::newRow("an empty module name")
        << QVariantMap{{text("moduleName"), QString()}} << 0
        << text("|PumpControl||PumpControl/OverTemperature") << false;
    QTest::newRow("an empty object name")
        << QVariantMap{{text("ObjectName"), QString()}} << 0
        << text("PumpControl|||PumpControl/OverTemperature") << false;
    QTest::newRow("an empty url") << QVariantMap{{text("url"), QString()}} << 0
                                  << text("PumpControl|PumpControl||") << false;
    QTest::newRow("configuration") << QVariantMap{{text("textSource"), 1}} << 1 << words << true;
    QTest::newRow("7") << QVariantMap{{text("textSource"), 7}} << 7 << words << true;
    QTest::newRow("-1") << QVariantMap{{text("textSource"), -1}} << -1 << words << true;
    QTest::newRow("a string that is no number")
        << QVariantMap{{text("textSource"), text("abc")}} << 0 << words << true;
    QTest::newRow("a string that is a number")
        << QVariantMap{{text("textSource"), text("1")}} << 1 << words << true;
    QTest::newRow("a bool") << QVariantMap{{text("textSource"), true}} << 1 << words << true;
    QTest::newRow("a word that is a number")
        << QVariantMap{{text("moduleName"), 7}} << 0
        << text("7|PumpControl||PumpControl/OverTemperature") << true;
    QTest::newRow("a word that is a map")
        << QVariantMap{{text("moduleName"), QVariantMap{{text("a"), 1}}}} << 0
        << text("|PumpControl||PumpControl/OverTemperature") << false;
    QTest::newRow("a url that is a number")
        << QVariantMap{{text("url"), 5}} << 0 << text("PumpControl|PumpControl||5") << true;
    QTest::newRow("a url that is a list") << QVariantMap{{text("url"), QVariantList{1}}} << 0
                                          << text("PumpControl|PumpControl||") << false;
    QTest::newRow("other keys") << QVariantMap{{text("more"), 1}} << 0 << words << true;
}

void tst_DescriptionData::readsTheFixedKeys()
{
    QFETCH(QVariantMap, changes);
    QFETCH(int, textSource);
    QFETCH(QString, words);
    QFETCH(bool, isValid);

    const Converted converted = convertFixedKeys(*m_provider, changed(pumpDictionary(), changes));

    QCOMPARE(int(converted.textSource), textSource);
    QCOMPARE(QStringList({converted.moduleName, converted.objectName, converted.instanceName,
                          converted.url})
                 .join(QLatin1Char('|')),
             words);
    QCOMPARE(converted.isValid, isValid);
}

void tst_DescriptionData::warnsAboutAMissingKeyAndKeepsItsOutput_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("stateTail");
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("isValid");

    // The outputs hold "m", "o", "i", "u" and the source 3 before.
    const char* const pump = "PumpControl";
    QTest::newRow("textSource") << text("textSource") << tail(3, "m", "o", "i", "u")
                                << text("3|PumpControl|PumpControl||PumpControl/OverTemperature")
                                << true;
    QTest::newRow("moduleName") << text("moduleName") << tail(0, "m", "o", "i", "u")
                                << text("0|m|PumpControl||PumpControl/OverTemperature") << true;
    QTest::newRow("ObjectName") << text("ObjectName") << tail(0, pump, "o", "i", "u")
                                << text("0|PumpControl|o||PumpControl/OverTemperature") << true;
    QTest::newRow("InstanceName") << text("InstanceName") << tail(0, pump, pump, "i", "u")
                                  << text("0|PumpControl|PumpControl|i|PumpControl/OverTemperature")
                                  << true;
    QTest::newRow("url") << text("url") << tail(0, pump, pump, "", "u")
                         << text("0|PumpControl|PumpControl||u") << true;
}

void tst_DescriptionData::warnsAboutAMissingKeyAndKeepsItsOutput()
{
    QFETCH(QString, key);
    QFETCH(QString, stateTail);
    QFETCH(QString, words);
    QFETCH(bool, isValid);
    Converted before;
    before.textSource = TextSource(3);
    before.moduleName = text("m");
    before.objectName = text("o");
    before.instanceName = text("i");
    before.url = text("u");
    m_warnings.expect(QString(text("Key for description not found: ") + quoted(key) + stateTail),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::convertDescriptionData"));

    const Converted after =
        convertFixedKeys(*m_provider, changed(pumpDictionary(), {{key, QVariant()}}), before);

    QCOMPARE(QStringList({QString::number(int(after.textSource)), after.moduleName,
                          after.objectName, after.instanceName, after.url})
                 .join(QLatin1Char('|')),
             words);
    QCOMPARE(after.isValid, isValid);
}

void tst_DescriptionData::warnsAboutMissingKeysWhereNothingIsKept_data()
{
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QString>("stateTail");
    QTest::addColumn<QString>("words");
    QTest::addColumn<bool>("isValid");

    const char* const pump = "PumpControl";
    const QString all = text("PumpControl|PumpControl|Channel1|PumpControl/OverTemperature");
    const QString nothing = tail(0, "", "", "", "");
    QTest::newRow("textSource") << QStringList(text("textSource")) << nothing << all << true;
    QTest::newRow("moduleName") << QStringList(text("moduleName")) << nothing
                                << text("|PumpControl|Channel1|PumpControl/OverTemperature")
                                << false;
    QTest::newRow("ObjectName") << QStringList(text("ObjectName")) << tail(0, pump, "", "", "")
                                << text("PumpControl||Channel1|PumpControl/OverTemperature")
                                << false;
    QTest::newRow("InstanceName") << QStringList(text("InstanceName"))
                                  << tail(0, pump, pump, "", "")
                                  << text("PumpControl|PumpControl||PumpControl/OverTemperature")
                                  << true;
    QTest::newRow("url") << QStringList(text("url")) << tail(0, pump, pump, "Channel1", "")
                         << text("PumpControl|PumpControl|Channel1|") << false;
    QTest::newRow("all") << QStringList({text("textSource"), text("moduleName"), text("ObjectName"),
                                         text("InstanceName"), text("url")})
                         << nothing << text("|||") << false;
}

void tst_DescriptionData::warnsAboutMissingKeysWhereNothingIsKept()
{
    QFETCH(QStringList, keys);
    QFETCH(QString, stateTail);
    QFETCH(QString, words);
    QFETCH(bool, isValid);
    QVariantMap dictionary = changed(pumpDictionary(), {{text("InstanceName"), text("Channel1")}});
    for (const QString& key : qAsConst(keys))
    {
        dictionary.remove(key);
        m_warnings.expect(
            QString(text("Key for description not found: ") + quoted(key) + stateTail));
    }

    const Converted converted = convertFixedKeys(*m_provider, dictionary);

    QCOMPARE(int(converted.textSource), 0);
    QCOMPARE(QStringList({converted.moduleName, converted.objectName, converted.instanceName,
                          converted.url})
                 .join(QLatin1Char('|')),
             words);
    QCOMPARE(converted.isValid, isValid);
}

void tst_DescriptionData::keepsAllOutputsForAnEmptyDictionary()
{
    Converted before;
    before.textSource = EventsDBusDefinitions::configuration;
    before.moduleName = text("a");
    before.objectName = text("b");
    before.instanceName = text("c");
    before.url = text("d");
    for (const char* const key : {"textSource", "moduleName", "ObjectName", "InstanceName", "url"})
    {
        m_warnings.expect(QString(text("Key for description not found: ") + quoted(text(key)) +
                                  tail(1, "a", "b", "c", "d")));
    }

    const Converted after = convertFixedKeys(*m_provider, QVariantMap(), before);

    QVERIFY(after.isValid);
    QCOMPARE(after.textSource, EventsDBusDefinitions::configuration);
    QCOMPARE(after.moduleName + after.objectName + after.instanceName + after.url, text("abcd"));
}

void tst_DescriptionData::warnsAboutATextSourceThatIsNoNumber_data()
{
    QTest::addColumn<QVariant>("textSource");

    QTest::newRow("nothing") << QVariant();
    QTest::newRow("a map") << QVariant(QVariantMap{{text("a"), 1}});
    QTest::newRow("an empty map") << QVariant(QVariantMap());
    QTest::newRow("an empty list") << QVariant(QVariantList());
    QTest::newRow("a list") << QVariant(QVariantList{1});
    QTest::newRow("a string list") << QVariant(QStringList(text("1")));
    QTest::newRow("a wrapped number") << QVariant::fromValue(QDBusVariant(1));
}

void tst_DescriptionData::warnsAboutATextSourceThatIsNoNumber()
{
    QFETCH(QVariant, textSource);
    QVariantMap dictionary = pumpDictionary();
    dictionary.insert(text("textSource"), textSource);
    m_warnings.expect(QString(text("No valid descriptionTextSource (Can't convert to int)") +
                              tail(0, "", "", "", "")),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::convertDescriptionData"));

    const Converted converted = convertFixedKeys(*m_provider, dictionary);

    QCOMPARE(int(converted.textSource), 0);
    QVERIFY(converted.isValid);
}

void tst_DescriptionData::takesKeysOfOtherCapitalsForMissing()
{
    m_warnings.expect(text(R"(Key for description not found: "ObjectName" textSource:: 0 )"
                           R"(moduleName: "PumpControl" objectName: "" )"
                           R"(descriptionInstanceName: "" descriptionUrl: "")"));

    const Converted converted = convertFixedKeys(
        *m_provider, changed(pumpDictionary(), {{text("ObjectName"), QVariant()},
                                                {text("objectName"), text("PumpControl")}}));

    QVERIFY(!converted.isValid);
}

void tst_DescriptionData::showsInEachWarningWhatWasReadBefore()
{
    m_warnings
        .expect(QString(text(R"(Key for description not found: "textSource")") +
                        tail(0, "", "", "", "")))
        .expect(QString(text(R"(Key for description not found: "ObjectName")") +
                        tail(0, "Pump \\\"3\\\"", "", "", "")))
        .expect(QString(text(R"(Key for description not found: "InstanceName")") +
                        tail(0, "Pump \\\"3\\\"", "", "", "")));

    const Converted converted = convertFixedKeys(
        *m_provider, {{text("moduleName"), text("Pump \"3\"")}, {text("url"), text("u")}});

    QCOMPARE(converted.url, text("u"));
    QVERIFY(!converted.isValid);
}

void tst_DescriptionData::readsTheListsBeforeTheFixedKeys()
{
    m_warnings
        .expect(QString(text("No valid descriptionArguments (Can't convert to QVariantList)") +
                        tail(0, "", "", "", "")),
                text("EventsDBusProviderBaseClass"),
                text("EventsDBusProviderBaseClass::convertDescriptionData"))
        .expect(QString(text("No valid descriptionUrlArguments (Can't convert to QVariantList)") +
                        tail(0, "", "", "", "")),
                text("EventsDBusProviderBaseClass"),
                text("EventsDBusProviderBaseClass::convertDescriptionData"))
        .expect(QString(text(R"(Key for description not found: "url")") +
                        tail(1, "PumpControl", "PumpControl", "", "")));

    const Converted converted =
        convertAll(*m_provider, changed(pumpDictionary(), {{text("url"), QVariant()},
                                                           {text("textSource"), 1},
                                                           {text("Arguments"), 7},
                                                           {text("UrlArguments"), QVariantMap()}}));

    QVERIFY(converted.arguments.isEmpty());
    QVERIFY(converted.urlArguments.isEmpty());
    QVERIFY(!converted.isValid);
}

void tst_DescriptionData::readsTheLists_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<int>("size");

    QTest::newRow("missing") << QVariant() << 0;
    QTest::newRow("empty") << QVariant(QVariantList()) << 0;
    QTest::newRow("two elements") << QVariant(QVariantList{1, 2}) << 2;
    QTest::newRow("strings") << QVariant(QStringList({text("a"), text("b"), text("c")})) << 3;
}

void tst_DescriptionData::readsTheLists()
{
    QFETCH(QVariant, value);
    QFETCH(int, size);

    const Converted converted = convertAll(
        *m_provider,
        changed(pumpDictionary(), {{text("Arguments"), value}, {text("UrlArguments"), value}}));

    QCOMPARE(converted.arguments.size(), size);
    QCOMPARE(converted.urlArguments.size(), size);
    QVERIFY(converted.isValid);
}

void tst_DescriptionData::readsEachListForItself()
{
    const Converted converted = convertAll(
        *m_provider, changed(pumpDictionary(), {{text("Arguments"), QVariantList{1, 2}},
                                                {text("UrlArguments"), QVariantList{3}}}));

    QCOMPARE(converted.arguments, QVariantList({1, 2}));
    QCOMPARE(converted.urlArguments, QVariantList{3});
}

void tst_DescriptionData::keepsAListThatIsNoneAsItWas_data()
{
    QTest::addColumn<QVariant>("value");

    QTest::newRow("a number") << QVariant(7);
    QTest::newRow("a text") << QVariant(text("x"));
    QTest::newRow("a map") << QVariant(QVariantMap());
}

void tst_DescriptionData::keepsAListThatIsNoneAsItWas()
{
    QFETCH(QVariant, value);
    Converted converted;
    converted.arguments = {1};
    converted.urlArguments = {2};
    for (const char* const list : {"descriptionArguments", "descriptionUrlArguments"})
    {
        m_warnings.expect(QString(text("No valid ") + text(list) +
                                  text(" (Can't convert to QVariantList)") +
                                  tail(0, "", "", "", "")));
    }

    // A bad list does not make a dictionary bad.
    QVERIFY(m_provider->convertDescriptionData(
        converted.textSource, converted.moduleName, converted.objectName, converted.instanceName,
        converted.url, converted.arguments, converted.urlArguments,
        changed(pumpDictionary(), {{text("Arguments"), value}, {text("UrlArguments"), value}})));

    QCOMPARE(converted.arguments, QVariantList{1});
    QCOMPARE(converted.urlArguments, QVariantList{2});
}

void tst_DescriptionData::convertsLiteralEntries_data()
{
    QTest::addColumn<QVariantMap>("entry");
    QTest::addColumn<QString>("records");

    QTest::newRow("both keys") << literalEntry(text("%2"), text("97.5")) << text("%2=97.5");
    QTest::newRow("an empty map is skipped") << QVariantMap() << QString();
    QTest::newRow("no placeholder") << QVariantMap{{text("Argument"), text("x")}} << text("=x");
    QTest::newRow("no argument") << QVariantMap{{text("Placeholder"), text("%1")}} << text("%1=");
    QTest::newRow("other keys alone")
        << QVariantMap{{text("placeholder"), text("%1")}} << text("=");
    QTest::newRow("numbers") << QVariantMap{{text("Placeholder"), 1}, {text("Argument"), 97.5}}
                             << text("1=97.5");
    QTest::newRow("values without a string form")
        << QVariantMap{{text("Placeholder"), QVariantMap()}, {text("Argument"), QVariantList()}}
        << text("=");
}

void tst_DescriptionData::convertsLiteralEntries()
{
    QFETCH(QVariantMap, entry);
    QFETCH(QString, records);
    QList<EventlistHandlerStructs::stDescriptionArgument> result;

    m_provider->convertDescriptionArgumentData(result, {entry});

    QStringList found;
    for (const auto& record : qAsConst(result))
    {
        found.append(record.placeholder + QLatin1Char('=') + record.argument);
    }
    QCOMPARE(found.join(QLatin1Char(' ')), records);
}

void tst_DescriptionData::warnsAboutALiteralEntryThatIsNoMap()
{
    QList<EventlistHandlerStructs::stDescriptionArgument> result{{text("%0"), text("stays")}};
    const QString head = text("No valid descriptionArgumentData (Can't convert to QVariantMap) "
                              "DescriptionArguments: ");
    for (const char* const value :
         {"QVariant(int, 7)", "QVariant(QString, \"x\")", "QVariant(Invalid)"})
    {
        m_warnings.expect(QString(head + text(value)), text("EventsDBusProviderBaseClass"),
                          text("EventsDBusProviderBaseClass::convertDescriptionArgumentData"));
    }

    m_provider->convertDescriptionArgumentData(result,
                                               {7, literalEntry(text("%1"), text("a")), text("x"),
                                                QVariant(), literalEntry(text("%2"), text("b"))});

    QCOMPARE(result.size(), 3);
    QCOMPARE(result.at(0).argument, text("stays"));
    QCOMPARE(result.at(1).argument, text("a"));
    QCOMPARE(result.at(2).argument, text("b"));
}

void tst_DescriptionData::convertsUrlEntries_data()
{
    QTest::addColumn<QVariantMap>("changes");
    QTest::addColumn<QString>("placeholder");
    QTest::addColumn<QVariantMap>("textObject");

    const QVariantMap pump{{text("lang_de"), text("Pumpe 3")}, {text("lang_en"), text("pump 3")}};
    QTest::newRow("found") << QVariantMap() << text("%1") << pump;
    QTest::newRow("no placeholder, without a warning")
        << QVariantMap{{text("Placeholder"), QVariant()}} << QString() << pump;
    QTest::newRow("arguments of its own are ignored")
        << QVariantMap{{text("Arguments"), 7}, {text("UrlArguments"), 7}} << text("%1") << pump;
    QTest::newRow("a url without a text shows its key")
        << QVariantMap{{text("url"), text("PumpControl/Unknown")}} << text("%1")
        << QVariantMap{{text("lang_en"), text("PumpControl/PumpControl/PumpControl/Unknown")}};
    QTest::newRow("with its instance name")
        << QVariantMap{{text("url"), text("Unknown")}, {text("InstanceName"), text("Channel1")}}
        << text("%1")
        << QVariantMap{{text("lang_en"), text("PumpControl/PumpControl/Channel1/Unknown")}};
}

void tst_DescriptionData::convertsUrlEntries()
{
    QFETCH(QVariantMap, changes);
    QFETCH(QString, placeholder);
    QFETCH(QVariantMap, textObject);
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> result;

    m_provider->convertDescriptionUrlArgumentData(result, {changed(urlEntry(text("%1")), changes)});

    QCOMPARE(result.size(), 1);
    QCOMPARE(result.first().placeholder, placeholder);
    QCOMPARE(result.first().textObject, textObject);
}

void tst_DescriptionData::dropsAUrlEntryWithoutItsKeys()
{
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> result;
    // An empty url is dropped without a word; a missing key is told by the conversion alone.
    m_warnings
        .expect(QString(text(R"(Key for description not found: "moduleName")") +
                        tail(0, "", "", "", "")),
                text("EventsDBusProviderBaseClass"),
                text("EventsDBusProviderBaseClass::convertDescriptionData"))
        .expect(QString(text(R"(Key for description not found: "url")") +
                        tail(0, "PumpControl", "PumpControl", "", "")));

    m_provider->convertDescriptionUrlArgumentData(
        result, {changed(urlEntry(text("%1")), {{text("url"), QString()}}),
                 changed(urlEntry(text("%2")), {{text("moduleName"), QVariant()}}),
                 changed(urlEntry(text("%4")), {{text("url"), QVariant()}}), urlEntry(text("%3"))});

    QCOMPARE(result.size(), 1);
    QCOMPARE(result.first().placeholder, text("%3"));
}

void tst_DescriptionData::warnsAboutAUrlEntryThatIsNoMap()
{
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> result;
    const QString head = text("No valid descriptionUrlArgumentData (Can't convert to QVariantMap) "
                              "List entry: ");
    for (const char* const value : {"QVariant(int, 7)", "QVariant(QString, \"x\")"})
    {
        m_warnings.expect(QString(head + text(value)), text("EventsDBusProviderBaseClass"),
                          text("EventsDBusProviderBaseClass::convertDescriptionUrlArgumentData"));
    }

    m_provider->convertDescriptionUrlArgumentData(result, {7, urlEntry(text("%1")), text("x")});

    QCOMPARE(result.size(), 1);
}

void tst_DescriptionData::makesARecordForEachOfTwoEntriesWithOnePlaceholder()
{
    QList<EventlistHandlerStructs::stDescriptionArgument> literals;
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> translated;
    QJsonObject metaData;

    m_provider->convertDescriptionArgumentData(
        literals,
        {literalEntry(text("%1"), text("first")), literalEntry(text("%1"), text("second")),
         literalEntry(text("%2"), text("first")), literalEntry(text("%2"), text("second"))});
    m_provider->convertDescriptionUrlArgumentData(translated, {urlEntry(text("%1"))});
    EventlistHandlerConvenienceFunctions::generateMetaData(
        metaData, {{text("lang_en"), text("%1 %2")}}, literals, translated, QString());

    QCOMPARE(literals.size(), 4);
    QCOMPARE(compactJson(metaData.value(text("Arguments")).toObject()),
             QByteArray(R"({"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
                        R"("%2":{"type":"string","value":"second"}})"));
}

void tst_DescriptionData::unpacksTheWorkedExampleFromTheBus()
{
    const QVariantMap arrived = m_peers.sent(
        changed(pumpDictionary(),
                {{text("Arguments"), QVariantList{literalEntry(text("%2"), text("97.5"))}},
                 {text("UrlArguments"), QVariantList{urlEntry(text("%1"))}}}));
    QVariantMap plain = arrived;
    QVariantList arguments;
    QVariantList urlArguments;
    QList<EventlistHandlerStructs::stDescriptionArgument> literals;
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> translated;
    QJsonObject metaData;

    m_provider->convertArguments(arguments, arrived.value(text("Arguments")));
    m_provider->convertArguments(urlArguments, arrived.value(text("UrlArguments")));
    plain.insert(text("Arguments"), arguments);
    plain.insert(text("UrlArguments"), urlArguments);
    const Converted converted = convertAll(*m_provider, plain);
    m_provider->convertDescriptionArgumentData(literals, converted.arguments);
    m_provider->convertDescriptionUrlArgumentData(translated, converted.urlArguments);
    EventlistHandlerConvenienceFunctions::generateMetaData(
        metaData, m_texts.getAllTexts(converted.url), literals, translated, converted.url);

    QCOMPARE(arguments, QVariantList{literalEntry(text("%2"), text("97.5"))});
    QCOMPARE(urlArguments, QVariantList{urlEntry(text("%1"))});
    QVERIFY(converted.isValid);
    QCOMPARE(compactJson(metaData),
             QByteArray(R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3",)"
                        R"("lang_en":"pump 3"}},"%2":{"type":"string","value":"97.5"}},)"
                        R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
                        R"("lang_en":"Overtemperature at %1, value %2"}})"));
}

void tst_DescriptionData::unpacksNothingElse_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<bool>("isSent");

    QTest::newRow("invalid") << QVariant() << false;
    QTest::newRow("a plain list") << QVariant(QVariantList{literalEntry(text("%1"), text("x"))})
                                  << false;
    QTest::newRow("a plain text") << QVariant(text("x")) << false;
    QTest::newRow("a plain list of texts") << QVariant(QStringList(text("x"))) << false;
    QTest::newRow("an argument that was never read")
        << QVariant::fromValue(QDBusArgument()) << false;
    QTest::newRow("s") << QVariant(text("x")) << true;
    QTest::newRow("i") << QVariant(7) << true;
    QTest::newRow("as") << QVariant(QStringList(text("x"))) << true;
    QTest::newRow("ay") << QVariant(QByteArray("x")) << true;
    QTest::newRow("ai") << QVariant::fromValue(QList<int>{1, 2}) << true;
    QTest::newRow("ad") << QVariant::fromValue(QList<double>{1, 2}) << true;
    QTest::newRow("a{sv}") << QVariant(literalEntry(text("%1"), text("x"))) << true;
    QTest::newRow("a{ss}") << QVariant::fromValue(TextMap{{text("a"), text("b")}}) << true;
    QTest::newRow("aa{sv}") << QVariant::fromValue(
                                   QList<QVariantMap>{literalEntry(text("%1"), text("x"))})
                            << true;
    QTest::newRow("(is)") << QVariant::fromValue(IntAndText()) << true;
    QTest::newRow("a(is)") << QVariant::fromValue(QList<IntAndText>{IntAndText()}) << true;
    QTest::newRow("an empty av") << QVariant(QVariantList()) << true;
}

void tst_DescriptionData::unpacksNothingElse()
{
    QFETCH(QVariant, value);
    QFETCH(bool, isSent);
    if (isSent)
    {
        value = m_peers.sent({{text("Arguments"), value}}).value(text("Arguments"));
        QVERIFY(value.isValid());
    }
    QVariantList result{text("before")};

    m_provider->convertArguments(result, value);

    QCOMPARE(result, QVariantList{text("before")});
}

void tst_DescriptionData::unpacksElementsOfAnyShape_data()
{
    QTest::addColumn<QVariant>("element");
    QTest::addColumn<QVariantMap>("entry");

    const QVariantMap literal = literalEntry(text("%1"), text("x"));
    QTest::newRow("a{sv}") << QVariant(literal) << literal;
    QTest::newRow("an empty a{sv}") << QVariant(QVariantMap()) << QVariantMap();
    QTest::newRow("numbers stay numbers")
        << QVariant(QVariantMap{{text("textSource"), 1}}) << QVariantMap{{text("textSource"), 1}};
    QTest::newRow("s") << QVariant(text("x")) << QVariantMap();
    QTest::newRow("i") << QVariant(7) << QVariantMap();
    QTest::newRow("as") << QVariant(QStringList(text("x"))) << QVariantMap();
    QTest::newRow("ai") << QVariant::fromValue(QList<int>{1}) << QVariantMap();
    QTest::newRow("av") << QVariant(QVariantList{literal}) << QVariantMap();
    QTest::newRow("a{ss}") << QVariant::fromValue(TextMap{{text("a"), text("b")}}) << QVariantMap();
    QTest::newRow("a{is}") << QVariant::fromValue(NumberMap{{1, text("x")}}) << QVariantMap();
    QTest::newRow("aa{sv}") << QVariant::fromValue(QList<QVariantMap>{literal}) << QVariantMap();
    QTest::newRow("(is)") << QVariant::fromValue(IntAndText()) << QVariantMap();
}

void tst_DescriptionData::unpacksElementsOfAnyShape()
{
    QFETCH(QVariant, element);
    QFETCH(QVariantMap, entry);
    const QVariantMap last = literalEntry(text("%9"), text("last"));
    const QVariant arrived =
        m_peers.sent({{text("Arguments"), QVariantList{element, last}}}).value(text("Arguments"));
    QVariantList result;

    m_provider->convertArguments(result, arrived);

    QCOMPARE(result, QVariantList({entry, last}));
}

void tst_DescriptionData::givesTheLastOfTwoEqualKeys()
{
    QMultiMap<QString, QVariant> twice;
    twice.insert(text("Argument"), text("sent last"));
    twice.insert(text("Argument"), text("sent first"));
    QVariantMap entry;
    entry = twice;
    const QVariant arrived =
        m_peers.sent({{text("Arguments"), QVariantList{entry}}}).value(text("Arguments"));
    QVariantList result;
    QList<EventlistHandlerStructs::stDescriptionArgument> records;

    m_provider->convertArguments(result, arrived);
    m_provider->convertDescriptionArgumentData(records, result);

    QCOMPARE(result.first().toMap().size(), 2);
    QCOMPARE(records.first().argument, text("sent last"));
}

void tst_DescriptionData::appendsToWhatIsThere()
{
    const QVariant arrived =
        m_peers.sent({{text("Arguments"), QVariantList{QVariantMap()}}}).value(text("Arguments"));
    QVariantList result{7};

    m_provider->convertArguments(result, arrived);
    m_provider->convertArguments(result, arrived);

    // Reading a value leaves it unread for the next one.
    QCOMPARE(result, QVariantList({7, QVariantMap(), QVariantMap()}));
}

void tst_DescriptionData::warnsAboutAListFromTheBusThatWasNotUnpacked()
{
    const QVariantMap arrived = m_peers.sent(
        changed(pumpDictionary(),
                {{text("Arguments"), QVariantList{literalEntry(text("%2"), text("97.5"))}}}));
    m_warnings.expect(
        QString(text("No valid descriptionArguments (Can't convert to QVariantList)") +
                tail(0, "", "", "", "")));

    const Converted converted = convertAll(*m_provider, arrived);

    QVERIFY(converted.isValid);
    QVERIFY(converted.arguments.isEmpty());
}

QTEST_GUILESS_MAIN(tst_DescriptionData)
#include "tst_DescriptionData.moc"
