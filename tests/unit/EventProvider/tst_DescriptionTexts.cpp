#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "unit/EventProvider/ProviderTest.h"

#include "Platform/PropertyManagerConst.h"

#include <QDir>
#include <QFile>
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

} // namespace

class tst_DescriptionTexts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void init()
    {
        m_list = {{text("Texts"), &m_texts}};
        m_provider = std::make_unique<Provider>(text("PumpControl"), text("Texts"), m_list,
                                                text("DescriptionTexts/"));
        m_warnings.start();
    }
    void cleanup()
    {
        m_provider.reset();
        VERIFY_WARNINGS(m_warnings);
    }

    void joinsTheKeyThatWasLookedFor_data();
    void joinsTheKeyThatWasLookedFor();
    void refusesTheTextsOfAnotherModule_data();
    void refusesTheTextsOfAnotherModule();
    void findsATextInALanguageFile_data();
    void findsATextInALanguageFile();
    void warnsAboutAnObjectWithoutTexts();
    void findsATextInTheConfiguration_data();
    void findsATextInTheConfiguration();
    void warnsAboutALeafThatHoldsNoText_data();
    void warnsAboutALeafThatHoldsNoText();
    void findsNothingWithoutTheInstance_data();
    void findsNothingWithoutTheInstance();
    void joinsPrefixAndObjectNameWithNothingBetween_data();
    void joinsPrefixAndObjectNameWithNothingBetween();
    void readsTheConfigurationAnewEachTime();

private:
    void writeConfiguration(const QByteArray& json,
                            const QString& instance = QStringLiteral("Channel1"));
    QVariantMap textOf(int textSource, const char* moduleName, const char* objectName,
                       const char* instanceName, const char* url)
    {
        return m_provider->getTextFromLanguageFileOrConfiguration(
            TextSource(textSource), text(moduleName), text(objectName), text(instanceName),
            text(url));
    }

    const QString m_folder =
        PropertyManagerConst::getConfigurationFolderPath(QStringLiteral("DescriptionTexts/Pump/"));
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    TextManagerList m_list;
    std::unique_ptr<Provider> m_provider;
    WarningRecorder m_warnings;
};

void tst_DescriptionTexts::initTestCase()
{
    QVERIFY(QDir().mkpath(m_folder));
    writeConfiguration(
        R"({"Limit":{"value":{"lang_de":"Grenzwert","lang_en":"limit"}},"Empty":{"value":{}},
            "String":{"value":"limit"},"Number":{"value":7},"NoValue":{},
            "Limits":{"High":{"value":{"lang_en":"too high"}},"Low":{"value":{}}}})");
    writeConfiguration(R"({"Limit":)", text("Corrupt"));
}

void tst_DescriptionTexts::cleanupTestCase()
{
    QDir folder(m_folder);
    QVERIFY(folder.cdUp());
    QVERIFY(folder.removeRecursively());
}

void tst_DescriptionTexts::writeConfiguration(const QByteArray& json, const QString& instance)
{
    QFile file(m_folder + instance + QStringLiteral(".json"));
    QVERIFY(file.open(QFile::WriteOnly));
    QCOMPARE(file.write(json), qint64(json.size()));
}

void tst_DescriptionTexts::joinsTheKeyThatWasLookedFor_data()
{
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QString>("key");

    const QString pump = text("PumpControl");
    const QString sensors = text("Sensors");
    const QString channel = text("Channel1");
    const QString limit = text("Texts/Limit");
    const QString none;
    QTest::newRow("all") << QStringList({pump, sensors, channel, limit})
                         << text("PumpControl/Sensors/Channel1/Texts/Limit");
    QTest::newRow("no instance") << QStringList({pump, sensors, none, limit})
                                 << text("PumpControl/Sensors/Texts/Limit");
    QTest::newRow("no object") << QStringList({pump, none, channel, limit})
                               << text("PumpControl/Channel1/Texts/Limit");
    QTest::newRow("url alone") << QStringList({none, none, none, limit}) << text("/Texts/Limit");
    QTest::newRow("module alone") << QStringList({pump, none, none, none}) << text("PumpControl/");
    QTest::newRow("nothing") << QStringList({none, none, none, none}) << text("/");
    QTest::newRow("no module") << QStringList({none, sensors, channel, limit})
                               << text("/Sensors/Channel1/Texts/Limit");
    QTest::newRow("the misspelt url of the worked example")
        << QStringList({pump, pump, none, text("PumpControl/OverTemperatur")})
        << text("PumpControl/PumpControl/PumpControl/OverTemperatur");
}

