#include "EventHandlers/EventHandlerBaseClass.h"

#include "unit/EventHandlers/ProducerTest.h"

#include <QTest>

#include <memory>

using Base = EventHandlerBaseClass;

namespace
{

// Three url arguments. What the middle one names is the case.
Arguments threeUrls(const char* first, const char* second, const char* third)
{
    return {{text("%1"), text(first)}, {text("%2"), text(second)}, {text("%3"), text(third)}};
}

ExpectedEvent alarmEvent(const QByteArray& description, const QByteArray& arguments)
{
    ExpectedEvent event;
    event.eventId = text("PumpControl/Alarm");
    event.description = description;
    event.metaData = QByteArray(R"({"Arguments":)")
                         .append(arguments)
                         .append(R"(,"DescriptionScheme":{"lang_de":"Alarm an %1, %2, %3",)")
                         .append(R"("lang_en":"Alarm at %1, %2, %3"}})");
    return event;
}

} // namespace

class tst_UrlArguments : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        giveTexts(m_texts);
        m_countingTree = pumpTree();
        m_tree = m_countingTree;
        m_producer = std::make_unique<Base>(text("PumpControl"), m_texts, text("PumpControl/Alarm"),
                                            QStringList(text("Error")));
        m_producer->setEventToFile(QString());
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void logsWithoutUrlArgumentsAsThePlainOperationDoes_data();
    void logsWithoutUrlArgumentsAsThePlainOperationDoes();
    void takesUrlArgumentsFromATree();
    void takesUrlArgumentsFromATextManager();
    void leavesOutWhatTheTreeDoesNotHave_data();
    void leavesOutWhatTheTreeDoesNotHave();
    void warnsForEachLeafThatIsNotThereInTheOrderOfTheList();
    void keepsAnEmptyTextForAUrlThatTheTextManagerDoesNotKnow();
    void looksInThePlaceThatIsGivenAndNotInItsOwn();
    void takesTheDescriptionFromItsLeafAndTheArgumentsFromATextManager();
    void filesAPathAsTextWhenItsLeafHoldsNoMap_data();
    void filesAPathAsTextWhenItsLeafHoldsNoMap();
    void usesTheDescriptionThatIsGiven();
    void carriesUserAndAlarmId();
    void changesItsStateWithUrlArgumentsOfATree();
    void changesItsStateWithUrlArgumentsOfATextManager();
    void looksNothingUpWhenTheStateDoesNotChange_data();
    void looksNothingUpWhenTheStateDoesNotChange();
    void movesItsStateAlsoWhenAnArgumentIsNotFound();

private:
    SpoolFolder m_spool;
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    QSharedPointer<CountingTree> m_countingTree;
    Tree m_tree;
    std::unique_ptr<Base> m_producer;
    WarningRecorder m_warnings;
};

void tst_UrlArguments::logsWithoutUrlArgumentsAsThePlainOperationDoes_data()
{
    QTest::addColumn<bool>("hasTree");

    QTest::newRow("a tree") << true;
    QTest::newRow("no tree") << false;
}

void tst_UrlArguments::logsWithoutUrlArgumentsAsThePlainOperationDoes()
{
    QFETCH(bool, hasTree);
    Tree tree = hasTree ? m_tree : Tree();
    const Arguments arguments{{text("%1"), text("x")}};

    m_producer->logEvent(EventType::fault, State::active, arguments, text("user"), text("id"));
    const QByteArray plain = takeEvent(m_spool);
    m_producer->logEvent(EventType::fault, State::active, arguments, tree, {}, text("user"),
                         text("id"));
    const QByteArray withTree = takeEvent(m_spool);
    m_producer->logEvent(EventType::fault, State::active, arguments, m_texts, {}, text("user"),
                         text("id"));
    const QByteArray withTexts = takeEvent(m_spool);

    QVERIFY2(plain.contains("Alarm at x, %2, %3"), plain);
    QCOMPARE(withTree, plain);
    QCOMPARE(withTexts, plain);
    QCOMPARE(m_countingTree->count, 0);
}

