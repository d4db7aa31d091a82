#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "bus/EventProvider/ProviderTest.h"
#include "bus/EventProvider/PumpEvents.h"

#include "Platform/LanguageDefinitions.h"

#include <QDBusArgument>

using Definitions = EventsDBusDefinitions;
using Provider = EventsDBusProviderBaseClass;
using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;
using UrlArguments = QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>;

/// How a dictionary is taken apart and its texts are found.
class tst_EventsDBusProviderBaseClass : public ProviderTest
{
    Q_OBJECT
private Q_SLOTS:
    void definitionsAreFixed();
    void addsNothingToTheMetaObject();
    void findsTheFirstTextManagerOfAName();
    void joinsTheKey_data();
    void joinsTheKey();
    void readsTheFiveKeys_data();
    void readsTheFiveKeys();
    void keepsOutputsWhoseKeysAreMissing();
    void readsTheListsBeforeTheKeys_data();
    void readsTheListsBeforeTheKeys();
    void unpacksNothingThatDidNotComeFromTheBus_data();
    void unpacksNothingThatDidNotComeFromTheBus();
    void convertsArguments();
    void convertsUrlArguments();
    void dropsUrlArgumentsWithoutAUrl();
    void refusesTextsOfAnotherModule_data();
    void refusesTextsOfAnotherModule();
    void findsTextsInLanguageFiles();
    void findsTextsInConfiguration_data();
    void findsTextsInConfiguration();
    void findsNoTextInConfiguration_data();
    void findsNoTextInConfiguration();
};

void tst_EventsDBusProviderBaseClass::definitionsAreFixed()
{
    using Accessor = const QString& (*)();
    const QVector<QPair<Accessor, const char*>> catalogue{
        {&Definitions::getObjectNameEvents, "Events"},
        {&Definitions::getInterfaceNameEvents, "Interface.Events"},
        {&Definitions::getEventDBusKeyModuleName, "moduleName"},
        {&Definitions::getEventDBusKeyTextSource, "textSource"},
        {&Definitions::getEventDBusKeyUrl, "url"},
        {&Definitions::getEventDBusKeyObjectName, "ObjectName"},
        {&Definitions::getEventDBusKeyInstanceName, "InstanceName"},
        {&Definitions::getEventDBusKeyPlaceholder, "Placeholder"},
        {&Definitions::getEventDBusKeyArgument, "Argument"},
        {&Definitions::getEventDBusKeyArguments, "Arguments"},
        {&Definitions::getEventDBusKeyUrlArguments, "UrlArguments"}};
    for (const auto& [accessor, value] : catalogue)
    {
        QCOMPARE(accessor(), text(value));
        QCOMPARE(&accessor(), &accessor());
    }
    QCOMPARE(int(Definitions::languageFile), 0);
    QCOMPARE(int(Definitions::configuration), 1);
}

void tst_EventsDBusProviderBaseClass::addsNothingToTheMetaObject()
{
    const QMetaObject& metaObject = Provider::staticMetaObject;
    QCOMPARE(metaObject.className(), "EventsDBusProviderBaseClass");
    const QMetaObject& base = *metaObject.superClass();
    QCOMPARE(base.className(), "DBusServiceProviderBaseClass");
    for (const QMetaObject* const each : {&metaObject, &base})
    {
        QCOMPARE(each->methodCount(), QObject::staticMetaObject.methodCount());
        QCOMPARE(each->propertyCount(), QObject::staticMetaObject.propertyCount());
        QCOMPARE(each->classInfoCount(), 0);
        QCOMPARE(each->enumeratorCount(), 0);
        QCOMPARE(each->constructorCount(), 0);
    }
}

