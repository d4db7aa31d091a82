#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "TestSupport/PrivateMember.h"
#include "unit/EventProvider/ProviderTest.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

PRIVATE_MEMBER(connectorOf, EventlistHandlerDBusConnectorWrite Provider::*, &Provider::m_connector)

namespace
{

} // namespace

// What goes out is for the tests with a bus. Here every event that gets as far as the connector is
// refused there, which is seen.
class tst_EventsDBusProviderBaseClass : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_list = {{text("PumpControl"), &m_texts}};
        m_provider =
            std::make_unique<Provider>(text("PumpControl"), text("PumpControl"), m_list, QString());
        m_warnings.start();
    }
    void cleanup()
    {
        m_provider.reset();
        VERIFY_WARNINGS(m_warnings);
    }

    void addsNothingToWhatItsBaseOffersOnTheBus();
    void findsATextManagerByItsExactName_data();
    void findsATextManagerByItsExactName();
    void refersToTheListOfTheModule();
    void dropsAnEventOfItsOwnWithoutItsTextManager_data();
    void dropsAnEventOfItsOwnWithoutItsTextManager();
    void sendsAnEventOfItsOwn_data();
    void sendsAnEventOfItsOwn();
    void filesTheUrlOfAnEventOfItsOwnWithoutAText();
    void sendsAnEventWithADictionary();
    void sendsAnEventAlsoForADictionaryWithNothingInIt();
    void sendsAnEventAlsoWithoutTextManagers();
    void looksAtNoArgumentWhenTheTextIsNotFound();
    void takesPlainListsFromTheBusForEmptyOnes();
    void leavesAnInvalidListToTheConversion();
    void leavesTheDictionaryOfItsCallerAlone();

private:
    void expectSent() { expectRefusedCall(m_warnings, (*m_provider).*connectorOf()); }
    void logDictionary(const QVariantMap& dictionary)
    {
        m_provider->logEvent({text("0"), text("1"), text("icon")}, text("now"), text("Other"),
                             dictionary, {text("Error")}, QString(), QString(), QString(),
                             EventlistHandlerEnums::SourceHashType::noSourceHash);
    }
    void logInDBusFormat(const QVariantMap& dictionary)
    {
        m_provider->logEventWithDescriptionInDBusFormat({text("0"), text("1"), text("icon")},
                                                        text("now"), text("Other"), dictionary,
                                                        {text("Error")}, QString(), QString());
    }

    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    TextManagerList m_list;
    std::unique_ptr<Provider> m_provider;
    WarningRecorder m_warnings;
};

void tst_EventsDBusProviderBaseClass::addsNothingToWhatItsBaseOffersOnTheBus()
{
    const QMetaObject& metaObject = Provider::staticMetaObject;

    QCOMPARE(metaObject.className(), "EventsDBusProviderBaseClass");
    QCOMPARE(metaObject.superClass(), &DBusServiceProviderBaseClass::staticMetaObject);
    QCOMPARE(metaObject.superClass()->className(), "DBusServiceProviderBaseClass");
    for (const QMetaObject* const each : {&metaObject, metaObject.superClass()})
    {
        QCOMPARE(each->methodCount(), QObject::staticMetaObject.methodCount());
        QCOMPARE(each->propertyCount(), QObject::staticMetaObject.propertyCount());
        QCOMPARE(each->classInfoCount(), 0);
        QCOMPARE(each->enumeratorCount(), 0);
        QCOMPARE(each->constructorCount(), 0);
    }
    QCOMPARE(m_provider->getModuleName(), text("PumpControl"));
}

void tst_EventsDBusProviderBaseClass::findsATextManagerByItsExactName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("found");

    QTest::newRow("the first of two equal names") << text("PumpControl") << 0;
    QTest::newRow("the last") << text("Valve") << 2;
    QTest::newRow("an empty name") << QString() << 3;
    QTest::newRow("in other capitals") << text("pumpControl") << -1;
    QTest::newRow("unknown") << text("Other") << -1;
}

