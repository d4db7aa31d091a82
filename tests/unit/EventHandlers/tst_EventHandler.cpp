#include "EventHandlers/EventHandler.h"

#include "unit/EventHandlers/ProducerTest.h"

#include <QTest>

#include <functional>
#include <memory>

using Operation = std::function<void(EventHandler&, Tree&, const TextManager&)>;

Q_DECLARE_METATYPE(Operation)

namespace
{

ExpectedEvent otherEvent(State state, const char* icon)
{
    return doorEvent(EventType::otherEvents, state, text(icon));
}

ExpectedEvent withArguments(State state, const char* icon, const char* eventId, bool hasUrlArgument)
{
    return withArguments(otherEvent(state, icon), text(eventId), hasUrlArgument);
}

} // namespace

class tst_EventHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        giveTexts(m_texts);
        m_texts.setTexts(text("Name"), text("Pumpe"), text("pump"));
        m_tree = pumpTree();
        m_handler = std::make_unique<EventHandler>(
            text("PumpControl"), m_texts, text("PumpControl/Door"), QStringList(text("Error")));
        m_handler->setEventToFile(QString());
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void logsEachTimeItIsTold();
    void takesEachOperationToItsPlace_data();
    void takesEachOperationToItsPlace();
    void reportsTheChangesOfItsCondition();
    void logsBetweenTwoChangesWithoutTouchingTheCondition();
    void changesItsDescription();
    void usesAnotherDescriptionForOneEvent();
    void takesItsDescriptionFromATree();
    void stillOffersTheOperationsOfItsBase();
    void logsNothingWhenItIsDestroyedWhileOn();
    void hasNoMetaObjectOfItsOwn();

private:
    SpoolFolder m_spool;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    Tree m_tree;
    std::unique_ptr<EventHandler> m_handler;
    WarningRecorder m_warnings;
};

void tst_EventHandler::logsEachTimeItIsTold()
{
    const QByteArray expected = otherEvent(State::neutral, "EventlistEvent").json();

    m_handler->logEvent(noArguments());
    QCOMPARE(takeEvent(m_spool), expected);
    m_handler->logEvent(noArguments());
    QCOMPARE(takeEvent(m_spool), expected);
}

void tst_EventHandler::takesEachOperationToItsPlace_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("event");

    // The producer's own description is the text without url arguments, and the one that is given
    // the path or url of the same text.
    const auto row = [](const char* name, State state, const char* icon, bool hasUrlArgument,
                        const Operation& operation, const char* eventId) {
        QTest::newRow(name) << operation
                            << withArguments(state, icon, eventId, hasUrlArgument).json();
    };
    const char* const own = "PumpControl/Alarm";
    const char* const given = "Given";
    row(
        "changeState", State::active, "EventlistEventOn", false,
        [](EventHandler& handler, Tree&, const TextManager&) { handler.changeState(true, seven); },
        own);
    row(
        "changeState, tree", State::active, "EventlistEventOn", true,
        [](EventHandler& handler, Tree& tree, const TextManager&) {
            handler.changeState(true, tree, nameInTree, seven);
        },
        own);
    row(
        "changeState, texts", State::active, "EventlistEventOn", true,
        [](EventHandler& handler, Tree&, const TextManager& texts) {
            handler.changeState(true, texts, nameInTexts, seven);
        },
        own);
    row(
        "logEvent", State::neutral, "EventlistEvent", false,
        [](EventHandler& handler, Tree&, const TextManager&) { handler.logEvent(seven); }, own);
    row(
        "logEvent, tree", State::neutral, "EventlistEvent", true,
        [](EventHandler& handler, Tree& tree, const TextManager&) {
            handler.logEvent(tree, nameInTree, seven);
        },
        own);
    row(
        "logEvent, texts", State::neutral, "EventlistEvent", true,
        [](EventHandler& handler, Tree&, const TextManager& texts) {
            handler.logEvent(texts, nameInTexts, seven);
        },
        own);
    row(
        "logEvent, description", State::neutral, "EventlistEvent", false,
        [](EventHandler& handler, Tree&, const TextManager&) {
            handler.logEvent(text("Given"), seven);
        },
        given);
    row(
        "logEvent, description, tree", State::neutral, "EventlistEvent", true,
        [](EventHandler& handler, Tree& tree, const TextManager&) {
            handler.logEvent(text("Given"), tree, nameInTree, seven);
        },
        given);
    row(
        "logEvent, description, texts", State::neutral, "EventlistEvent", true,
        [](EventHandler& handler, Tree&, const TextManager& texts) {
            handler.logEvent(text("Given"), texts, nameInTexts, seven);
        },
        given);
}