void tst_UrlArguments::takesUrlArgumentsFromATree()
{
    m_producer->logEvent(EventType::otherEvents, State::neutral, {{text("%3"), text("7")}}, m_tree,
                         {{text("%1"), text("Texts/Name")}, {text("%2"), text("Texts/Place")}},
                         QString(), QString());

    QCOMPARE(takeEvent(m_spool),
             alarmEvent(
                 R"({"lang_de":"Alarm an Pumpe, Keller, 7","lang_en":"Alarm at pump, cellar, 7"})",
                 R"({"%1":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}},)"
                 R"("%2":{"type":"text","value":{"lang_de":"Keller","lang_en":"cellar"}},)"
                 R"("%3":{"type":"string","value":"7"}})")
                 .json());
}

void tst_UrlArguments::takesUrlArgumentsFromATextManager()
{
    m_producer->logEvent(EventType::otherEvents, State::neutral,
                         {{text("%2"), text("x")}, {text("%3"), text("7")}}, m_texts,
                         {{text("%1"), text("PumpControl/PumpName3")}}, QString(), QString());

    QCOMPARE(takeEvent(m_spool),
             alarmEvent(R"({"lang_de":"Alarm an Pumpe 3, x, 7","lang_en":"Alarm at pump 3, x, 7"})",
                        R"({"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
                        R"("%2":{"type":"string","value":"x"},)"
                        R"("%3":{"type":"string","value":"7"}})")
                 .json());
}

void tst_UrlArguments::leavesOutWhatTheTreeDoesNotHave_data()
{
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<QString>("warning");

    QTest::newRow("an unknown path")
        << QByteArray("Texts/Unknown")
        << text(R"(Can't find element "Texts/Unknown" in root object)");
    QTest::newRow("an empty path")
        << QByteArray("") << text(R"(Can't find element "" in root object)");
    QTest::newRow("a node without a value")
        << QByteArray("Texts/NoValue")
        << text(R"(Can't find element "Texts/NoValue" in root object)");
    QTest::newRow("a number") << QByteArray("Texts/Number")
                              << text("Can't convert ConfigValue to QVariantMap. "
                                      "Result QVariant: QVariant(qlonglong, 7)");
}

void tst_UrlArguments::leavesOutWhatTheTreeDoesNotHave()
{
    QFETCH(QByteArray, second);
    QFETCH(QString, warning);
    m_warnings.expect(warning, text("EventHandlerBaseClass"),
                      text("EventHandlerBaseClass::logEvent"));

    m_producer->logEvent(EventType::otherEvents, State::neutral, noArguments(), m_tree,
                         threeUrls("Texts/Name", second, "Texts/Place"), QString(), QString());

    QCOMPARE(
        takeEvent(m_spool),
        alarmEvent(
            R"({"lang_de":"Alarm an Pumpe, %2, Keller","lang_en":"Alarm at pump, %2, cellar"})",
            R"({"%1":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}},)"
            R"("%3":{"type":"text","value":{"lang_de":"Keller","lang_en":"cellar"}}})")
            .json());
}