void tst_EventsDBusProviderBaseClass::findsTheFirstTextManagerOfAName()
{
    const FakeTextManager other;
    const QVector<Provider::TextManagerData> none;
    const QVector<Provider::TextManagerData> texts{
        {pump, &m_manager}, {pump, &other}, {QStringLiteral("Valve"), &other}};
    {
        const PumpEvents provider(texts);
        QCOMPARE(provider.getTextManager(pump), &m_manager);
        QCOMPARE(provider.getTextManager(QStringLiteral("Valve")), &other);
        QCOMPARE(provider.getTextManager(QStringLiteral("pumpcontrol")), nullptr);
        QCOMPARE(provider.getTextManager(QString()), nullptr);
    }
    const PumpEvents provider(none);
    QCOMPARE(provider.getTextManager(pump), nullptr);
}

void tst_EventsDBusProviderBaseClass::joinsTheKey_data()
{
    QTest::addColumn<QString>("module");
    QTest::addColumn<QString>("object");
    QTest::addColumn<QString>("instance");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("key");
    const QString limit = text("Texts/Limit");
    QTest::newRow("all") << pump << text("Sensors") << text("Channel1") << limit
                         << text("PumpControl/Sensors/Channel1/Texts/Limit");
    QTest::newRow("no instance") << pump << text("Sensors") << QString() << limit
                                 << text("PumpControl/Sensors/Texts/Limit");
    QTest::newRow("no object") << pump << QString() << text("Channel1") << limit
                               << text("PumpControl/Channel1/Texts/Limit");
    QTest::newRow("url alone") << QString() << QString() << QString() << limit
                               << text("/Texts/Limit");
    QTest::newRow("module alone") << pump << QString() << QString() << QString()
                                  << text("PumpControl/");
    QTest::newRow("nothing") << QString() << QString() << QString() << QString() << text("/");
}

void tst_EventsDBusProviderBaseClass::joinsTheKey()
{
    QFETCH(QString, module);
    QFETCH(QString, object);
    QFETCH(QString, instance);
    QFETCH(QString, url);
    QFETCH(QString, key);
    QCOMPARE(PumpEvents(m_texts).generateUrl(module, object, instance, url), key);
}

void tst_EventsDBusProviderBaseClass::readsTheFiveKeys_data()
{
    QTest::addColumn<QVariantMap>("data");
    QTest::addColumn<bool>("isComplete");
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("warnings");
    const QString all = text("PumpControl/PumpControl/PumpControl/OverTemperature");
    const QString none;
    const QVariantMap good = goodDictionary();
    QTest::newRow("empty instance name") << good << true << 0 << all << QStringList();
    QTest::newRow("no instance name")
        << without(good, "InstanceName") << true << 0 << all
        << QStringList{notFound("InstanceName", tail(0, pump, pump, none, none))};
    QTest::newRow("no text source")
        << without(good, "textSource") << true << 0 << all
        << QStringList{notFound("textSource", tail(0, none, none, none, none))};
    QTest::newRow("no module name")
        << without(good, "moduleName") << false << 0
        << text("/PumpControl/PumpControl/OverTemperature")
        << QStringList{notFound("moduleName", tail(0, none, none, none, none))};
    QTest::newRow("no object name")
        << without(good, "ObjectName") << false << 0
        << text("PumpControl/PumpControl/OverTemperature")
        << QStringList{notFound("ObjectName", tail(0, pump, none, none, none))};
    QTest::newRow("object name in other letters")
        << with(without(good, "ObjectName"), "objectName", pump) << false << 0
        << text("PumpControl/PumpControl/OverTemperature")
        << QStringList{notFound("ObjectName", tail(0, pump, none, none, none))};
    QTest::newRow("no url") << without(dictionary(1, pump, pump, text("Channel1"), none), "url")
                            << false << 1 << text("PumpControl/PumpControl/Channel1/")
                            << QStringList{
                                   notFound("url", tail(1, pump, pump, text("Channel1"), none))};
    QTest::newRow("empty module name")
        << with(good, "moduleName", none) << false << 0
        << text("/PumpControl/PumpControl/OverTemperature") << QStringList();
    QTest::newRow("empty object name")
        << with(good, "ObjectName", none) << false << 0
        << text("PumpControl/PumpControl/OverTemperature") << QStringList();
    QTest::newRow("empty url") << with(good, "url", none) << false << 0
                               << text("PumpControl/PumpControl/") << QStringList();
    QTest::newRow("url of another type") << with(good, "url", QVariantList{1}) << false << 0
                                         << text("PumpControl/PumpControl/") << QStringList();
    QTest::newRow("number as url")
        << with(good, "url", 5) << true << 0 << text("PumpControl/PumpControl/5") << QStringList();
    QTest::newRow("text source as a word")
        << with(good, "textSource", text("abc")) << true << 0 << all << QStringList();
    QTest::newRow("text source as a number in a text")
        << with(good, "textSource", text("1")) << true << 1 << all << QStringList();
    QTest::newRow("text source beyond the list")
        << with(good, "textSource", 7) << true << 7 << all << QStringList();
    for (const auto& [name, value] : {QPair<const char*, QVariant>{"map", QVariantMap()},
                                      QPair<const char*, QVariant>{"list", QVariantList()},
                                      QPair<const char*, QVariant>{"nothing", QVariant()}})
    {
        QTest::addRow("text source as %s", name)
            << with(good, "textSource", value) << true << 0 << all
            << QStringList{text("No valid descriptionTextSource (Can't convert to int) ") +
                           tail(0, none, none, none, none)};
    }
    const QString empty = tail(0, none, none, none, none);
    QTest::newRow("empty") << QVariantMap() << false << 0 << text("/")
                           << QStringList{notFound("textSource", empty),
                                          notFound("moduleName", empty),
                                          notFound("ObjectName", empty),
                                          notFound("InstanceName", empty), notFound("url", empty)};
}

