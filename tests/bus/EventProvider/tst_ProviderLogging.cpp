#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "bus/EventProvider/ProviderTest.h"
#include "bus/EventProvider/PumpEvents.h"
#include "bus/WorkedExample.h"

#include "Platform/LanguageDefinitions.h"

#include <QDBusArgument>

using Provider = EventsDBusProviderBaseClass;
using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;
using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;

/// What the entries of a provider send to the service.
class tst_ProviderLogging : public ProviderTest
{
    Q_OBJECT
private Q_SLOTS:
    void logsADictionaryOfPlainValues();
    void logsAConfiguredTextWithArguments();
    void laterUrlArgumentsReplaceLiteralOnes();
    void logsTheJoinedKeyWithoutArgumentsWhenThereIsNoText();
    void logsAnEmptyDictionary();
    void plainListsAreNoListsFromTheBus();
    void containersFromTheBusAreNoPlainLists();
    void logsWithAUrlOfItsOwnTexts();
    void logsTheBareUrlWhenItsOwnTextsDoNotKnowIt();
    void dropsAnEventWhenItsOwnTextsAreMissing();
    void logsTypeStateAndIconByThemselves();
    void sendsSourceHashes();
    void losesTheEventWithoutService();
};

void tst_ProviderLogging::logsADictionaryOfPlainValues()
{
    PumpEvents provider(m_texts);
    const QVariantMap name =
        with(dictionary(0, pump, pump, QString(), pumpName), "Placeholder", text("%1"));
    const QVariantMap value{{text("Placeholder"), text("%2")}, {text("Argument"), text("97.5")}};

    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, WorkedExample::time(), pump,
        with(with(goodDictionary(), "Arguments", QVariantList{value}), "UrlArguments",
             QVariantList{name}),
        QStringList{text("Error"), text("Firmware")}, QString(), WorkedExample::alarmId(),
        QString(), SourceHashType::noSourceHash);

    const QJsonArray arguments = onlyEvent().arguments;
    QCOMPARE(arguments,
             (QJsonArray{QJsonArray::fromStringList(attributes), WorkedExample::time(), pump,
                         WorkedExample::description(), QJsonArray{text("Error"), text("Firmware")},
                         QString(), WorkedExample::additionalData(), WorkedExample::alarmId()}));
}

void tst_ProviderLogging::logsAConfiguredTextWithArguments()
{
    QVERIFY(writeConfiguration(text("Sensors"), text("Channel1"),
                               "{\"High\":{\"value\":{\"lang_en\":\"%1 is high: %2\"}},"
                               "\"Name\":{\"value\":{\"lang_en\":\"Pressure\"}}}"));
    PumpEvents provider(m_texts, m_prefix);
    const QVariantMap high = dictionary(1, pump, text("Sensors"), text("Channel1"), text("High"));
    const QVariantMap name =
        with(dictionary(1, pump, text("Sensors"), text("Channel1"), text("Name")), "Placeholder",
             text("%1"));
    const QVariantMap value{{text("Placeholder"), text("%2")}, {text("Argument"), text("8 bar")}};

    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, QString(), pump,
        with(with(high, "Arguments", QVariantList{value}), "UrlArguments", QVariantList{name}), {},
        QString(), QString(), QString(), SourceHashType::noSourceHash);

    QCOMPARE(onlyEvent().arguments[3].toString(), json("{'lang_en':'Pressure is high: 8 bar'}"));
}

void tst_ProviderLogging::laterUrlArgumentsReplaceLiteralOnes()
{
    PumpEvents provider(m_texts);
    const QVariantMap name =
        with(dictionary(0, pump, pump, QString(), pumpName), "Placeholder", text("%1"));
    const auto literal = [](const char* placeholder, const char* argument) {
        return QVariantMap{{text("Placeholder"), text(placeholder)},
                           {text("Argument"), text(argument)}};
    };
    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, QString(), pump,
        with(with(goodDictionary(), "Arguments",
                  QVariantList{literal("%1", "lost"), literal("%2", "lost"), literal("%2", "5")}),
             "UrlArguments", QVariantList{name}),
        {}, QString(), QString(), QString(), SourceHashType::noSourceHash);
    QCOMPARE(onlyEvent().arguments[3].toString(),
             json("{'lang_de':'Übertemperatur an Pumpe 3, Wert 5',"
                  "'lang_en':'Overtemperature at pump 3, value 5'}"));
}