void tst_DescriptionTexts::joinsTheKeyThatWasLookedFor()
{
    QFETCH(QStringList, words);
    QFETCH(QString, key);

    QCOMPARE(m_provider->generateUrl(words.at(0), words.at(1), words.at(2), words.at(3)), key);
}

void tst_DescriptionTexts::refusesTheTextsOfAnotherModule_data()
{
    QTest::addColumn<QByteArray>("moduleName");
    QTest::addColumn<int>("textSource");

    for (const int textSource : {0, 1, 7})
    {
        for (const char* const moduleName : {"pumpcontrol", "Other", "", "PumpControl "})
        {
            QTest::addRow("'%s' from %d", moduleName, textSource)
                << QByteArray(moduleName) << textSource;
        }
    }
}

void tst_DescriptionTexts::refusesTheTextsOfAnotherModule()
{
    QFETCH(QByteArray, moduleName);
    QFETCH(int, textSource);
    const int before = m_texts.lookUpCount();
    m_warnings.expect(QString(text("descriptionModuleName not implemented.") +
                              tail(textSource, moduleName, "Texts", "i", "PumpControl/PumpName3")),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::getTextFromLanguageFileOrConfiguration"));

    QCOMPARE(textOf(textSource, moduleName, "Texts", "i", "PumpControl/PumpName3"), QVariantMap());

    QCOMPARE(m_texts.lookUpCount(), before);
}

void tst_DescriptionTexts::findsATextInALanguageFile_data()
{
    QTest::addColumn<QByteArray>("instanceName");
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QVariantMap>("texts");

    const QVariantMap pump{{text("lang_de"), text("Pumpe 3")}, {text("lang_en"), text("pump 3")}};
    QTest::newRow("known") << QByteArray() << QByteArray("PumpControl/PumpName3") << pump;
    QTest::newRow("whatever the instance")
        << QByteArray("../nowhere") << QByteArray("PumpControl/PumpName3") << pump;
    QTest::newRow("unknown, without a warning")
        << QByteArray() << QByteArray("PumpControl/Unknown") << QVariantMap();
    QTest::newRow("an empty url") << QByteArray() << QByteArray() << QVariantMap();
}

void tst_DescriptionTexts::findsATextInALanguageFile()
{
    QFETCH(QByteArray, instanceName);
    QFETCH(QByteArray, url);
    QFETCH(QVariantMap, texts);

    QCOMPARE(textOf(0, "PumpControl", "Texts", instanceName, url), texts);
}

void tst_DescriptionTexts::warnsAboutAnObjectWithoutTexts()
{
    for (const char* const url : {"PumpControl/PumpName3", "PumpControl/Unknown"})
    {
        // Without the tail of the others.
        m_warnings.expect(
            text(R"(ObjectName not in textManagerDataList: "texts")"),
            text("EventsDBusProviderBaseClass"),
            text("EventsDBusProviderBaseClass::getTextFromLanguageFileOrConfiguration"));

        QCOMPARE(textOf(0, "PumpControl", "texts", "", url), QVariantMap());
    }
}

void tst_DescriptionTexts::findsATextInTheConfiguration_data()
{
    QTest::addColumn<int>("textSource");
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QVariantMap>("texts");

    const QVariantMap limit{{text("lang_de"), text("Grenzwert")}, {text("lang_en"), text("limit")}};
    QTest::newRow("1") << 1 << QByteArray("Limit") << limit;
    QTest::newRow("7") << 7 << QByteArray("Limit") << limit;
    QTest::newRow("-1") << -1 << QByteArray("Limit") << limit;
    QTest::newRow("a leaf further down")
        << 1 << QByteArray("Limits/High") << QVariantMap{{text("lang_en"), text("too high")}};
    QTest::newRow("a map without entries further down")
        << 1 << QByteArray("Limits/Low") << QVariantMap();
    QTest::newRow("a map without entries, without a warning")
        << 1 << QByteArray("Empty") << QVariantMap();
}

void tst_DescriptionTexts::findsATextInTheConfiguration()
{
    QFETCH(int, textSource);
    QFETCH(QByteArray, url);
    QFETCH(QVariantMap, texts);

    QCOMPARE(textOf(textSource, "PumpControl", "Pump", "Channel1", url), texts);
}

void tst_DescriptionTexts::warnsAboutALeafThatHoldsNoText_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArray>("value");

    QTest::newRow("a string") << QByteArray("String") << QByteArray("QVariant(QString, \"limit\")");
    QTest::newRow("a number") << QByteArray("Number") << QByteArray("QVariant(qlonglong, 7)");
    QTest::newRow("no value") << QByteArray("NoValue") << QByteArray("QVariant(Invalid)");
    QTest::newRow("no leaf") << QByteArray("Unknown") << QByteArray("QVariant(Invalid)");
    QTest::newRow("no leaf further down")
        << QByteArray("Limits/Unknown") << QByteArray("QVariant(Invalid)");
    QTest::newRow("an empty path") << QByteArray("") << QByteArray("QVariant(Invalid)");
}

