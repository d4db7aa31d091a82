#include "EventRead/EventHandlerRead.h"

#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "bus/CentralServiceTest.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QThread>
#include <QTimeZone>

#include <atomic>

using EventType = EventlistHandlerEnums::EventType;
using EventTypes = QList<EventType>;

namespace
{
const QString context = QStringLiteral("lang_de");

QDateTime timeAt(int hour)
{
    return QDateTime(QDate(2026, 3, 14), QTime(hour, 0), QTimeZone("Europe/Berlin"));
}

const QByteArray head = "call /EventlistRead Interface.EventlistRead.";
const QByteArray times = "\"2026-03-14T09:00:00.000+01:00\",\"2026-03-14T10:00:00.000+01:00\"";
} // namespace

class tst_EventHandlerRead : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void forwardsTheTwoPlainQueries();
    void filtersByTime();
    void filtersByUnixTime();
    void filtersById();
    void filtersByKeywords_data();
    void filtersByKeywords();
    void filtersByModuleName();
    void sendsEachEventTypeAsOneCharacter_data();
    void sendsEachEventTypeAsOneCharacter();
    void handsTimesInReverseOrderAndOddNumbersOn_data();
    void handsTimesInReverseOrderAndOddNumbersOn();
    void eachQueryWarnsOnceWithoutService();
    void noQueryWaitsForAFrozenService();
    void answersOutliveTheReader();
    void passesTheChangeOn();
    void passesTheChangeOnAfterRestarts();
    void passesTheChangeOnInAnotherThread();
    void belongsToItsParent();
};

void tst_EventHandlerRead::forwardsTheTwoPlainQueries()
{
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader.getCompleteEventlist(context).isNull());
    QVERIFY(!reader.getListOfEventTypes(QStringLiteral("x")).isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].toText(), head + "getCompleteEventlist \"s\" [\"lang_de\"]");
    QCOMPARE(received[1].toText(), head + "getListOfEventTypes \"s\" [\"x\"]");
}

void tst_EventHandlerRead::filtersByTime()
{
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader
                 .getPartOfEventlistFilteredByStartEndTime(context, timeAt(9), timeAt(10),
                                                           {QStringLiteral("extra")}, 5)
                 .isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(), head +
                                       "getPartOfEventlist \"sasasasasssasi\" "
                                       "[\"lang_de\",[],[],[],[]," +
                                       times + ",[\"extra\"],5]");
}

void tst_EventHandlerRead::filtersByUnixTime()
{
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader
                 .getPartOfEventlistFilteredByStartEndUnixTime(context, 17, 18,
                                                               {QStringLiteral("extra")}, 5)
                 .isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(), head + "getPartOfEventlistUnixTime \"sasasasasxxasi\" "
                                          "[\"lang_de\",[],[],[],[],17,18,[\"extra\"],5]");
}

void tst_EventHandlerRead::filtersById()
{
    EventHandlerRead reader(nullptr);
    for (const bool flag : {true, false})
    {
        QVERIFY(!reader
                     .getPartOfEventlistFilteredById(context, 17, 18, {QStringLiteral("extra")}, 5,
                                                     flag)
                     .isNull());
    }
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    const QByteArray common = head + "getPartOfEventlistById \"sasasasasxxasib\" "
                                     "[\"lang_de\",[],[],[],[],17,18,[\"extra\"],5,";
    QCOMPARE(received[0].toText(), common + "true]");
    QCOMPARE(received[1].toText(), common + "false]");
}

void tst_EventHandlerRead::filtersByKeywords_data()
{
    QTest::addColumn<QStringList>("keywords");
    QTest::addColumn<QByteArray>("sent");
    QTest::newRow("two") << QStringList{QStringLiteral("Error"), QStringLiteral("Boot")}
                         << QByteArray("[\"Error\",\"Boot\"]");
    QTest::newRow("none") << QStringList() << QByteArray("[]");
}

void tst_EventHandlerRead::filtersByKeywords()
{
    QFETCH(QStringList, keywords);
    QFETCH(QByteArray, sent);
    EventHandlerRead reader(nullptr);
    QVERIFY(
        !reader.getPartOfEventlistFilteredByKeywords(context, keywords, timeAt(9), timeAt(10), 5)
             .isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(), head +
                                       "getPartOfEventlist \"sasasasasssasi\" "
                                       "[\"lang_de\",[],[],[]," +
                                       sent + "," + times + ",[],5]");
}

