#include "EventHandlers/EventHandlerBaseClass.h"

#include "TestSupport/PrivateMember.h"
#include "unit/EventHandlers/ProducerTest.h"

#include "Platform/RecorderUrlHashHandling.h"

#include <QTest>

#include <memory>
#include <type_traits>

using Base = EventHandlerBaseClass;

PRIVATE_MEMBER(keywordsOf, QStringList Base::*, &Base::m_keywords)
PRIVATE_MEMBER(descriptionOf, QString Base::*, &Base::m_description)
PRIVATE_MEMBER(hashesOf, QString Base::*, &Base::m_sourceHashes)
PRIVATE_MEMBER(currentStateOf, bool Base::*, &Base::m_currentState)
PRIVATE_MEMBER(activeIconOf, QString Base::*, &Base::m_iconActive)
PRIVATE_MEMBER(inactiveIconOf, QString Base::*, &Base::m_iconInactive)
PRIVATE_MEMBER(neutralIconOf, QString Base::*, &Base::m_iconNeutral)

static_assert(!std::is_copy_constructible<Base>::value && !std::is_copy_assignable<Base>::value,
              "a producer is not copied");

namespace
{

QString hashOf(const char* tag)
{
    return QString::fromLatin1(RecorderUrlHashHandling::createUrlHash(tag).toHex());
}

} // namespace

class tst_EventHandlerBaseClass : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        giveTexts(m_texts);
        m_producer = std::make_unique<Base>(text("PumpControl"), m_texts, text("PumpControl/Door"),
                                            QStringList(text("Error")));
        m_producer->setEventToFile(QString());
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void hasNoOperationsForOthersToCallByName();
    void beginsOffWithoutIconsAndTags();
    void addsTheKeywordOfTheFirmware_data();
    void addsTheKeywordOfTheFirmware();
    void addsAKeywordOnce_data();
    void addsAKeywordOnce();

    void joinsTheHashesOfItsTags();
    void hashesTheUtf8OfATag();
    void changesNothingForATagThatItHas();
    void takesTheTypeOfTheLastNewTag();
    void removesATagAndKeepsTheType();
    void removesOnlyATagOfTheSameCapitals();
    void removesAllTagsAndKeepsTheType();
    void carriesHashesAndTypeInItsEvents();
    void computesTheHashesOnlyWhenTheTagsChange();

    void replacesTheIconOfAState_data();
    void replacesTheIconOfAState();
    void refusesAnIconForAStateThatIsNone();
    void logsAStateThatIsNoneWithoutAnIcon();
    void picksTheIconByState_data();
    void picksTheIconByState();

    void logsTheDescriptionWithoutArguments();
    void logsTheWorkedExample();
    void filesTheUrlAsTextWhenItHasNone();
    void logsAnotherDescriptionForOneEvent();
    void changesItsDescriptionFromTheNextEventOn();
    void carriesTypeUserAndAlarmId();
    void looksOneTextUpForAnEvent();

    void logsTheChangesOfTheConditionOnly();
    void movesItsStateAlsoWhenTheEventIsLost();
    void keepsItsStateWhenItLogsByItself();
    void logsNothingWhenItIsDestroyedWhileOn();
    void takesItsDescriptionFromALeafAndReturnsToTheTextManager();

private:
    void logDoor(State state = State::neutral)
    {
        m_producer->logEvent(EventType::otherEvents, state, noArguments(), QString(), QString());
    }
    void changeState(bool state)
    {
        m_producer->changeState(state, EventType::fault, noArguments(), text("id"));
    }

    SpoolFolder m_spool;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    std::unique_ptr<Base> m_producer;
    WarningRecorder m_warnings;
};

void tst_EventHandlerBaseClass::hasNoOperationsForOthersToCallByName()
{
    const QMetaObject& metaObject = Base::staticMetaObject;

    QCOMPARE(metaObject.className(), "EventHandlerBaseClass");
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(metaObject.propertyCount(), metaObject.propertyOffset());
    QVERIFY(m_producer->parent() == nullptr);
}