void tst_ProviderLogging::logsTheJoinedKeyWithoutArgumentsWhenThereIsNoText()
{
    PumpEvents provider(m_texts);
    const QVariantMap value{{text("Placeholder"), text("%2")}, {text("Argument"), text("97.5")}};
    const QVariantMap misspelt =
        with(with(goodDictionary(), "url", text("PumpControl/OverTemperatur")), "Arguments",
             QVariantList{value});
    provider.EventsDBusProviderBaseClass::logEvent(attributes, WorkedExample::time(), pump,
                                                   misspelt, {}, QString(), QString(), QString(),
                                                   SourceHashType::noSourceHash);
    const QJsonArray arguments = onlyEvent().arguments;
    const QString language = LanguageDefinitions::getSecondFallbackLanguageFilename();
    QCOMPARE(arguments[3].toString(),
             json("{'%1':'PumpControl/PumpControl/PumpControl/OverTemperatur'}").arg(language));
    QCOMPARE(arguments[6].toString(),
             json("{'EventId':'PumpControl/OverTemperatur','MetaData':'{\\'Arguments\\':{},"
                  "\\'DescriptionScheme\\':{\\'%1\\':"
                  "\\'PumpControl/PumpControl/PumpControl/OverTemperatur\\'}}',"
                  "'SourceHashType':0,'SourceHashes':''}")
                 .arg(language));
}

void tst_ProviderLogging::logsAnEmptyDictionary()
{
    PumpEvents provider(m_texts);
    const QString empty = tail(0, QString(), QString(), QString(), QString());
    for (const char* const key : {"textSource", "moduleName", "ObjectName", "InstanceName", "url"})
    {
        expect(notFound(key, empty), "convertDescriptionData");
    }
    provider.logEvent({}, QString(), QString(), QVariantMap(), {}, QString(), QString());
    const QJsonArray arguments = onlyEvent().arguments;
    const QString language = LanguageDefinitions::getSecondFallbackLanguageFilename();
    QCOMPARE(arguments, (QJsonArray{QJsonArray(), QString(), QString(),
                                    json("{'%1':'/'}").arg(language), QJsonArray(), QString(),
                                    json("{'EventId':'','MetaData':'{\\'Arguments\\':{},"
                                         "\\'DescriptionScheme\\':{\\'%1\\':\\'/\\'}}',"
                                         "'SourceHashType':0,'SourceHashes':''}")
                                        .arg(language),
                                    QString()}));
}

void tst_ProviderLogging::plainListsAreNoListsFromTheBus()
{
    PumpEvents provider(m_texts);
    const QVariantMap value{{text("Placeholder"), text("%2")}, {text("Argument"), text("97.5")}};
    provider.logEvent(attributes, QString(), pump,
                      with(goodDictionary(), "Arguments", QVariantList{value}), {}, QString(),
                      QString());
    QCOMPARE(onlyEvent().arguments[3].toString(),
             json("{'lang_de':'Übertemperatur an %1, Wert %2',"
                  "'lang_en':'Overtemperature at %1, value %2'}"));
}

void tst_ProviderLogging::containersFromTheBusAreNoPlainLists()
{
    PumpEvents provider(m_texts);
    expect(text("No valid descriptionArguments (Can't convert to QVariantList) ") +
               tail(0, QString(), QString(), QString(), QString()),
           "convertDescriptionData");
    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, QString(), pump,
        with(goodDictionary(), "Arguments", QVariant::fromValue(QDBusArgument())), {}, QString(),
        QString(), QString(), SourceHashType::noSourceHash);
    QCOMPARE(onlyEvent().arguments[3].toString(),
             json("{'lang_de':'Übertemperatur an %1, Wert %2',"
                  "'lang_en':'Overtemperature at %1, value %2'}"));
}