void tst_EventsDBusProviderBaseClass::findsATextManagerByItsExactName()
{
    QFETCH(QString, name);
    QFETCH(int, found);
    const FakeTextManager managers[4];
    m_list = {{text("PumpControl"), &managers[0]},
              {text("PumpControl"), &managers[1]},
              {text("Valve"), &managers[2]},
              {QString(), &managers[3]}};

    const TextManager* const expected = found < 0 ? nullptr : &managers[found];
    QCOMPARE(m_provider->getTextManager(name), expected);
}

void tst_EventsDBusProviderBaseClass::refersToTheListOfTheModule()
{
    m_list.clear();
    QVERIFY(m_provider->getTextManager(text("PumpControl")) == nullptr);

    m_list.append({text("PumpControl"), &m_texts});
    QCOMPARE(m_provider->getTextManager(text("PumpControl")),
             static_cast<const TextManager*>(&m_texts));
}

void tst_EventsDBusProviderBaseClass::dropsAnEventOfItsOwnWithoutItsTextManager_data()
{
    QTest::addColumn<bool>("isTyped");

    QTest::newRow("attributes") << false;
    QTest::newRow("event type and state") << true;
}

void tst_EventsDBusProviderBaseClass::dropsAnEventOfItsOwnWithoutItsTextManager()
{
    QFETCH(bool, isTyped);
    m_list = {{text("pumpControl"), &m_texts}};
    const int before = m_texts.lookUpCount();
    m_warnings.expect(text(R"(ObjectName not in textManagerDataList: "PumpControl")"),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::logEvent"));

    if (isTyped)
    {
        m_provider->logEvent(
            EventlistHandlerEnums::EventType::alarm, EventlistHandlerEnums::State::active,
            text("icon"), text("now"), text("PumpControl"), text("PumpControl/PumpName3"), {}, {},
            QString(), QString(), QString(), EventlistHandlerEnums::SourceHashType::noSourceHash);
    }
    else
    {
        m_provider->logEvent({text("0")}, text("now"), text("PumpControl"),
                             text("PumpControl/PumpName3"), {}, {}, QString(), QString(), QString(),
                             EventlistHandlerEnums::SourceHashType::noSourceHash);
    }

    QCOMPARE(m_texts.lookUpCount(), before);
    QCOMPARE(((*m_provider).*connectorOf()).getRefusedCallCount(), quint64(0));
}

void tst_EventsDBusProviderBaseClass::sendsAnEventOfItsOwn_data()
{
    dropsAnEventOfItsOwnWithoutItsTextManager_data();
}

void tst_EventsDBusProviderBaseClass::sendsAnEventOfItsOwn()
{
    QFETCH(bool, isTyped);
    const int before = m_texts.lookUpCount();
    expectSent();

    if (isTyped)
    {
        m_provider->logEvent(
            EventlistHandlerEnums::EventType::alarm, EventlistHandlerEnums::State::active,
            text("icon"), text("now"), text("PumpControl"), text("PumpControl/PumpName3"), {}, {},
            QString(), QString(), QString(), EventlistHandlerEnums::SourceHashType::noSourceHash);
    }
    else
    {
        m_provider->logEvent({text("0")}, text("now"), text("PumpControl"),
                             text("PumpControl/PumpName3"), {}, {}, QString(), QString(), QString(),
                             EventlistHandlerEnums::SourceHashType::noSourceHash);
    }

    QCOMPARE(m_texts.lookUpCount() - before, 1);
}

void tst_EventsDBusProviderBaseClass::filesTheUrlOfAnEventOfItsOwnWithoutAText()
{
    m_warnings.expect(text(R"(No description data: "PumpControl/Unknown")"),
                      text("EventlistHandlerConvenienceFunctions"));
    expectSent();

    m_provider->logEvent({text("0")}, text("now"), text("PumpControl"), text("PumpControl/Unknown"),
                         {}, {}, QString(), QString(), QString(),
                         EventlistHandlerEnums::SourceHashType::noSourceHash);
}

void tst_EventsDBusProviderBaseClass::sendsAnEventWithADictionary()
{
    const int before = m_texts.lookUpCount();
    expectSent();

    logDictionary(
        changed(pumpDictionary(),
                {{text("Arguments"), QVariantList{literalEntry(text("%2"), text("97.5"))}},
                 {text("UrlArguments"), QVariantList{urlEntry(text("%1"))}}}));

    QCOMPARE(m_texts.lookUpCount() - before, 2);
}

void tst_EventsDBusProviderBaseClass::sendsAnEventAlsoForADictionaryWithNothingInIt()
{
    const QString tail = text(R"( textSource:: 0 moduleName: "" objectName: "" )"
                              R"(descriptionInstanceName: "" descriptionUrl: "")");
    for (const char* const key : {"textSource", "moduleName", "ObjectName", "InstanceName", "url"})
    {
        m_warnings.expect(
            QString(text("Key for description not found: ") + quoted(text(key)) + tail),
            text("EventsDBusProviderBaseClass"),
            text("EventsDBusProviderBaseClass::convertDescriptionData"));
    }
    expectSent();

    logDictionary(QVariantMap());
}

void tst_EventsDBusProviderBaseClass::sendsAnEventAlsoWithoutTextManagers()
{
    m_list.clear();
    m_warnings.expect(text(R"(ObjectName not in textManagerDataList: "PumpControl")"),
                      text("EventsDBusProviderBaseClass"),
                      text("EventsDBusProviderBaseClass::getTextFromLanguageFileOrConfiguration"));
    expectSent();

    logDictionary(pumpDictionary());
}

void tst_EventsDBusProviderBaseClass::looksAtNoArgumentWhenTheTextIsNotFound()
{
    const int before = m_texts.lookUpCount();
    expectSent();

    // Both lists would warn.
    logDictionary(changed(pumpDictionary(), {{text("url"), text("PumpControl/OverTemperatur")},
                                             {text("Arguments"), QVariantList{7}},
                                             {text("UrlArguments"), QVariantList{7}}}));

    QCOMPARE(m_texts.lookUpCount() - before, 1);
}

void tst_EventsDBusProviderBaseClass::takesPlainListsFromTheBusForEmptyOnes()
{
    const int before = m_texts.lookUpCount();
    expectSent();

    // A plain list would have its entries converted: a text to look up, and warnings.
    logInDBusFormat(
        changed(pumpDictionary(), {{text("Arguments"), QVariantList{7}},
                                   {text("UrlArguments"), QVariantList{urlEntry(text("%1")), 7}}}));

    QCOMPARE(m_texts.lookUpCount() - before, 1);
}

void tst_EventsDBusProviderBaseClass::leavesAnInvalidListToTheConversion()
{
    QVariantMap dictionary = pumpDictionary();
    dictionary.insert(text("Arguments"), QVariant());
    m_warnings.expect(text("No valid descriptionArguments (Can't convert to QVariantList) "
                           "textSource:: 0 moduleName: \"\" objectName: \"\" "
                           "descriptionInstanceName: \"\" descriptionUrl: \"\""));
    expectSent();

    logInDBusFormat(dictionary);
}

void tst_EventsDBusProviderBaseClass::leavesTheDictionaryOfItsCallerAlone()
{
    const QVariantMap dictionary = changed(
        pumpDictionary(), {{text("Arguments"), QVariantList{literalEntry(text("%2"), text("x"))}}});
    const QVariantMap copy = dictionary;
    expectSent();

    logInDBusFormat(dictionary);

    QCOMPARE(dictionary, copy);
}

QTEST_GUILESS_MAIN(tst_EventsDBusProviderBaseClass)
#include "tst_EventsDBusProviderBaseClass.moc"
