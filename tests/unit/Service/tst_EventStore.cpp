#include "core/EventStore.h"

#include "core/Database.h"
#include "core/EventColumns.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace eventlistd;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

Event makeEvent(int number, int type = otherEvents)
{
    Event made;
    made.type = type;
    made.moduleName = s("m%1").arg(number % 3);
    made.keywords = QStringList({s("Firmware"), s("k%1").arg(number % 2)});
    made.eventId = s("e%1").arg(number);
    made.description = QString::number(number);
    made.timestamp = s("t");
    made.timeMs = 1000 * number;
    return made;
}
} // namespace

class tst_EventStore : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void givesNumbersThatGoOnAfterAReload();
    void givesNumbersThatGoOnAfterADeletion();
    void removesADeletedListPieceByPiece();
    void dropsWhatWasRolledBack();
    void keepsNoMoreRowsThanItMay();
    void keepsNoMoreBytesThanItMay();
    void findsKeywordsAsAWhole();
    void keepsKeywordsThatHoldTheirOwnMark();
    void readsBothDirections();
    void readsNothingForAFilterThatMatchesNothing();
    void remembersASpoolFileOnce();
    void forgetsOldSpoolFiles();
    void leavesColumnsOutThatNobodyWants();
    void tellsTheSenderOnRequestOnly();
    void keepsNulAndSpecialCharacters();

private:
    void fill(int count);
    QStringList read(const EventFilter& filter, const QString& column = s("Description"));

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<EventStore> m_store;
};

void tst_EventStore::init()
{
    m_store.reset();
    m_database.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_database = std::make_unique<Database>(m_folder->filePath(s("list.sqlite")));
    QCOMPARE(m_database->open(), Database::Opened::asNew);
    m_store = std::make_unique<EventStore>(*m_database, 1000000, qint64(1) << 40);
    QVERIFY(m_store->load());
}

void tst_EventStore::fill(int count)
{
    QVERIFY(m_database->begin());
    for (int i = 0; i < count; ++i)
    {
        Event made = makeEvent(i);
        QVERIFY(m_store->append(made));
    }
    QVERIFY(m_store->prune());
    QVERIFY(m_store->saveCounters());
    QVERIFY(m_database->commit());
}

QStringList tst_EventStore::read(const EventFilter& filter, const QString& column)
{
    const EventColumns columns({column});
    ListAnswer answer(columns.header());
    if (!m_store->read(filter, columns, answer))
    {
        return {s("read failed")};
    }
    QStringList values;
    for (const QStringList& row : answer.rows())
    {
        values.append(row.constFirst());
    }
    return values;
}

void tst_EventStore::givesNumbersThatGoOnAfterAReload()
{
    fill(3);
    EventStore again(*m_database, 1000, qint64(1) << 40);
    QVERIFY(again.load());
    QCOMPARE(again.rowCount(), qint64(3));
    QCOMPARE(again.lastId(), qint64(3));
    Event next = makeEvent(3);
    QVERIFY(again.append(next));
    QCOMPARE(next.id, qint64(4));
}

void tst_EventStore::givesNumbersThatGoOnAfterADeletion()
{
    fill(3);
    QVERIFY(m_database->begin());
    QVERIFY(m_store->removeAll());
    QVERIFY(m_database->commit());
    QCOMPARE(m_store->rowCount(), qint64(0));
    QCOMPARE(read(EventFilter()), QStringList());
    QVERIFY(m_store->load());
    QCOMPARE(m_store->rowCount(), qint64(0));
    Event next = makeEvent(0);
    QVERIFY(m_store->append(next));
    QCOMPARE(next.id, qint64(4));
}

void tst_EventStore::removesADeletedListPieceByPiece()
{
    fill(25);
    QVERIFY(!m_store->hasLeftovers());
    QVERIFY(m_store->removeAll());
    Event next = makeEvent(99);
    QVERIFY(m_store->append(next));
    QVERIFY(m_store->load());
    QVERIFY(m_store->hasLeftovers());
    QCOMPARE(m_store->rowCount(), qint64(1));
    for (int i = 0; i < 3; ++i)
    {
        QVERIFY(m_store->hasLeftovers());
        QVERIFY(m_store->purge(10));
        QCOMPARE(read(EventFilter()), QStringList({s("99")}));
    }
    QVERIFY(!m_store->hasLeftovers());
    QSqlQuery& count = m_database->statement(s("SELECT count(*) FROM content"));
    QVERIFY(m_database->run(count) && count.next());
    QCOMPARE(count.value(0).toInt(), 1);
}

