#include "EventHandlers/AlarmHandler.h"

#include "EventHandlers/FaultHandler.h"
#include "TestSupport/PrivateMember.h"
#include "unit/EventHandlers/ProducerTest.h"

#include <QTest>
#include <QUuid>

#include <functional>
#include <memory>

PRIVATE_MEMBER(idOfAlarm, QString AlarmHandler::*, &AlarmHandler::m_alarmId)
PRIVATE_MEMBER(idOfFault, QString FaultHandler::*, &FaultHandler::m_alarmId)

namespace
{

// Alarms and faults differ in their event type, their icons and the name of their file alone.
// Whatever holds for one of them is tested for both.
struct Handler
{
    std::shared_ptr<EventHandlerBaseClass> producer;
    std::function<void(bool, const Arguments&)> changeState;
    std::function<void(bool, Tree&, const Arguments&, const Arguments&)> changeStateWithTree;
    std::function<void(bool, const TextManager&, const Arguments&, const Arguments&)>
        changeStateWithTexts;
    QString alarmId;
    EventType eventType;
    QString onIcon;
    QString offIcon;
    QString className;
};

template<typename Class>
Handler handlerOf(const std::shared_ptr<Class>& handler, QString Class::*id)
{
    handler->setEventToFile(QString());
    Handler result;
    result.producer = handler;
    result.changeState = [=](bool state, const Arguments& arguments) {
        handler->changeState(state, arguments);
    };
    result.changeStateWithTree = [=](bool state, Tree& tree, const Arguments& urlArguments,
                                     const Arguments& arguments) {
        handler->changeState(state, tree, urlArguments, arguments);
    };
    result.changeStateWithTexts = [=](bool state, const TextManager& texts,
                                      const Arguments& urlArguments, const Arguments& arguments) {
        handler->changeState(state, texts, urlArguments, arguments);
    };
    result.alarmId = (*handler).*id;
    return result;
}

// The constructor with a tree is used when there is one.
Handler makeHandler(bool isAlarm, const TextManager& texts, const QString& description,
                    Tree tree = Tree())
{
    const QString moduleName = text("PumpControl");
    const QStringList keywords(text("Error"));
    Handler handler;
    if (isAlarm)
    {
        handler = handlerOf(
            tree ? std::make_shared<AlarmHandler>(moduleName, texts, tree, description, keywords)
                 : std::make_shared<AlarmHandler>(moduleName, texts, description, keywords),
            idOfAlarm());
        handler.eventType = EventType::alarm;
        handler.onIcon = text("EventlistAlarmOn");
        handler.offIcon = text("EventlistAlarmOff");
        handler.className = text("AlarmHandler");
    }
    else
    {
        handler = handlerOf(
            tree ? std::make_shared<FaultHandler>(moduleName, texts, tree, description, keywords)
                 : std::make_shared<FaultHandler>(moduleName, texts, description, keywords),
            idOfFault());
        handler.eventType = EventType::fault;
        handler.onIcon = text("EventlistFaultOn");
        handler.offIcon = text("EventlistFaultOff");
        handler.className = text("FaultHandler");
    }
    return handler;
}

ExpectedEvent doorOf(const Handler& handler, State state)
{
    ExpectedEvent event = doorEvent(handler.eventType, state,
                                    state == State::active
                                        ? handler.onIcon
                                        : (state == State::inactive ? handler.offIcon : QString()));
    event.alarmId = handler.alarmId;
    return event;
}

} // namespace

class tst_AlarmHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        giveTexts(m_texts);
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void reportsTheChangesOfItsCondition_data() { bothClasses(); }
    void reportsTheChangesOfItsCondition();
    void carriesAnIdWithBraces_data() { bothClasses(); }
    void carriesAnIdWithBraces();
    void takesUrlArgumentsBeforeTheLiteralOnes_data() { bothClasses(); }
    void takesUrlArgumentsBeforeTheLiteralOnes();
    void countsItsConditionForAllThreeOperationsTogether_data() { bothClasses(); }
    void countsItsConditionForAllThreeOperationsTogether();
    void takesItsDescriptionFromATree_data() { bothClasses(); }
    void takesItsDescriptionFromATree();
    void refusesAnotherDescription_data() { bothClasses(); }
    void refusesAnotherDescription();
    void showsAnotherIcon_data() { bothClasses(); }
    void showsAnotherIcon();
    void hasNoIconForANeutralEvent_data() { bothClasses(); }
    void hasNoIconForANeutralEvent();
    void logsNothingWhenItIsDestroyedWhileOn_data() { bothClasses(); }
    void logsNothingWhenItIsDestroyedWhileOn();
    void changesItsStateAlsoWhenTheEventIsLost_data() { bothClasses(); }
    void changesItsStateAlsoWhenTheEventIsLost();
    void hasNoMetaObjectOfItsOwn();

private:
    static void bothClasses()
    {
        QTest::addColumn<bool>("isAlarm");
        QTest::newRow("alarm") << true;
        QTest::newRow("fault") << false;
    }

    SpoolFolder m_spool;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    WarningRecorder m_warnings;
};

void tst_AlarmHandler::reportsTheChangesOfItsCondition()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));

    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::active).json());
    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::inactive).json());
    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::active).json());
}