void tst_EventHandlerBaseClass::beginsOffWithoutIconsAndTags()
{
    QVERIFY(!((*m_producer).*currentStateOf()));
    QCOMPARE((*m_producer).*activeIconOf(), QString());
    QCOMPARE((*m_producer).*inactiveIconOf(), QString());
    QCOMPARE((*m_producer).*neutralIconOf(), QString());
    QCOMPARE((*m_producer).*hashesOf(), QString());
    QCOMPARE(m_producer->getAllSourceTags(), QStringList());
    QCOMPARE(int(m_producer->getSourceHashType()), 0);
}

void tst_EventHandlerBaseClass::addsTheKeywordOfTheFirmware_data()
{
    QTest::addColumn<QStringList>("given");
    QTest::addColumn<QStringList>("keywords");

    QTest::newRow("none") << QStringList() << QStringList(text("Firmware"));
    QTest::newRow("behind two of the module")
        << QStringList({text("Error"), text("Boot")})
        << QStringList({text("Error"), text("Boot"), text("Firmware")});
    QTest::newRow("it is there") << QStringList({text("Firmware"), text("Boot")})
                                 << QStringList({text("Firmware"), text("Boot")});
    QTest::newRow("in other capitals")
        << QStringList(text("firmware")) << QStringList({text("firmware"), text("Firmware")});
}

void tst_EventHandlerBaseClass::addsTheKeywordOfTheFirmware()
{
    QFETCH(QStringList, given);
    QFETCH(QStringList, keywords);
    Tree noTree;

    const Base withTexts(text("PumpControl"), m_texts, text("PumpControl/Door"), given);
    const Base withTree(text("PumpControl"), m_texts, noTree, text("PumpControl/Door"), given);

    QCOMPARE(withTexts.*keywordsOf(), keywords);
    QCOMPARE(withTree.*keywordsOf(), keywords);
}

void tst_EventHandlerBaseClass::addsAKeywordOnce_data()
{
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("keywords");

    QTest::newRow("a new one") << text("Boot") << text("Error;Firmware;Boot");
    QTest::newRow("one that is there") << text("Error") << text("Error;Firmware");
    QTest::newRow("in other capitals") << text("FIRMWARE") << text("Error;Firmware;FIRMWARE");
    QTest::newRow("an empty one") << QString() << text("Error;Firmware;");
}

void tst_EventHandlerBaseClass::addsAKeywordOnce()
{
    QFETCH(QString, keyword);
    QFETCH(QString, keywords);
    ExpectedEvent expected = doorEvent(EventType::otherEvents, State::neutral, QString());
    expected.keywords = keywords;

    m_producer->addKeyword(keyword);
    m_producer->addKeyword(keyword);
    logDoor();

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::joinsTheHashesOfItsTags()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    m_producer->addSourceTag(text("cellar"), SourceHashType(1));

    QCOMPARE(m_producer->getAllSourceTags(), QStringList({text("pump/3"), text("cellar")}));
    QCOMPARE((*m_producer).*hashesOf(), QString(hashOf("pump/3") + hashOf("cellar")));
    QCOMPARE(((*m_producer).*hashesOf()).toLower(), (*m_producer).*hashesOf());
    QCOMPARE(((*m_producer).*hashesOf()).size(), 80);
}

void tst_EventHandlerBaseClass::hashesTheUtf8OfATag()
{
    m_producer->addSourceTag(text("Störung"), SourceHashType(1));

    QCOMPARE((*m_producer).*hashesOf(), hashOf("St\xc3\xb6rung"));
}

void tst_EventHandlerBaseClass::changesNothingForATagThatItHas()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    m_producer->addSourceTag(text("pump/3"), SourceHashType(2));

    QCOMPARE(m_producer->getAllSourceTags(), QStringList(text("pump/3")));
    QCOMPARE((*m_producer).*hashesOf(), hashOf("pump/3"));
    QCOMPARE(int(m_producer->getSourceHashType()), 1);
}