void tst_EventsDBusProviderBaseClass::readsTheFiveKeys()
{
    QFETCH(QVariantMap, data);
    QFETCH(bool, isComplete);
    QFETCH(int, source);
    QFETCH(QString, key);
    QFETCH(QStringList, warnings);
    for (const QString& warning : warnings)
    {
        expect(warning, "convertDescriptionData");
    }
    const PumpEvents provider(m_texts);
    Definitions::TextSource textSource = Definitions::languageFile;
    QString module;
    QString object;
    QString instance;
    QString url;

    QCOMPARE(provider.convertDescriptionData(textSource, module, object, instance, url, data),
             isComplete);

    QCOMPARE(int(textSource), source);
    QCOMPARE(provider.generateUrl(module, object, instance, url), key);
}

void tst_EventsDBusProviderBaseClass::keepsOutputsWhoseKeysAreMissing()
{
    const PumpEvents provider(m_texts);
    Definitions::TextSource textSource = Definitions::configuration;
    QString module = text("a");
    QString object = text("b");
    QString instance = text("c");
    QString url = text("d");
    const QString kept = tail(1, module, object, instance, url);
    for (const char* const key : {"textSource", "moduleName", "ObjectName", "InstanceName", "url"})
    {
        expect(notFound(key, kept), "convertDescriptionData");
    }
    QVERIFY(
        provider.convertDescriptionData(textSource, module, object, instance, url, QVariantMap()));
    QCOMPARE(textSource, Definitions::configuration);
    QCOMPARE(module + object + instance + url, text("abcd"));
}

