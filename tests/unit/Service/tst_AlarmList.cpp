#include "core/AlarmList.h"

#include "core/Database.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace eventlistd;
using Effect = AlarmList::Effect;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

Event makeEvent(const QString& id, int state, int type = alarm)
{
    static qint64 number = 0;
    Event made;
    made.id = ++number;
    made.type = type;
    made.state = state;
    made.alarmId = id;
    made.moduleName = s("pump");
    made.eventId = s("pump/Hot");
    return made;
}
} // namespace

class tst_AlarmList : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void followsOneAlarm_data();
    void followsOneAlarm();
    void tellsWhatHappens();
    void knowsItsStates();
    void namesAnAlarmWithoutId();
    void comesBackToTheFileAfterARollback();
    void readsTheSameAfterAReload();
    void givesWayToNewAlarmsButNeverAnActiveOne();
    void isBoundedBySizeToo();
    void losesNothingToAnAlarmThatIsRefused();
    void comesAgainInTheRoomOfItsOwnRow();
    void changesItsKindWithTheSender();
    void countsEverythingAsGone();

private:
    QString rowOf(const QString& id);
    Effect acknowledge(const QString& id, const QString& user = s("meier"));

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<AlarmList> m_list;
    Event m_acknowledged;
};

void tst_AlarmList::init()
{
    m_list.reset();
    m_database.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_database = std::make_unique<Database>(m_folder->filePath(s("list.sqlite")));
    QCOMPARE(m_database->open(), Database::Opened::asNew);
    m_list = std::make_unique<AlarmList>(*m_database, 3, 1000000);
    QVERIFY(m_list->load());
}

// Active and acknowledged, as two digits; empty when it is not there.
QString tst_AlarmList::rowOf(const QString& id)
{
    ListAnswer answer(AlarmList::header());
    if (!m_list->read(QString(), answer))
    {
        return s("read failed");
    }
    const int idColumn = AlarmList::header().indexOf(s("AlarmID"));
    const int activeColumn = AlarmList::header().indexOf(s("AlarmActive"));
    for (const QStringList& row : answer.rows())
    {
        if (row.at(idColumn) == id)
        {
            return QString(row.at(activeColumn) + row.at(activeColumn + 1));
        }
    }
    return QString();
}

Effect tst_AlarmList::acknowledge(const QString& id, const QString& user)
{
    return m_list->acknowledge(id, user, 1773476813589, m_acknowledged);
}

void tst_AlarmList::followsOneAlarm_data()
{
    QTest::addColumn<QString>("steps");
    QTest::addColumn<QString>("row");
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("on") << s("+") << s("10");
    QTest::newRow("off without on") << s("-") << QString();
    QTest::newRow("on off") << s("+-") << s("00");
    QTest::newRow("on off acknowledged") << s("+-a") << QString();
    QTest::newRow("on acknowledged") << s("+a") << s("11");
    QTest::newRow("on acknowledged off") << s("+a-") << QString();
    QTest::newRow("on twice") << s("++") << s("10");
    QTest::newRow("on acknowledged on") << s("+a+") << s("11");
    QTest::newRow("comes again") << s("+-+") << s("10");
    QTest::newRow("comes again, acknowledged, off") << s("+-+a-") << QString();
    QTest::newRow("comes again after it was gone") << s("+a-+") << s("10");
    QTest::newRow("acknowledged first") << s("a+") << s("10");
    QTest::newRow("neutral") << s("0") << QString();
    QTest::newRow("neutral while on") << s("+0") << s("10");
}

void tst_AlarmList::followsOneAlarm()
{
    QFETCH(QString, steps);
    for (const QChar step : steps)
    {
        if (step == QLatin1Char('a'))
        {
            QVERIFY(acknowledge(s("id")) != Effect::failed);
        }
        else
        {
            const int state = step == QLatin1Char('+')   ? active
                              : step == QLatin1Char('-') ? inactive
                                                         : neutral;
            QVERIFY(m_list->apply(makeEvent(s("id"), state)) != Effect::failed);
        }
    }
    QTEST(rowOf(s("id")), "row");
}