void tst_EventHandlerBaseClass::takesTheTypeOfTheLastNewTag()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    m_producer->addSourceTag(text("pump/3"), SourceHashType(2));
    m_producer->addSourceTag(text("Pump/3"), SourceHashType(3));

    QCOMPARE(m_producer->getAllSourceTags(), QStringList({text("pump/3"), text("Pump/3")}));
    QCOMPARE(int(m_producer->getSourceHashType()), 3);
}

void tst_EventHandlerBaseClass::removesATagAndKeepsTheType()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    m_producer->addSourceTag(text("cellar"), SourceHashType(2));

    m_producer->removeSourceTag(text("pump/3"));

    QCOMPARE(m_producer->getAllSourceTags(), QStringList(text("cellar")));
    QCOMPARE((*m_producer).*hashesOf(), hashOf("cellar"));
    QCOMPARE(int(m_producer->getSourceHashType()), 2);
}

void tst_EventHandlerBaseClass::removesOnlyATagOfTheSameCapitals()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));

    m_producer->removeSourceTag(text("Pump/3"));
    m_producer->removeSourceTag(text("cellar"));

    QCOMPARE(m_producer->getAllSourceTags(), QStringList(text("pump/3")));
    QCOMPARE((*m_producer).*hashesOf(), hashOf("pump/3"));
}

void tst_EventHandlerBaseClass::removesAllTagsAndKeepsTheType()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    m_producer->addSourceTag(text("cellar"), SourceHashType(2));

    m_producer->removeAllSourceTags();
    m_producer->removeAllSourceTags();

    QCOMPARE(m_producer->getAllSourceTags(), QStringList());
    QCOMPARE((*m_producer).*hashesOf(), QString());
    QCOMPARE(int(m_producer->getSourceHashType()), 2);
}

void tst_EventHandlerBaseClass::carriesHashesAndTypeInItsEvents()
{
    ExpectedEvent expected = doorEvent(EventType::otherEvents, State::neutral, QString());
    expected.sourceHashes = hashOf("pump/3");
    expected.sourceHashType = 4;

    m_producer->addSourceTag(text("pump/3"), SourceHashType(4));
    logDoor();

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::computesTheHashesOnlyWhenTheTagsChange()
{
    m_producer->addSourceTag(text("pump/3"), SourceHashType(1));
    (*m_producer).*hashesOf() = text("kept");
    ExpectedEvent expected = doorEvent(EventType::otherEvents, State::neutral, QString());
    expected.sourceHashes = text("kept");
    expected.sourceHashType = 1;

    m_producer->addSourceTag(text("pump/3"), SourceHashType(2));
    m_producer->removeSourceTag(text("cellar"));
    logDoor();

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::replacesTheIconOfAState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QStringList>("icons");

    QTest::newRow("neutral") << 0 << QStringList({text("new"), text("b"), text("c")});
    QTest::newRow("active") << 1 << QStringList({text("a"), text("new"), text("c")});
    QTest::newRow("inactive") << 2 << QStringList({text("a"), text("b"), text("new")});
}

void tst_EventHandlerBaseClass::replacesTheIconOfAState()
{
    QFETCH(int, state);
    QFETCH(QStringList, icons);
    m_producer->setIconType(State::neutral, text("a"));
    m_producer->setIconType(State::active, text("b"));
    m_producer->setIconType(State::inactive, text("c"));

    m_producer->setIconType(State(state), text("new"));

    QCOMPARE(QStringList({(*m_producer).*neutralIconOf(), (*m_producer).*activeIconOf(),
                          (*m_producer).*inactiveIconOf()}),
             icons);
}

void tst_EventHandlerBaseClass::refusesAnIconForAStateThatIsNone()
{
    m_warnings
        .expect(text("State 3 not valid"), text("EventHandlerBaseClass"),
                text("EventHandlerBaseClass::setIconType"))
        .expect(text("State -1 not valid"), text("EventHandlerBaseClass"),
                text("EventHandlerBaseClass::setIconType"));

    m_producer->setIconType(State(3), text("new"));
    m_producer->setIconType(State(-1), text("new"));

    QCOMPARE((*m_producer).*neutralIconOf(), QString());
    QCOMPARE((*m_producer).*activeIconOf(), QString());
    QCOMPARE((*m_producer).*inactiveIconOf(), QString());
}

void tst_EventHandlerBaseClass::logsAStateThatIsNoneWithoutAnIcon()
{
    m_producer->setIconType(State::neutral, text("a"));
    m_warnings.expect(text("State 3 not valid"), text("EventHandlerBaseClass"),
                      text("EventHandlerBaseClass::logEventIntern"));

    logDoor(State(3));

    QCOMPARE(takeEvent(m_spool), doorEvent(EventType::otherEvents, State(3), QString()).json());
}

void tst_EventHandlerBaseClass::picksTheIconByState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("icon");

    QTest::newRow("neutral") << 0 << text("a");
    QTest::newRow("active") << 1 << text("b");
    QTest::newRow("inactive") << 2 << text("c");
}