void tst_DescriptionTexts::warnsAboutALeafThatHoldsNoText()
{
    QFETCH(QByteArray, url);
    QFETCH(QByteArray, value);
    m_warnings.expect(QString(text("Can't convert ConfigValue to QVariantMap. Result QVariant: ") +
                              text(value) + tail(3, "PumpControl", "Pump", "Channel1", url)),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::getTextFromLanguageFileOrConfiguration"));

    QCOMPARE(textOf(3, "PumpControl", "Pump", "Channel1", url), QVariantMap());
}

void tst_DescriptionTexts::findsNothingWithoutTheInstance_data()
{
    QTest::addColumn<QByteArray>("objectName");
    QTest::addColumn<QByteArray>("instanceName");
    QTest::addColumn<QString>("platformWarning");

    const QByteArray pump("Pump");
    const QString unread = text("Can't read configuration description .*");
    QTest::newRow("unknown") << pump << QByteArray("Channel2") << unread;
    QTest::newRow("empty") << pump << QByteArray("") << unread;
    QTest::newRow("corrupt file") << pump << QByteArray("Corrupt") << unread;
    QTest::newRow("leads elsewhere") << pump << QByteArray("../Pump/Channel1") << unread;
    QTest::newRow("unknown folder") << QByteArray("Valve") << QByteArray("Channel1") << unread;
    QTest::newRow("folder leads elsewhere")
        << QByteArray("../../../../Pump") << QByteArray("Channel1") << text(".*configuration.*");
}

void tst_DescriptionTexts::findsNothingWithoutTheInstance()
{
    QFETCH(QByteArray, objectName);
    QFETCH(QByteArray, instanceName);
    QFETCH(QString, platformWarning);
    // The first word is the platform's, the second ours.
    m_warnings.expectMatch(platformWarning)
        .expect(QString(text("Can't convert ConfigValue to QVariantMap. "
                             "Result QVariant: QVariant(Invalid)") +
                        tail(1, "PumpControl", objectName, instanceName, "Limit")),
                text("EventsDBusProviderBaseClass"));

    QCOMPARE(textOf(1, "PumpControl", objectName, instanceName, "Limit"), QVariantMap());
}

void tst_DescriptionTexts::joinsPrefixAndObjectNameWithNothingBetween_data()
{
    QTest::addColumn<QString>("prefix");
    QTest::addColumn<QByteArray>("objectName");

    QTest::newRow("a prefix that is a folder") << text("DescriptionTexts/") << QByteArray("Pump");
    QTest::newRow("a prefix in the middle of a word")
        << text("DescriptionTexts/Pu") << QByteArray("mp");
    QTest::newRow("no object name") << text("DescriptionTexts/Pump") << QByteArray("");
    QTest::newRow("no prefix") << QString() << QByteArray("DescriptionTexts/Pump");
}

void tst_DescriptionTexts::joinsPrefixAndObjectNameWithNothingBetween()
{
    QFETCH(QString, prefix);
    QFETCH(QByteArray, objectName);
    m_provider = std::make_unique<Provider>(text("PumpControl"), text("Texts"), m_list, prefix);

    QCOMPARE(textOf(1, "PumpControl", objectName, "Channel1", "Limit").value(text("lang_en")),
             QVariant(text("limit")));
}

void tst_DescriptionTexts::readsTheConfigurationAnewEachTime()
{
    QVERIFY(!textOf(1, "PumpControl", "Pump", "Channel1", "Limit").isEmpty());

    writeConfiguration(R"({"Limit":{"value":{"lang_en":"another"}}})");

    QCOMPARE(textOf(1, "PumpControl", "Pump", "Channel1", "Limit"),
             QVariantMap({{text("lang_en"), text("another")}}));
}

QTEST_GUILESS_MAIN(tst_DescriptionTexts)
#include "tst_DescriptionTexts.moc"