void tst_EventsDBusProviderBaseClass::readsTheListsBeforeTheKeys_data()
{
    QTest::addColumn<QVariantMap>("data");
    QTest::addColumn<int>("argumentCount");
    QTest::addColumn<int>("urlArgumentCount");
    QTest::addColumn<QStringList>("warnings");
    const QVariantMap good = goodDictionary();
    const QString empty = tail(0, QString(), QString(), QString(), QString());
    QTest::newRow("no lists") << good << 0 << 0 << QStringList();
    QTest::newRow("empty lists") << with(with(good, "Arguments", QVariantList()), "UrlArguments",
                                         QVariantList())
                                 << 0 << 0 << QStringList();
    QTest::newRow("two lists") << with(with(good, "Arguments", QVariantList{1, 2}), "UrlArguments",
                                       QVariantList{3})
                               << 2 << 1 << QStringList();
    QTest::newRow("list of texts")
        << with(good, "Arguments", QStringList{pump}) << 1 << 0 << QStringList();
    const QString noArguments =
        text("No valid descriptionArguments (Can't convert to QVariantList) ") + empty;
    const QString noUrlArguments =
        text("No valid descriptionUrlArguments (Can't convert to QVariantList) ") + empty;
    QTest::newRow("no lists inside") << with(with(good, "Arguments", 5), "UrlArguments", pump) << 0
                                     << 0 << QStringList{noArguments, noUrlArguments};
    QTest::newRow("warned about before the keys")
        << QVariantMap{{text("UrlArguments"), QVariantMap()}} << 0 << 0
        << QStringList{noUrlArguments,
                       notFound("textSource", empty),
                       notFound("moduleName", empty),
                       notFound("ObjectName", empty),
                       notFound("InstanceName", empty),
                       notFound("url", empty)};
}

void tst_EventsDBusProviderBaseClass::readsTheListsBeforeTheKeys()
{
    QFETCH(QVariantMap, data);
    QFETCH(int, argumentCount);
    QFETCH(int, urlArgumentCount);
    QFETCH(QStringList, warnings);
    for (const QString& warning : warnings)
    {
        expect(warning, "convertDescriptionData");
    }
    const PumpEvents provider(m_texts);
    Definitions::TextSource textSource = Definitions::languageFile;
    QString module;
    QString object;
    QString instance;
    QString url;
    QVariantList arguments;
    QVariantList urlArguments;

    // A bad list does not make a dictionary bad.
    QCOMPARE(provider.convertDescriptionData(textSource, module, object, instance, url, arguments,
                                             urlArguments, data),
             data.contains(text("url")));

    QCOMPARE(arguments.size(), argumentCount);
    QCOMPARE(urlArguments.size(), urlArgumentCount);
}

void tst_EventsDBusProviderBaseClass::unpacksNothingThatDidNotComeFromTheBus_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::newRow("invalid") << QVariant();
    QTest::newRow("list of maps") << QVariant(QVariantList{QVariantMap{{pump, pump}}});
    QTest::newRow("text") << QVariant(pump);
    QTest::newRow("list of texts") << QVariant(QStringList{pump});
    QTest::newRow("empty container") << QVariant::fromValue(QDBusArgument());
}

void tst_EventsDBusProviderBaseClass::unpacksNothingThatDidNotComeFromTheBus()
{
    QFETCH(QVariant, value);
    QVariantList result{text("before")};
    PumpEvents(m_texts).convertArguments(result, value);
    QCOMPARE(result, QVariantList{text("before")});
}

void tst_EventsDBusProviderBaseClass::convertsArguments()
{
    const PumpEvents provider(m_texts);
    for (const char* const element : {"QVariant(int, 5)", "QVariant(QString, \"x\")"})
    {
        expect(text("No valid descriptionArgumentData (Can't convert to QVariantMap) "
                    "DescriptionArguments: ") +
                   text(element),
               "convertDescriptionArgumentData");
    }
    Arguments result{{text("before"), text("kept")}};

    provider.convertDescriptionArgumentData(
        result, {QVariantMap{{text("Placeholder"), text("%1")}, {text("Argument"), text("one")}}, 5,
                 QVariantMap(), text("x"), QVariantMap{{text("Argument"), text("two")}},
                 QVariantMap{{text("Placeholder"), text("%3")}}, QVariantMap{{text("other"), 1}},
                 QVariantMap{{text("Placeholder"), text("%1")}, {text("Argument"), 97.5}}});

    QStringList records;
    for (const auto& record : qAsConst(result))
    {
        records << record.placeholder + QLatin1Char('=') + record.argument;
    }
    QCOMPARE(records, (QStringList{text("before=kept"), text("%1=one"), text("=two"), text("%3="),
                                   text("="), text("%1=97.5")}));
}