void tst_EventHandler::takesEachOperationToItsPlace()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, event);
    m_handler->changeDescription(text("PumpControl/Alarm"));
    m_texts.setTexts(text("Given"), text("Alarm an %1, %2, %3"), text("Alarm at %1, %2, %3"));

    operation(*m_handler, m_tree, m_texts);

    QCOMPARE(takeEvent(m_spool), event);
}

void tst_EventHandler::reportsTheChangesOfItsCondition()
{
    m_handler->changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    m_handler->changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), otherEvent(State::active, "EventlistEventOn").json());
    m_handler->changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
    m_handler->changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), otherEvent(State::inactive, "EventlistEventOff").json());
}

void tst_EventHandler::logsBetweenTwoChangesWithoutTouchingTheCondition()
{
    m_handler->changeState(true, noArguments());
    m_spool.clear();

    m_handler->logEvent(noArguments());
    m_spool.clear();
    m_handler->changeState(true, noArguments());

    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_EventHandler::changesItsDescription()
{
    m_handler->changeDescription(text("PumpControl/PumpName3"));
    ExpectedEvent expected = otherEvent(State::neutral, "EventlistEvent");
    expected.eventId = text("PumpControl/PumpName3");
    expected.description = R"({"lang_de":"Pumpe 3","lang_en":"pump 3"})";
    expected.metaData =
        R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe 3","lang_en":"pump 3"}})";

    m_handler->logEvent(noArguments());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandler::usesAnotherDescriptionForOneEvent()
{
    m_handler->logEvent(text("PumpControl/PumpName3"), noArguments());
    QVERIFY(takeEvent(m_spool).contains(R"("EventId":"PumpControl/PumpName3")"));

    m_handler->logEvent(noArguments());
    QCOMPARE(takeEvent(m_spool), otherEvent(State::neutral, "EventlistEvent").json());
}

void tst_EventHandler::takesItsDescriptionFromATree()
{
    EventHandler handler(text("PumpControl"), m_texts, m_tree, text("Texts/Name"),
                         QStringList(text("Error")));
    handler.setEventToFile(QString());
    const auto expected = [](State state, const char* icon) {
        ExpectedEvent event = otherEvent(state, icon);
        event.eventId = text("Texts/Name");
        event.description = R"({"lang_de":"Pumpe","lang_en":"pump"})";
        event.metaData =
            R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe","lang_en":"pump"}})";
        return event.json();
    };

    handler.changeState(true, noArguments());
    QCOMPARE(takeEvent(m_spool), expected(State::active, "EventlistEventOn"));

    handler.changeState(false, noArguments());
    QCOMPARE(takeEvent(m_spool), expected(State::inactive, "EventlistEventOff"));

    handler.logEvent(noArguments());
    QCOMPARE(takeEvent(m_spool), expected(State::neutral, "EventlistEvent"));
}

void tst_EventHandler::stillOffersTheOperationsOfItsBase()
{
    ExpectedEvent expected = doorEvent(EventType::alarm, State::active, text("EventlistEventOn"));
    expected.user = text("a user");
    expected.alarmId = text("an alarm");

    m_handler->logEvent(EventType::alarm, State::active, noArguments(), text("a user"),
                        text("an alarm"));
    QCOMPARE(takeEvent(m_spool), expected.json());
    m_handler->changeState(true, EventType::alarm, noArguments(), text("an alarm"));
    expected.user.clear();
    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_EventHandler::logsNothingWhenItIsDestroyedWhileOn()
{
    m_handler->changeState(true, noArguments());
    m_spool.clear();

    m_handler.reset();

    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_EventHandler::hasNoMetaObjectOfItsOwn()
{
    QCOMPARE(m_handler->metaObject()->className(), "EventHandlerBaseClass");
}

QTEST_GUILESS_MAIN(tst_EventHandler)
#include "tst_EventHandler.moc"