void tst_AlarmHandler::carriesAnIdWithBraces()
{
    QFETCH(bool, isAlarm);
    const Handler first = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));
    const Handler second = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));

    QCOMPARE(first.alarmId, QUuid(first.alarmId).toString());
    QVERIFY(first.alarmId.startsWith(QLatin1Char('{')));
    QVERIFY(!QUuid(first.alarmId).isNull());
    QVERIFY(first.alarmId != second.alarmId);
}

void tst_AlarmHandler::takesUrlArgumentsBeforeTheLiteralOnes()
{
    QFETCH(bool, isAlarm);
    Tree tree = pumpTree();
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Alarm"));
    ExpectedEvent expected = doorOf(handler, State::active);
    expected.eventId = text("PumpControl/Alarm");
    expected.description =
        R"({"lang_de":"Alarm an Pumpe, 7, %3","lang_en":"Alarm at pump, 7, %3"})";
    expected.metaData =
        R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}},)"
        R"("%2":{"type":"string","value":"7"}},)"
        R"("DescriptionScheme":{"lang_de":"Alarm an %1, %2, %3",)"
        R"("lang_en":"Alarm at %1, %2, %3"}})";

    handler.changeStateWithTree(true, tree, {{text("%1"), text("Texts/Name")}},
                                {{text("%2"), text("7")}});
    QCOMPARE(takeEvent(m_spool), expected.json());

    m_texts.setTexts(text("Name"), text("Pumpe"), text("pump"));
    expected.state = State::inactive;
    expected.icon = handler.offIcon;
    handler.changeStateWithTexts(false, m_texts, {{text("%1"), text("Name")}},
                                 {{text("%2"), text("7")}});
    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_AlarmHandler::countsItsConditionForAllThreeOperationsTogether()
{
    QFETCH(bool, isAlarm);
    Tree tree = pumpTree();
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));

    handler.changeStateWithTexts(true, m_texts, {}, {});
    handler.changeStateWithTree(true, tree, {}, {});
    handler.changeState(true, {});
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::active).json());

    handler.changeStateWithTree(false, tree, {}, {});
    handler.changeStateWithTexts(false, m_texts, {}, {});
    handler.changeState(false, {});
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::inactive).json());
}

void tst_AlarmHandler::takesItsDescriptionFromATree()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("Texts/Name"), pumpTree());
    for (const State state : {State::active, State::inactive})
    {
        ExpectedEvent expected = doorOf(handler, state);
        expected.eventId = text("Texts/Name");
        expected.description = R"({"lang_de":"Pumpe","lang_en":"pump"})";
        expected.metaData =
            R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe","lang_en":"pump"}})";

        handler.changeState(state == State::active, noArguments());

        QCOMPARE(takeEvent(m_spool), expected.json());
    }
}

void tst_AlarmHandler::refusesAnotherDescription()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));
    m_warnings.expect(text(R"(Description from a fault can't change: "PumpControl/Other")"),
                      handler.className,
                      QString(handler.className + QLatin1String("::changeDescription")));

    handler.producer->changeDescription(text("PumpControl/Other"));
    handler.changeState(true, noArguments());

    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::active).json());
}

void tst_AlarmHandler::showsAnotherIcon()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));
    ExpectedEvent expected = doorOf(handler, State::active);
    expected.icon = text("new");

    handler.producer->setIconType(State::active, text("new"));
    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), expected.json());
    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::inactive).json());
}

void tst_AlarmHandler::hasNoIconForANeutralEvent()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));

    handler.producer->logEvent(handler.eventType, State::neutral, noArguments(), QString(),
                               handler.alarmId);
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::neutral).json());
    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_AlarmHandler::logsNothingWhenItIsDestroyedWhileOn()
{
    QFETCH(bool, isAlarm);
    Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));
    handler.changeState(true, noArguments());
    m_spool.clear();
    const std::weak_ptr<EventHandlerBaseClass> producer = handler.producer;

    handler = Handler();

    QVERIFY(producer.expired());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_AlarmHandler::changesItsStateAlsoWhenTheEventIsLost()
{
    QFETCH(bool, isAlarm);
    const Handler handler = makeHandler(isAlarm, m_texts, text("PumpControl/Door"));
    m_spool.remove();
    m_warnings.expect(text("Can't write jsonObject to file"))
        .expectMatch(text("Can't write event to file\\. ModuleName: \"PumpControl\" .*"));

    handler.changeState(true, noArguments());
    m_spool.clear();
    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), doorOf(handler, State::inactive).json());
}

void tst_AlarmHandler::hasNoMetaObjectOfItsOwn()
{
    const AlarmHandler alarm(text("PumpControl"), m_texts, text("PumpControl/Door"), {});
    const FaultHandler fault(text("PumpControl"), m_texts, text("PumpControl/Door"), {});

    QCOMPARE(alarm.metaObject()->className(), "EventHandlerBaseClass");
    QCOMPARE(fault.metaObject()->className(), "EventHandlerBaseClass");
}

QTEST_GUILESS_MAIN(tst_AlarmHandler)
#include "tst_AlarmHandler.moc"