void tst_AlarmList::tellsWhatHappens()
{
    QCOMPARE(acknowledge(s("a")), Effect::unknown);
    QCOMPARE(m_list->apply(makeEvent(s("a"), inactive)), Effect::none);
    QCOMPARE(m_list->apply(makeEvent(s("a"), active)), Effect::occurred);
    QCOMPARE(m_list->apply(makeEvent(s("a"), active)), Effect::none);
    Event changed = makeEvent(s("a"), active);
    changed.description = s("hotter");
    QCOMPARE(m_list->apply(changed), Effect::changed);
    QCOMPARE(acknowledge(s("a")), Effect::changed);
    QCOMPARE(m_acknowledged.description, s("hotter"));
    QCOMPARE(m_acknowledged.alarmId, s("a"));
    QCOMPARE(acknowledge(s("a")), Effect::none);
    QCOMPARE(m_list->apply(makeEvent(s("a"), inactive)), Effect::changed);
    QCOMPARE(m_list->apply(makeEvent(s("a"), inactive)), Effect::none);
    QCOMPARE(m_list->apply(makeEvent(s("x"), active, otherEvents)), Effect::none);
    QCOMPARE(m_list->apply(makeEvent(s("x"), active, auditTrail)), Effect::none);
    QCOMPARE(m_list->setCentralDetector(true), Effect::changed);
    QCOMPARE(m_list->setCentralDetector(true), Effect::none);
}

void tst_AlarmList::knowsItsStates()
{
    const auto states = [this] {
        const AlarmList::States& now = m_list->states();
        QString text;
        for (const bool isOn : {now.hasAlarm, now.hasActiveAlarm, now.hasFault, now.hasActiveFault,
                                now.isCentralDetectorActive})
        {
            text += isOn ? QLatin1Char('1') : QLatin1Char('0');
        }
        return text;
    };
    QCOMPARE(states(), s("00000"));
    m_list->apply(makeEvent(s("a"), active));
    QCOMPARE(states(), s("11000"));
    m_list->apply(makeEvent(s("f"), active, fault));
    QCOMPARE(states(), s("11110"));
    m_list->apply(makeEvent(s("a"), inactive));
    QCOMPARE(states(), s("10110"));
    acknowledge(s("a"));
    QCOMPARE(states(), s("00110"));
    acknowledge(s("f"));
    m_list->setCentralDetector(true);
    QCOMPARE(states(), s("00111"));
    m_list->apply(makeEvent(s("f"), inactive, fault));
    QCOMPARE(states(), s("00001"));
}

void tst_AlarmList::namesAnAlarmWithoutId()
{
    m_list->apply(makeEvent(QString(), active));
    QCOMPARE(rowOf(s("-pump/pump/Hot")), s("10"));
    QCOMPARE(acknowledge(QString()), Effect::unknown);
    QCOMPARE(acknowledge(s("-pump/pump/Hot")), Effect::changed);
}

void tst_AlarmList::comesBackToTheFileAfterARollback()
{
    m_list->apply(makeEvent(s("a"), active));
    QVERIFY(m_database->begin());
    acknowledge(s("a"));
    m_list->apply(makeEvent(s("b"), active));
    m_list->setCentralDetector(true);
    m_list->countRefused();
    m_database->rollback();
    QVERIFY(m_list->load());
    QCOMPARE(rowOf(s("a")), s("10"));
    QCOMPARE(rowOf(s("b")), QString());
    QCOMPARE(m_list->rowCount(), 1);
    QVERIFY(!m_list->states().isCentralDetectorActive);
    QCOMPARE(m_list->refusedCount(), qint64(0));
}

void tst_AlarmList::readsTheSameAfterAReload()
{
    m_list->apply(makeEvent(s("a"), active));
    m_list->apply(makeEvent(s("f"), active, fault));
    acknowledge(s("f"), s("schmidt"));
    m_list->setCentralDetector(true);
    m_list->countRefused();
    ListAnswer before(AlarmList::header());
    QVERIFY(m_list->read(s("lang_en"), before));
    AlarmList again(*m_database, 3, 1000000);
    QVERIFY(again.load());
    ListAnswer after(AlarmList::header());
    QVERIFY(again.read(s("lang_en"), after));
    QCOMPARE(after.rows(), before.rows());
    QVERIFY(again.states() == m_list->states());
    QCOMPARE(again.refusedCount(), qint64(1));
    QCOMPARE(after.rows().constFirst().mid(AlarmList::header().size() - 2),
             QStringList({s("schmidt"), s("2026-03-14T09:26:53.589+01:00")}));
}