void tst_EventStore::dropsWhatWasRolledBack()
{
    fill(2);
    QVERIFY(m_database->begin());
    Event lost = makeEvent(9);
    QVERIFY(m_store->append(lost));
    m_database->rollback();
    QVERIFY(m_store->load());
    QCOMPARE(read(EventFilter()), QStringList({s("1"), s("0")}));
    QCOMPARE(m_store->lastId(), qint64(2));
}

void tst_EventStore::keepsNoMoreRowsThanItMay()
{
    m_store = std::make_unique<EventStore>(*m_database, 10, qint64(1) << 40);
    QVERIFY(m_store->load());
    fill(25);
    QCOMPARE(m_store->rowCount(), qint64(10));
    const QStringList left = read(EventFilter());
    QCOMPARE(left.size(), 10);
    QCOMPARE(left.constFirst(), s("24"));
    QCOMPARE(left.constLast(), s("15"));
    QVERIFY(m_store->load());
    QCOMPARE(m_store->rowCount(), qint64(10));
}

void tst_EventStore::keepsNoMoreBytesThanItMay()
{
    m_store = std::make_unique<EventStore>(*m_database, 1000000, 1000000);
    QVERIFY(m_store->load());
    QVERIFY(m_database->begin());
    for (int i = 0; i < 100; ++i)
    {
        Event made = makeEvent(i);
        made.metaData = QString(50000, QLatin1Char('x'));
        QVERIFY(m_store->append(made));
    }
    QVERIFY(m_store->prune());
    QVERIFY(m_database->commit());
    QVERIFY(m_database->usedBytes() <= 1000000);
    QVERIFY(m_store->rowCount() > 5);
    QCOMPARE(read(EventFilter()).constFirst(), s("99"));
    QCOMPARE(qint64(read(EventFilter()).size()), m_store->rowCount());
}

void tst_EventStore::findsKeywordsAsAWhole()
{
    Event first = makeEvent(0);
    first.keywords = QStringList({s("Error"), s("Firm")});
    Event second = makeEvent(1);
    second.keywords = QStringList({s("Firmware")});
    Event third = makeEvent(2);
    third.keywords = QStringList();
    QVERIFY(m_store->append(first) && m_store->append(second) && m_store->append(third));
    EventFilter filter;
    filter.keywords = QStringList({s("Firm")});
    QCOMPARE(read(filter), QStringList({s("0")}));
    filter.keywords = QStringList({s("Firmware"), s("Error")});
    QCOMPARE(read(filter), QStringList({s("1"), s("0")}));
    filter.keywords = QStringList({s("firm")});
    QCOMPARE(read(filter), QStringList());
    QCOMPARE(read(EventFilter(), s("KeywordName")),
             QStringList({QString(), s("Firmware"), s("Error;Firm")}));
}

void tst_EventStore::keepsKeywordsThatHoldTheirOwnMark()
{
    const QString odd = s("Error\x1f") + s("Firmware");
    const QString odder = s("\x1b\x1f") + s("m\x1b") + s("me\x1b");
    Event first = makeEvent(0);
    first.keywords = QStringList({s("Error"), s("Firmware")});
    Event second = makeEvent(1);
    second.keywords = QStringList({odd, odder});
    QVERIFY(m_store->append(first) && m_store->append(second));

    QCOMPARE(read(EventFilter(), s("KeywordName")),
             QStringList({odd + s(";") + odder, s("Error;Firmware")}));
    EventFilter filter;
    filter.keywords = QStringList({odd});
    QCOMPARE(read(filter), QStringList({s("1")}));
    filter.keywords = QStringList({odder});
    QCOMPARE(read(filter), QStringList({s("1")}));
    filter.keywords = QStringList({s("Firmware")});
    QCOMPARE(read(filter), QStringList({s("0")}));
}