void tst_EventsDBusProviderBaseClass::convertsUrlArguments()
{
    const PumpEvents provider(m_texts);
    expect(text("No valid descriptionUrlArgumentData (Can't convert to QVariantMap) List entry: "
                "QVariant(int, 5)"),
           "convertDescriptionUrlArgumentData");
    const QVariantMap name = dictionary(0, pump, pump, QString(), pumpName);
    const QVariantMap unknown = dictionary(0, pump, pump, text("Channel1"), text("Unknown"));
    UrlArguments result;

    provider.convertDescriptionUrlArgumentData(
        result,
        {with(name, "Placeholder", text("%1")), 5, name, with(unknown, "Placeholder", text("%2"))});

    QCOMPARE(result.size(), 3);
    QCOMPARE(result[0].placeholder, text("%1"));
    QCOMPARE(result[0].textObject, FakeTextManager::pumpTexts().value(pumpName));
    QCOMPARE(result[1].placeholder, QString());
    QCOMPARE(result[1].textObject, FakeTextManager::pumpTexts().value(pumpName));
    QCOMPARE(result[2].placeholder, text("%2"));
    QCOMPARE(result[2].textObject,
             (QVariantMap{{LanguageDefinitions::getSecondFallbackLanguageFilename(),
                           text("PumpControl/PumpControl/Channel1/Unknown")}}));
}

void tst_EventsDBusProviderBaseClass::dropsUrlArgumentsWithoutAUrl()
{
    const PumpEvents provider(m_texts);
    expect(notFound("url", tail(0, pump, pump, QString(), QString())), "convertDescriptionData");
    const QVariantMap good = with(goodDictionary(), "Placeholder", text("%1"));
    UrlArguments result;
    // Without a word, when the key is there.
    provider.convertDescriptionUrlArgumentData(
        result, {with(good, "url", QString()), without(good, "url")});
    QVERIFY(result.isEmpty());
}

void tst_EventsDBusProviderBaseClass::refusesTextsOfAnotherModule_data()
{
    QTest::addColumn<QString>("module");
    QTest::addColumn<int>("source");
    QTest::newRow("other module") << text("Valve") << 0;
    QTest::newRow("other letters") << text("pumpControl") << 0;
    QTest::newRow("configuration") << text("Valve") << 1;
    QTest::newRow("empty") << QString() << 7;
}

void tst_EventsDBusProviderBaseClass::refusesTextsOfAnotherModule()
{
    QFETCH(QString, module);
    QFETCH(int, source);
    const PumpEvents provider(m_texts, m_prefix);
    expect(text("descriptionModuleName not implemented. ") +
               tail(source, module, pump, text("c"), overTemperature),
           "getTextFromLanguageFileOrConfiguration");
    QVERIFY(provider
                .getTextFromLanguageFileOrConfiguration(Definitions::TextSource(source), module,
                                                        pump, text("c"), overTemperature)
                .isEmpty());
}

void tst_EventsDBusProviderBaseClass::findsTextsInLanguageFiles()
{
    const PumpEvents provider(m_texts);
    const auto find = [&](const QString& object, const QString& instance, const QString& url) {
        return provider.getTextFromLanguageFileOrConfiguration(Definitions::languageFile, pump,
                                                               object, instance, url);
    };
    QCOMPARE(find(pump, text("takes no part"), pumpName),
             FakeTextManager::pumpTexts().value(pumpName));
    // Without a word.
    QVERIFY(find(pump, QString(), text("Unknown")).isEmpty());
    for (int i = 0; i < 2; ++i)
    {
        expect(text("ObjectName not in textManagerDataList: \"Valve\""),
               "getTextFromLanguageFileOrConfiguration");
    }
    QVERIFY(find(text("Valve"), QString(), pumpName).isEmpty());
    QVERIFY(find(text("Valve"), QString(), text("Unknown")).isEmpty());
}