void tst_EventHandlerRead::filtersByModuleName()
{
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader
                 .getPartOfEventlistFilteredByModuleName(
                     context, {QStringLiteral("PumpControl"), QStringLiteral("Valves")}, timeAt(9),
                     timeAt(10), 5)
                 .isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(), head +
                                       "getPartOfEventlist \"sasasasasssasi\" [\"lang_de\",[],[],"
                                       "[\"PumpControl\",\"Valves\"],[]," +
                                       times + ",[],5]");
}

void tst_EventHandlerRead::sendsEachEventTypeAsOneCharacter_data()
{
    QTest::addColumn<EventTypes>("types");
    QTest::addColumn<QStringList>("strings");
    const QString fault(QChar(2));
    const QString otherEvents(QChar(3));
    QTest::newRow("fault and other")
        << EventTypes{EventType::fault, EventType::otherEvents} << QStringList{fault, otherEvents};
    QTest::newRow("in the order of the list")
        << EventTypes{EventType::otherEvents, EventType::fault} << QStringList{otherEvents, fault};
    QTest::newRow("audit trail") << EventTypes{EventType::auditTrail}
                                 << QStringList{QString(QChar(1))};
    QTest::newRow("alarm arrives empty") << EventTypes{EventType::alarm} << QStringList{QString()};
    QTest::newRow("repeated") << EventTypes{EventType::fault, EventType::fault}
                              << QStringList{fault, fault};
    QTest::newRow("none") << EventTypes() << QStringList();
}

void tst_EventHandlerRead::sendsEachEventTypeAsOneCharacter()
{
    QFETCH(EventTypes, types);
    QFETCH(QStringList, strings);
    EventHandlerRead reader(nullptr);
    QVERIFY(!reader.getPartOfEventlistFilteredByEventType(context, types, timeAt(9), timeAt(10), 5)
                 .isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].signature, QStringLiteral("sasasasasssasi"));
    QCOMPARE(received[0].arguments[1].toArray(), QJsonArray::fromStringList(strings));
    for (const int empty : {2, 3, 4, 7})
    {
        QCOMPARE(received[0].arguments[empty].toArray(), QJsonArray());
    }
    QCOMPARE(received[0].arguments[8].toInt(), 5);
}

void tst_EventHandlerRead::handsTimesInReverseOrderAndOddNumbersOn_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("0") << 0;
    QTest::newRow("negative") << -1;
}

void tst_EventHandlerRead::handsTimesInReverseOrderAndOddNumbersOn()
{
    QFETCH(int, number);
    EventHandlerRead reader(nullptr);
    reader.getPartOfEventlistFilteredByStartEndTime(context, timeAt(10), timeAt(9), {}, number);
    reader.getPartOfEventlistFilteredByStartEndUnixTime(context, 18, 17, {}, number);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("2026-03-14T10:00:00.000+01:00"));
    QCOMPARE(received[0].arguments[6].toString(), QStringLiteral("2026-03-14T09:00:00.000+01:00"));
    QCOMPARE(received[0].arguments[8].toInt(), number);
    QCOMPARE(received[1].arguments[5].toInt(), 18);
    QCOMPARE(received[1].arguments[6].toInt(), 17);
}