void tst_AlarmList::givesWayToNewAlarmsButNeverAnActiveOne()
{
    for (const char* id : {"a", "b", "c"})
    {
        QCOMPARE(m_list->apply(makeEvent(s(id), active)), Effect::occurred);
    }
    QCOMPARE(m_list->apply(makeEvent(s("d"), active)), Effect::overflow);
    m_list->apply(makeEvent(s("c"), inactive));
    m_list->apply(makeEvent(s("b"), inactive));
    QTest::ignoreMessage(
        QtWarningMsg, "The alarm list is full: \"b\" gives way without having been acknowledged");
    QCOMPARE(m_list->apply(makeEvent(s("d"), active)), Effect::displaced);
    QCOMPARE(rowOf(s("b")), QString());
    QCOMPARE(rowOf(s("c")), s("00"));
    QCOMPARE(rowOf(s("a")), s("10"));
    QCOMPARE(m_list->rowCount(), 3);
}

void tst_AlarmList::isBoundedBySizeToo()
{
    Event large = makeEvent(s("large"), active);
    large.description = QString(999000, QLatin1Char('x'));
    QCOMPARE(m_list->apply(large), Effect::occurred);
    large.alarmId = s("second");
    QCOMPARE(m_list->apply(large), Effect::overflow);
    acknowledge(s("large"));
    m_list->apply(makeEvent(s("large"), inactive));
    QCOMPARE(m_list->apply(large), Effect::occurred);
}

void tst_AlarmList::losesNothingToAnAlarmThatIsRefused()
{
    Event large = makeEvent(s("stays"), active);
    large.description = QString(600000, QLatin1Char('x'));
    QCOMPARE(m_list->apply(large), Effect::occurred);
    QCOMPARE(m_list->apply(makeEvent(s("gone"), active)), Effect::occurred);
    QCOMPARE(m_list->apply(makeEvent(s("gone"), inactive)), Effect::changed);
    // All that is gone would not be room enough, neither for another nor for itself.
    for (const char* id : {"refused", "gone"})
    {
        large.alarmId = s(id);
        QCOMPARE(m_list->apply(large), Effect::overflow);
    }
    QCOMPARE(rowOf(s("gone")), s("00"));
    QCOMPARE(rowOf(s("stays")), s("10"));
    QCOMPARE(m_list->rowCount(), 2);
}

void tst_AlarmList::comesAgainInTheRoomOfItsOwnRow()
{
    for (const char* id : {"a", "b", "c"})
    {
        m_list->apply(makeEvent(s(id), active));
    }
    m_list->apply(makeEvent(s("a"), inactive));
    m_list->apply(makeEvent(s("b"), inactive));
    QCOMPARE(m_list->apply(makeEvent(s("b"), active)), Effect::occurred);
    QCOMPARE(rowOf(s("a")), s("00"));
    QCOMPARE(rowOf(s("b")), s("10"));
}

void tst_AlarmList::changesItsKindWithTheSender()
{
    m_list->apply(makeEvent(s("a"), active, alarm));
    m_list->apply(makeEvent(s("a"), active, fault));
    QVERIFY(!m_list->states().hasAlarm);
    QVERIFY(m_list->states().hasActiveFault);
    m_list->apply(makeEvent(s("a"), inactive, alarm));
    QVERIFY(m_list->states().hasFault);
    QVERIFY(!m_list->states().hasActiveFault);
}

void tst_AlarmList::countsEverythingAsGone()
{
    QCOMPARE(m_list->endAll(), Effect::none);
    m_list->apply(makeEvent(s("a"), active));
    m_list->apply(makeEvent(s("f"), active, fault));
    m_list->apply(makeEvent(s("gone"), active));
    m_list->apply(makeEvent(s("gone"), inactive));
    acknowledge(s("f"));
    QCOMPARE(m_list->endAll(), Effect::changed);
    QCOMPARE(rowOf(s("a")), s("00"));
    QCOMPARE(rowOf(s("f")), QString());
    QCOMPARE(rowOf(s("gone")), s("00"));
    QVERIFY(m_list->states().hasAlarm);
    QVERIFY(!m_list->states().hasActiveAlarm);
    QVERIFY(!m_list->states().hasFault);
    QCOMPARE(m_list->endAll(), Effect::none);
    QCOMPARE(acknowledge(s("a")), Effect::changed);
    QCOMPARE(m_list->rowCount(), 1);
}

QTEST_GUILESS_MAIN(tst_AlarmList)
#include "tst_AlarmList.moc"