void tst_UrlArguments::warnsForEachLeafThatIsNotThereInTheOrderOfTheList()
{
    m_warnings.expect(text(R"(Can't find element "b" in root object)"))
        .expect(text(R"(Can't find element "a \"quoted\"" in root object)"));

    m_producer->logEvent(EventType::otherEvents, State::neutral, noArguments(), m_tree,
                         threeUrls("b", "Texts/Name", "a \"quoted\""), QString(), QString());

    QCOMPARE(takeEvent(m_spool),
             alarmEvent(R"({"lang_de":"Alarm an %1, Pumpe, %3","lang_en":"Alarm at %1, pump, %3"})",
                        R"({"%2":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}}})")
                 .json());
}

void tst_UrlArguments::keepsAnEmptyTextForAUrlThatTheTextManagerDoesNotKnow()
{
    m_producer->logEvent(
        EventType::otherEvents, State::neutral, {{text("%3"), text("7")}}, m_texts,
        {{text("%1"), text("PumpControl/PumpName3")}, {text("%2"), text("PumpControl/Unknown")}},
        QString(), QString());

    QCOMPARE(takeEvent(m_spool),
             alarmEvent(R"({"lang_de":"Alarm an Pumpe 3, , 7","lang_en":"Alarm at pump 3, , 7"})",
                        R"({"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
                        R"("%2":{"type":"text","value":{}},)"
                        R"("%3":{"type":"string","value":"7"}})")
                 .json());
}

void tst_UrlArguments::looksInThePlaceThatIsGivenAndNotInItsOwn()
{
    FakeTextManager others;
    others.setTexts(text("PumpControl/PumpName3"), text("fremd"), text("foreign"));
    const int before = m_texts.lookUpCount();

    m_producer->logEvent(EventType::otherEvents, State::neutral, noArguments(), others,
                         {{text("%1"), text("PumpControl/PumpName3")}}, QString(), QString());

    QCOMPARE(
        takeEvent(m_spool),
        alarmEvent(R"({"lang_de":"Alarm an fremd, %2, %3","lang_en":"Alarm at foreign, %2, %3"})",
                   R"({"%1":{"type":"text","value":{"lang_de":"fremd","lang_en":"foreign"}}})")
            .json());
    QCOMPARE(m_texts.lookUpCount() - before, 1);
    QCOMPARE(others.lookUpCount(), 1);
}

void tst_UrlArguments::takesTheDescriptionFromItsLeafAndTheArgumentsFromATextManager()
{
    Base producer(text("PumpControl"), m_texts, m_tree, text("Texts/Alarm"),
                  QStringList(text("Error")));
    producer.setEventToFile(QString());
    ExpectedEvent expected =
        alarmEvent(R"({"lang_de":"Alarm an Pumpe 3, %2, %3","lang_en":"Alarm at pump 3, %2, %3"})",
                   R"({"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}}})");
    expected.eventId = text("Texts/Alarm");
    const int before = m_texts.lookUpCount();

    producer.logEvent(EventType::otherEvents, State::neutral, noArguments(), m_texts,
                      {{text("%1"), text("PumpControl/PumpName3")}}, QString(), QString());

    QCOMPARE(takeEvent(m_spool), expected.json());
    QCOMPARE(m_texts.lookUpCount() - before, 1);
}

void tst_UrlArguments::filesAPathAsTextWhenItsLeafHoldsNoMap_data()
{
    QTest::addColumn<QByteArray>("path");

    QTest::newRow("a number") << QByteArray("Texts/Number");
    QTest::newRow("no value") << QByteArray("Texts/NoValue");
    QTest::newRow("no such leaf") << QByteArray("Texts/Unknown");
}