void tst_EventHandlerBaseClass::picksTheIconByState()
{
    QFETCH(int, state);
    QFETCH(QString, icon);
    m_producer->setIconType(State::neutral, text("a"));
    m_producer->setIconType(State::active, text("b"));
    m_producer->setIconType(State::inactive, text("c"));

    logDoor(State(state));

    QCOMPARE(takeEvent(m_spool), doorEvent(EventType::otherEvents, State(state), icon).json());
}

void tst_EventHandlerBaseClass::logsTheDescriptionWithoutArguments()
{
    logDoor();

    QCOMPARE(takeEvent(m_spool),
             doorEvent(EventType::otherEvents, State::neutral, QString()).json());
}

void tst_EventHandlerBaseClass::logsTheWorkedExample()
{
    ExpectedEvent expected;
    expected.eventId = text("PumpControl/OverTemperature");
    expected.description = R"({"lang_de":"Übertemperatur an Pumpe 3, Wert 97.5",)"
                           R"("lang_en":"Overtemperature at pump 3, value 97.5"})";
    expected.metaData =
        R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
        R"("%2":{"type":"string","value":"97.5"}},)"
        R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
        R"("lang_en":"Overtemperature at %1, value %2"}})";

    m_producer->logEvent(EventType::otherEvents, State::neutral,
                         text("PumpControl/OverTemperature"), {{text("%2"), text("97.5")}}, m_texts,
                         {{text("%1"), text("PumpControl/PumpName3")}}, QString(), QString());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::filesTheUrlAsTextWhenItHasNone()
{
    ExpectedEvent expected;
    expected.eventId = text("PumpControl/Unknown");
    expected.description = R"({"lang_en":"PumpControl/Unknown"})";
    expected.metaData = R"({"Arguments":{},"DescriptionScheme":{"lang_en":"PumpControl/Unknown"}})";
    m_warnings.expect(text(R"(No description data: "PumpControl/Unknown")"),
                      text("EventlistHandlerConvenienceFunctions"),
                      text("EventlistHandlerConvenienceFunctions::generateMetaData"));

    m_producer->logEvent(EventType::otherEvents, State::neutral, text("PumpControl/Unknown"),
                         noArguments(), QString(), QString());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::logsAnotherDescriptionForOneEvent()
{
    m_producer->changeDescription(text("PumpControl/PumpName3"));

    m_producer->logEvent(EventType::otherEvents, State::neutral, text("PumpControl/Door"),
                         noArguments(), QString(), QString());

    QCOMPARE(takeEvent(m_spool),
             doorEvent(EventType::otherEvents, State::neutral, QString()).json());
    QCOMPARE((*m_producer).*descriptionOf(), text("PumpControl/PumpName3"));
}

void tst_EventHandlerBaseClass::changesItsDescriptionFromTheNextEventOn()
{
    ExpectedEvent expected;
    expected.eventId = text("PumpControl/PumpName3");
    expected.description = R"({"lang_de":"Pumpe 3","lang_en":"pump 3"})";
    expected.metaData =
        R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe 3","lang_en":"pump 3"}})";

    m_producer->changeDescription(text("PumpControl/PumpName3"));
    logDoor();

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::carriesTypeUserAndAlarmId()
{
    ExpectedEvent expected = doorEvent(EventType::auditTrail, State::active, QString());
    expected.user = text("a user");
    expected.alarmId = text("an alarm");

    m_producer->logEvent(EventType::auditTrail, State::active, noArguments(), text("a user"),
                         text("an alarm"));

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandlerBaseClass::looksOneTextUpForAnEvent()
{
    const int before = m_texts.lookUpCount();

    logDoor();

    QCOMPARE(m_texts.lookUpCount() - before, 1);
}

void tst_EventHandlerBaseClass::logsTheChangesOfTheConditionOnly()
{
    ExpectedEvent on = doorEvent(EventType::fault, State::active, QString());
    ExpectedEvent off = doorEvent(EventType::fault, State::inactive, QString());
    on.alarmId = text("id");
    off.alarmId = text("id");

    changeState(false);
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    changeState(true);
    changeState(true);
    QCOMPARE(takeEvent(m_spool), on.json());
    changeState(false);
    changeState(false);
    QCOMPARE(takeEvent(m_spool), off.json());
}

void tst_EventHandlerBaseClass::movesItsStateAlsoWhenTheEventIsLost()
{
    m_spool.remove();
    m_warnings.expect(text("Can't write jsonObject to file"))
        .expectMatch(text("Can't write event to file\\. ModuleName: \"PumpControl\" .*"));

    changeState(true);
    VERIFY_WARNINGS(m_warnings);
    m_spool.clear();
    changeState(true);

    QVERIFY((*m_producer).*currentStateOf());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_EventHandlerBaseClass::keepsItsStateWhenItLogsByItself()
{
    logDoor(State::active);
    QCOMPARE(takeEvent(m_spool),
             doorEvent(EventType::otherEvents, State::active, QString()).json());

    changeState(false);
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    changeState(true);
    m_spool.clear();
    logDoor(State::inactive);
    m_spool.clear();
    changeState(true);
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_EventHandlerBaseClass::logsNothingWhenItIsDestroyedWhileOn()
{
    changeState(true);
    m_spool.clear();

    m_producer.reset();

    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_EventHandlerBaseClass::takesItsDescriptionFromALeafAndReturnsToTheTextManager()
{
    ExpectedEvent fromLeaf;
    fromLeaf.eventId = text("Texts/Name");
    fromLeaf.description = R"({"lang_de":"Pumpe","lang_en":"pump"})";
    fromLeaf.metaData =
        R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe","lang_en":"pump"}})";
    m_producer->setDescriptionalLeaf(pumpTree());
    m_producer->changeDescription(text("Texts/Name"));
    const int lookUpsBefore = m_texts.lookUpCount();

    logDoor();
    QCOMPARE(takeEvent(m_spool), fromLeaf.json());
    QCOMPARE(m_texts.lookUpCount(), lookUpsBefore);

    m_producer->setDescriptionalLeaf(Tree());
    m_producer->changeDescription(text("PumpControl/Door"));
    logDoor();
    QCOMPARE(takeEvent(m_spool),
             doorEvent(EventType::otherEvents, State::neutral, QString()).json());
}

QTEST_GUILESS_MAIN(tst_EventHandlerBaseClass)
#include "tst_EventHandlerBaseClass.moc"