void tst_EventHandlerRead::eachQueryWarnsOnceWithoutService()
{
    EventHandlerRead reader(nullptr);
    const EventlistHandlerDBusConnectorRead likeItsOwn(false);
    QVERIFY(takeServiceAway());
    for (int i = 0; i < 8; ++i)
    {
        expectRefusedQuery(likeItsOwn);
    }
    const QDateTime now = timeAt(9);
    QVERIFY(reader.getCompleteEventlist(context).isNull());
    QVERIFY(reader.getListOfEventTypes(context).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByStartEndTime(context, now, now, {}, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByStartEndUnixTime(context, 0, 0, {}, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredById(context, 0, 0, {}, 0, false).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByKeywords(context, {}, now, now, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByModuleName(context, {}, now, now, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByEventType(context, {}, now, now, 0).isNull());
}

void tst_EventHandlerRead::noQueryWaitsForAFrozenService()
{
    EventHandlerRead reader(nullptr);
    QVERIFY(m_service.freeze());
    const QStringList none;
    QElapsedTimer timer;
    timer.start();
    const QVector<DBusPendingReply::SharedPointer> replies{
        reader.getCompleteEventlist(context),
        reader.getListOfEventTypes(context),
        reader.getPartOfEventlistFilteredByStartEndTime(context, timeAt(9), timeAt(10), none, 0),
        reader.getPartOfEventlistFilteredByStartEndUnixTime(context, 1, 2, none, 0),
        reader.getPartOfEventlistFilteredById(context, 1, 2, none, 0, false),
        reader.getPartOfEventlistFilteredByKeywords(context, none, timeAt(9), timeAt(10), 0),
        reader.getPartOfEventlistFilteredByModuleName(context, none, timeAt(9), timeAt(10), 0),
        reader.getPartOfEventlistFilteredByEventType(context, {}, timeAt(9), timeAt(10), 0)};
    // The service answers after the thaw only: whoever had waited for it would be waiting still.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    for (const auto& reply : replies)
    {
        QVERIFY(!reply.isNull());
        QVERIFY(!reply->isFinished());
    }
    m_service.thaw();
    for (const auto& reply : replies)
    {
        QTRY_VERIFY(reply->isFinished());
        QVERIFY(!reply->isError());
    }
}

void tst_EventHandlerRead::answersOutliveTheReader()
{
    QVERIFY(m_service.answer(QStringLiteral("getCompleteEventlist"), QStringLiteral("s"),
                             {QStringLiteral("the list")}));
    DBusPendingReply::SharedPointer reply;
    {
        EventHandlerRead reader(nullptr);
        reply = reader.getCompleteEventlist(context);
    }
    QVERIFY(!reply.isNull());
    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->values(), QVariantList{QStringLiteral("the list")});
}

void tst_EventHandlerRead::passesTheChangeOn()
{
    EventHandlerRead reader(nullptr);
    QSignalSpy changed(&reader, &EventHandlerRead::changedEventlist);
    QVERIFY(emitSignal(QStringLiteral("/EventlistRead"), QStringLiteral("Interface.EventlistRead"),
                       QStringLiteral("changedEventlist"), QString(), {}, 2));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 2);
}

void tst_EventHandlerRead::passesTheChangeOnAfterRestarts()
{
    EventHandlerRead reader(nullptr);
    QSignalSpy changed(&reader, &EventHandlerRead::changedEventlist);
    QVERIFY(takeServiceAway());
    QVERIFY(bringServiceBack());
    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    // Each signal comes once: as soon as the first is there, all are.
    QTRY_VERIFY(emitSignal(QStringLiteral("/EventlistRead"),
                           QStringLiteral("Interface.EventlistRead"),
                           QStringLiteral("changedEventlist")) &&
                takeWhatWasSent() && changed.size() > 0);
    changed.clear();
    QVERIFY(emitSignal(QStringLiteral("/EventlistRead"), QStringLiteral("Interface.EventlistRead"),
                       QStringLiteral("changedEventlist"), QString(), {}, 3));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 3);
}

void tst_EventHandlerRead::passesTheChangeOnInAnotherThread()
{
    QThread thread;
    thread.start();
    auto* const reader = new EventHandlerRead(nullptr);
    reader->moveToThread(&thread);
    std::atomic<QThread*> emittedOn{nullptr};
    connect(
        reader, &EventHandlerRead::changedEventlist, reader,
        [&] { emittedOn = QThread::currentThread(); }, Qt::DirectConnection);

    QVERIFY(emitSignal(QStringLiteral("/EventlistRead"), QStringLiteral("Interface.EventlistRead"),
                       QStringLiteral("changedEventlist")));

    QTRY_COMPARE(emittedOn.load(), &thread);
    reader->deleteLater();
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_EventHandlerRead::belongsToItsParent()
{
    QObject owner;
    const auto* const reader = new EventHandlerRead(&owner);
    QCOMPARE(reader->parent(), &owner);
}

QTEST_GUILESS_MAIN(tst_EventHandlerRead)
#include "tst_EventHandlerRead.moc"