void tst_UrlArguments::filesAPathAsTextWhenItsLeafHoldsNoMap()
{
    QFETCH(QByteArray, path);
    Base producer(text("PumpControl"), m_texts, m_tree, text(path), QStringList(text("Error")));
    producer.setEventToFile(QString());
    ExpectedEvent expected;
    expected.eventId = text(path);
    expected.description = QByteArray(R"({"lang_en":")").append(path).append(R"("})");
    expected.metaData = QByteArray(R"({"Arguments":{},"DescriptionScheme":)")
                            .append(expected.description)
                            .append('}');
    m_warnings.expect(QString(QLatin1String("No description data: ") + quoted(text(path))),
                      text("EventlistHandlerConvenienceFunctions"));

    producer.logEvent(EventType::otherEvents, State::neutral, noArguments(), QString(), QString());

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_UrlArguments::usesTheDescriptionThatIsGiven()
{
    const ExpectedEvent door = doorEvent(EventType::otherEvents, State::neutral, QString());

    m_producer->logEvent(EventType::otherEvents, State::neutral, text("PumpControl/Door"), {},
                         m_tree, {}, QString(), QString());
    QCOMPARE(takeEvent(m_spool), door.json());
    m_producer->logEvent(EventType::otherEvents, State::neutral, text("PumpControl/Door"), {},
                         m_texts, {}, QString(), QString());
    QCOMPARE(takeEvent(m_spool), door.json());
}

void tst_UrlArguments::carriesUserAndAlarmId()
{
    m_producer->changeDescription(text("PumpControl/Door"));
    ExpectedEvent expected = doorEvent(EventType::auditTrail, State::active, QString());
    expected.user = text("a user");
    expected.alarmId = text("an alarm");

    m_producer->logEvent(EventType::auditTrail, State::active, {}, m_tree, {}, text("a user"),
                         text("an alarm"));
    QCOMPARE(takeEvent(m_spool), expected.json());
    m_producer->logEvent(EventType::auditTrail, State::active, {}, m_texts, {}, text("a user"),
                         text("an alarm"));
    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_UrlArguments::changesItsStateWithUrlArgumentsOfATree()
{
    ExpectedEvent expected =
        alarmEvent(R"({"lang_de":"Alarm an Pumpe, x, %3","lang_en":"Alarm at pump, x, %3"})",
                   R"({"%1":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}},)"
                   R"("%2":{"type":"string","value":"x"}})");
    expected.eventType = EventType::fault;
    expected.state = State::active;
    expected.alarmId = text("id");

    m_producer->changeState(true, EventType::fault, {{text("%2"), text("x")}}, m_tree,
                            {{text("%1"), text("Texts/Name")}}, text("id"));

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_UrlArguments::changesItsStateWithUrlArgumentsOfATextManager()
{
    ExpectedEvent expected =
        alarmEvent(R"({"lang_de":"Alarm an Pumpe 3, x, %3","lang_en":"Alarm at pump 3, x, %3"})",
                   R"({"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
                   R"("%2":{"type":"string","value":"x"}})");
    expected.eventType = EventType::alarm;
    expected.state = State::active;
    expected.alarmId = text("id");

    m_producer->changeState(true, EventType::alarm, {{text("%2"), text("x")}}, m_texts,
                            {{text("%1"), text("PumpControl/PumpName3")}}, text("id"));

    QCOMPARE(takeEvent(m_spool), expected.json());
}

void tst_UrlArguments::looksNothingUpWhenTheStateDoesNotChange_data()
{
    QTest::addColumn<bool>("state");

    QTest::newRow("off") << false;
    QTest::newRow("on") << true;
}

void tst_UrlArguments::looksNothingUpWhenTheStateDoesNotChange()
{
    QFETCH(bool, state);
    m_producer->changeState(state, EventType::alarm, noArguments(), QString());
    m_spool.clear();
    m_producer->setDescriptionalLeaf(m_tree);
    const int lookUps = m_texts.lookUpCount();
    const Arguments urls{{text("%1"), text("nowhere")}};

    m_producer->changeState(state, EventType::alarm, noArguments(), QString());
    m_producer->changeState(state, EventType::alarm, noArguments(), m_tree, urls, QString());
    m_producer->changeState(state, EventType::alarm, noArguments(), m_texts, urls, QString());

    QCOMPARE(m_texts.lookUpCount(), lookUps);
    QCOMPARE(m_countingTree->count, 0);
    QCOMPARE(takeEvent(m_spool), QByteArray("0 files"));
}

void tst_UrlArguments::movesItsStateAlsoWhenAnArgumentIsNotFound()
{
    const Arguments urls{{text("%1"), text("nowhere")}};
    m_warnings.expect(text(R"(Can't find element "nowhere" in root object)"));

    m_producer->changeState(true, EventType::alarm, noArguments(), m_tree, urls, QString());
    m_producer->changeState(true, EventType::alarm, noArguments(), m_tree, urls, QString());

    QVERIFY(takeEvent(m_spool).contains("Alarm at %1, %2, %3"));
}

QTEST_GUILESS_MAIN(tst_UrlArguments)
#include "tst_UrlArguments.moc"