void tst_ProviderLogging::logsWithAUrlOfItsOwnTexts()
{
    PumpEvents provider(m_texts);
    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, WorkedExample::time(), text("Watcher"), overTemperature,
        Arguments{{text("%1"), text("A")}, {text("%2"), text("B")}}, {text("Error")}, text("anna"),
        text("the id"), QString(), SourceHashType::noSourceHash);
    const QJsonArray arguments = onlyEvent().arguments;
    QCOMPARE(arguments[0].toArray(), QJsonArray::fromStringList(attributes));
    QCOMPARE(arguments[1].toString(), WorkedExample::time());
    QCOMPARE(arguments[2].toString(), text("Watcher"));
    QCOMPARE(arguments[3].toString(), json("{'lang_de':'Übertemperatur an A, Wert B',"
                                           "'lang_en':'Overtemperature at A, value B'}"));
    QCOMPARE(arguments[4].toArray(), QJsonArray{text("Error")});
    QCOMPARE(arguments[5].toString(), text("anna"));
    QVERIFY(arguments[6].toString().startsWith(json("{'EventId':'PumpControl/OverTemperature',")));
    QCOMPARE(arguments[7].toString(), text("the id"));
}

void tst_ProviderLogging::logsTheBareUrlWhenItsOwnTextsDoNotKnowIt()
{
    PumpEvents provider(m_texts);
    m_warnings.expect(text("No description data: \"PumpControl/Unknown\""),
                      text("EventlistHandlerConvenienceFunctions"));
    provider.EventsDBusProviderBaseClass::logEvent(
        attributes, QString(), pump, text("PumpControl/Unknown"), Arguments(), {}, QString(),
        QString(), QString(), SourceHashType::noSourceHash);
    QCOMPARE(onlyEvent().arguments[3].toString(),
             json("{'%1':'PumpControl/Unknown'}")
                 .arg(LanguageDefinitions::getSecondFallbackLanguageFilename()));
}

void tst_ProviderLogging::dropsAnEventWhenItsOwnTextsAreMissing()
{
    const QVector<Provider::TextManagerData> none;
    PumpEvents provider(none);
    expect(text("ObjectName not in textManagerDataList: \"PumpControl\""), "logEvent");
    provider.EventsDBusProviderBaseClass::logEvent(attributes, QString(), pump, overTemperature,
                                                   Arguments(), {}, QString(), QString(), QString(),
                                                   SourceHashType::noSourceHash);
    QCOMPARE(m_service.received().size(), 0);

    // With a dictionary the same provider logs all the same.
    expect(text("ObjectName not in textManagerDataList: \"PumpControl\""),
           "getTextFromLanguageFileOrConfiguration");
    provider.logEvent(attributes, QString(), pump, goodDictionary(), {}, QString(), QString());
    QCOMPARE(onlyEvent().arguments[3].toString(),
             json("{'%1':'PumpControl/PumpControl/PumpControl/OverTemperature'}")
                 .arg(LanguageDefinitions::getSecondFallbackLanguageFilename()));
}

void tst_ProviderLogging::logsTypeStateAndIconByThemselves()
{
    PumpEvents provider(m_texts);
    provider.EventsDBusProviderBaseClass::logEvent(
        EventType::otherEvents, State::neutral, text("Icon"), text("the time"), pump, pumpName,
        Arguments(), {}, QString(), QString(), QString(), SourceHashType::noSourceHash);
    const QJsonArray arguments = onlyEvent().arguments;
    QCOMPARE(arguments[0].toArray(), (QJsonArray{text("3"), text("0"), text("Icon")}));
    QCOMPARE(arguments[1].toString(), text("the time"));
}

void tst_ProviderLogging::sendsSourceHashes()
{
    PumpEvents provider(m_texts);
    provider.EventsDBusProviderBaseClass::logEvent(attributes, QString(), pump, goodDictionary(),
                                                   {}, QString(), QString(), text("00ff"),
                                                   SourceHashType(3));
    QVERIFY(onlyEvent().arguments[6].toString().endsWith(
        json(",'SourceHashType':3,'SourceHashes':'00ff'}")));
}

void tst_ProviderLogging::losesTheEventWithoutService()
{
    PumpEvents provider(m_texts);
    QVERIFY(takeServiceAway());
    expectRefusedCall(EventlistHandlerDBusConnectorWrite(false));
    provider.logEvent(attributes, QString(), pump, goodDictionary(), {}, QString(), QString());
}

QTEST_GUILESS_MAIN(tst_ProviderLogging)
#include "tst_ProviderLogging.moc"