void tst_EventsDBusProviderBaseClass::findsTextsInConfiguration_data()
{
    QTest::addColumn<int>("source");
    QTest::addColumn<QString>("folder");
    QTest::newRow("configuration") << 1 << text("Sensors");
    QTest::newRow("7") << 7 << text("Sensors");
    QTest::newRow("-1") << -1 << text("Sensors");
    QTest::newRow("object name that is empty") << 1 << QString();
}

void tst_EventsDBusProviderBaseClass::findsTextsInConfiguration()
{
    QFETCH(int, source);
    QFETCH(QString, folder);
    QVERIFY(writeConfiguration(folder, text("Channel1"),
                               json("{'Limits':{'High':{'value':{'lang_de':'Zu hoch',"
                                    "'lang_en':'Too high'}},'Low':{'value':{}}}}")
                                   .toUtf8()));
    const PumpEvents provider(m_texts, m_prefix);
    const auto find = [&](const char* url) {
        return provider.getTextFromLanguageFileOrConfiguration(
            Definitions::TextSource(source), pump, folder, text("Channel1"), text(url));
    };
    QCOMPARE(find("Limits/High"), (QVariantMap{{text("lang_de"), text("Zu hoch")},
                                               {text("lang_en"), text("Too high")}}));
    // A map without entries is no fault, and no text.
    QVERIFY(find("Limits/Low").isEmpty());
}

void tst_EventsDBusProviderBaseClass::findsNoTextInConfiguration_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("instance");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isFileRefused");
    const QString folder = text("Sensors");
    const QString channel = text("Channel1");
    const QString nothing = text("QVariant(Invalid)");
    QTest::newRow("text in place of a map")
        << folder << channel << text("Name") << text("QVariant(QString, \"Pump\")") << false;
    QTest::newRow("unknown leaf") << folder << channel << text("Limits/Unknown") << nothing
                                  << false;
    QTest::newRow("empty path") << folder << channel << QString() << nothing << false;
    QTest::newRow("unknown instance")
        << folder << text("Channel9") << text("Name") << nothing << true;
    QTest::newRow("corrupt file") << folder << text("Corrupt") << text("Name") << nothing << true;
    QTest::newRow("empty instance") << folder << QString() << text("Name") << nothing << true;
    QTest::newRow("instance that leads elsewhere")
        << folder << text("../Sensors/Channel1") << text("Name") << nothing << true;
    QTest::newRow("folder that leads elsewhere")
        << text("../../../../Sensors") << channel << text("Name") << nothing << true;
}

void tst_EventsDBusProviderBaseClass::findsNoTextInConfiguration()
{
    QFETCH(QString, folder);
    QFETCH(QString, instance);
    QFETCH(QString, url);
    QFETCH(QString, value);
    QFETCH(bool, isFileRefused);
    QVERIFY(
        writeConfiguration(text("Sensors"), text("Channel1"), "{\"Name\":{\"value\":\"Pump\"}}"));
    QVERIFY(writeConfiguration(text("Sensors"), text("Corrupt"), "{\"Name\":"));
    const PumpEvents provider(m_texts, m_prefix);
    if (isFileRefused)
    {
        m_warnings.expectMatch(text(".*configuration.*"));
    }
    expect(text("Can't convert ConfigValue to QVariantMap. Result QVariant: ") + value +
               QLatin1Char(' ') + tail(1, pump, folder, instance, url),
           "getTextFromLanguageFileOrConfiguration");
    QVERIFY(provider
                .getTextFromLanguageFileOrConfiguration(Definitions::configuration, pump, folder,
                                                        instance, url)
                .isEmpty());
}

QTEST_GUILESS_MAIN(tst_EventsDBusProviderBaseClass)
#include "tst_EventsDBusProviderBaseClass.moc"
