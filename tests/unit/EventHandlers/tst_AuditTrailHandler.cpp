#include "EventHandlers/AuditTrailHandler.h"

#include "unit/EventHandlers/ProducerTest.h"

#include <QTest>

#include <functional>
#include <memory>

using Operation = std::function<void(AuditTrailHandler&, Tree&, const TextManager&)>;

Q_DECLARE_METATYPE(Operation)

namespace
{

ExpectedEvent auditEvent(const char* user)
{
    ExpectedEvent event =
        doorEvent(EventType::auditTrail, State::neutral, text("EventlistAuditTrail"));
    event.user = text(user);
    return event;
}

ExpectedEvent withArguments(const char* user, const char* eventId, bool hasUrlArgument)
{
    return withArguments(auditEvent(user), text(eventId), hasUrlArgument);
}

} // namespace

class tst_AuditTrailHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        giveTexts(m_texts);
        m_texts.setTexts(text("Name"), text("Pumpe"), text("pump"));
        m_tree = pumpTree();
        m_handler = std::make_unique<AuditTrailHandler>(
            text("PumpControl"), m_texts, text("PumpControl/Door"), QStringList(text("Error")));
        m_handler->setEventToFile(QString());
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void takesEachOperationToItsPlace_data();
    void takesEachOperationToItsPlace();
    void logsEachTimeItIsTold();
    void changesItsDescription();
    void takesItsDescriptionFromATree();
    void hasNoIconForOtherStates_data();
    void hasNoIconForOtherStates();
    void hasNoMetaObjectOfItsOwn();

private:
    SpoolFolder m_spool;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    Tree m_tree;
    std::unique_ptr<AuditTrailHandler> m_handler;
    WarningRecorder m_warnings;
};

void tst_AuditTrailHandler::takesEachOperationToItsPlace_data()
{
    QTest::addColumn<Operation>("operation");
    QTest::addColumn<QByteArray>("event");

    QTest::newRow("arguments") << Operation([](AuditTrailHandler& handler, Tree&,
                                               const TextManager&) {
        handler.logAuditTrail(seven);
    }) << withArguments("", "PumpControl/Alarm", false).json();
    QTest::newRow("user") << Operation([](AuditTrailHandler& handler, Tree&, const TextManager&) {
        handler.logAuditTrail(text("a user"), seven);
    }) << withArguments("a user", "PumpControl/Alarm", false).json();
    QTest::newRow("user, tree") << Operation([](AuditTrailHandler& handler, Tree& tree,
                                                const TextManager&) {
        handler.logAuditTrail(text("a user"), tree, nameInTree, seven);
    }) << withArguments("a user", "PumpControl/Alarm", true).json();
    QTest::newRow("user, texts") << Operation([](AuditTrailHandler& handler, Tree&,
                                                 const TextManager& texts) {
        handler.logAuditTrail(text("a user"), texts, nameInTexts, seven);
    }) << withArguments("a user", "PumpControl/Alarm", true).json();
    QTest::newRow("user before description")
        << Operation([](AuditTrailHandler& handler, Tree&, const TextManager&) {
               handler.logAuditTrail(text("a user"), text("Given"), seven);
           })
        << withArguments("a user", "Given", false).json();
    QTest::newRow("user, description, tree")
        << Operation([](AuditTrailHandler& handler, Tree& tree, const TextManager&) {
               handler.logAuditTrail(text("a user"), text("Given"), tree, nameInTree, seven);
           })
        << withArguments("a user", "Given", true).json();
    QTest::newRow("user, description, texts")
        << Operation([](AuditTrailHandler& handler, Tree&, const TextManager& texts) {
               handler.logAuditTrail(text("a user"), text("Given"), texts, nameInTexts, seven);
           })
        << withArguments("a user", "Given", true).json();
}

void tst_AuditTrailHandler::takesEachOperationToItsPlace()
{
    QFETCH(Operation, operation);
    QFETCH(QByteArray, event);
    m_handler->changeDescription(text("PumpControl/Alarm"));
    m_texts.setTexts(text("Given"), text("Alarm an %1, %2, %3"), text("Alarm at %1, %2, %3"));

    operation(*m_handler, m_tree, m_texts);

    QCOMPARE(takeEvent(m_spool), event);
}

void tst_AuditTrailHandler::logsEachTimeItIsTold()
{
    for (int i = 0; i < 2; ++i)
    {
        m_handler->logAuditTrail(text("a user"), noArguments());
        QCOMPARE(takeEvent(m_spool), auditEvent("a user").json());
    }
}

void tst_AuditTrailHandler::changesItsDescription()
{
    m_handler->changeDescription(text("PumpControl/PumpName3"));
    m_handler->logAuditTrail(noArguments());
    QVERIFY(takeEvent(m_spool).contains(R"("EventId":"PumpControl/PumpName3")"));

    m_handler->logAuditTrail(QString(), text("PumpControl/Door"), noArguments());
    QCOMPARE(takeEvent(m_spool), auditEvent("").json());
    m_handler->logAuditTrail(noArguments());
    QVERIFY(takeEvent(m_spool).contains(R"("EventId":"PumpControl/PumpName3")"));
}

void tst_AuditTrailHandler::takesItsDescriptionFromATree()
{
    AuditTrailHandler handler(text("PumpControl"), m_texts, m_tree, text("Texts/Name"),
                              QStringList(text("Error")));
    handler.setEventToFile(QString());
    ExpectedEvent expected = auditEvent("");
    expected.eventId = text("Texts/Name");
    expected.description = R"({"lang_de":"Pumpe","lang_en":"pump"})";
    expected.metaData =
        R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Pumpe","lang_en":"pump"}})";

    handler.logAuditTrail(noArguments());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_AuditTrailHandler::hasNoIconForOtherStates_data()
{
    QTest::addColumn<int>("state");

    QTest::newRow("active") << 1;
    QTest::newRow("inactive") << 2;
}

void tst_AuditTrailHandler::hasNoIconForOtherStates()
{
    QFETCH(int, state);
    ExpectedEvent expected = auditEvent("");
    expected.state = State(state);
    expected.icon.clear();

    m_handler->logEvent(EventType::auditTrail, State(state), noArguments(), QString(), QString());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_AuditTrailHandler::hasNoMetaObjectOfItsOwn()
{
    QCOMPARE(m_handler->metaObject()->className(), "EventHandlerBaseClass");
}

QTEST_GUILESS_MAIN(tst_AuditTrailHandler)
#include "tst_AuditTrailHandler.moc"