void tst_EventStore::readsBothDirections()
{
    fill(5);
    EventFilter filter;
    filter.rowLimit = 2;
    QCOMPARE(read(filter), QStringList({s("4"), s("3")}));
    filter.oldestFirst = true;
    QCOMPARE(read(filter), QStringList({s("0"), s("1")}));
    filter.firstId = 4;
    QCOMPARE(read(filter), QStringList({s("3"), s("4")}));
}

void tst_EventStore::readsNothingForAFilterThatMatchesNothing()
{
    fill(2);
    EventFilter filter;
    filter.matchesNothing = true;
    QCOMPARE(read(filter), QStringList());
}

void tst_EventStore::remembersASpoolFileOnce()
{
    const SpoolKey key{1, 2, 3, "hash"};
    bool isRepeated = true;
    QVERIFY(m_store->rememberSpoolFile(key, isRepeated));
    QVERIFY(!isRepeated);
    QVERIFY(m_store->rememberSpoolFile(key, isRepeated));
    QVERIFY(isRepeated);
    const SpoolKey others[] = {
        {0, 2, 3, "hash"}, {1, 0, 3, "hash"}, {1, 2, 0, "hash"}, {1, 2, 3, "hasH"}};
    for (const SpoolKey& other : others)
    {
        QVERIFY(m_store->rememberSpoolFile(other, isRepeated));
        QVERIFY(!isRepeated);
    }
}

void tst_EventStore::forgetsOldSpoolFiles()
{
    bool isRepeated = false;
    QVERIFY(m_database->begin());
    for (quint64 i = 0; i < 10100; ++i)
    {
        QVERIFY(m_store->rememberSpoolFile({1, i, 3, "hash"}, isRepeated));
    }
    QVERIFY(m_database->commit());
    QVERIFY(m_store->rememberSpoolFile({1, 10099, 3, "hash"}, isRepeated));
    QVERIFY(isRepeated);
    QVERIFY(m_store->rememberSpoolFile({1, 0, 3, "hash"}, isRepeated));
    QVERIFY(!isRepeated);
}

void tst_EventStore::leavesColumnsOutThatNobodyWants()
{
    fill(1);
    const EventColumns columns({s("State"), s("Nonsense"), s("EventlistId"), s("State")});
    ListAnswer answer(columns.header());
    QVERIFY(m_store->read(EventFilter(), columns, answer));
    QCOMPARE(answer.header(), QStringList({s("State"), s("EventlistId")}));
    QCOMPARE(answer.rows(), Rows({{s("0"), s("1")}}));
    QCOMPARE(EventColumns().header().size(), 17);
}

void tst_EventStore::tellsTheSenderOnRequestOnly()
{
    QVERIFY(!EventColumns().contains(s("SenderUid")));
    Event known = makeEvent(0);
    known.senderUid = 0;
    known.senderPid = 4294967295;
    Event spooled = makeEvent(1);
    spooled.senderUid = 1000;
    Event unknown = makeEvent(2);
    QVERIFY(m_store->append(known));
    QVERIFY(m_store->append(spooled));
    QVERIFY(m_store->append(unknown));

    const EventColumns columns({s("SenderPid"), s("*"), s("SenderUid")});
    QCOMPARE(columns.header(),
             QStringList{s("SenderPid")} + EventColumns().header() + QStringList{s("SenderUid")});
    QCOMPARE(read(EventFilter(), s("SenderUid")), QStringList({s(""), s("1000"), s("0")}));
    QCOMPARE(read(EventFilter(), s("SenderPid")), QStringList({s(""), s(""), s("4294967295")}));
}

void tst_EventStore::keepsNulAndSpecialCharacters()
{
    const QString odd = QString(QChar(0)) + s("'\"\\%_äöü😀") + QChar(0x1f);
    Event made = makeEvent(0);
    made.moduleName = odd;
    made.user = odd;
    QVERIFY(m_store->append(made));
    EventFilter filter;
    filter.moduleNames = QStringList({odd});
    QCOMPARE(read(filter, s("User")), QStringList({odd}));
}

QTEST_GUILESS_MAIN(tst_EventStore)
#include "tst_EventStore.moc"
