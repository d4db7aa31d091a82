#include "core/EventFilter.h"

#include <QTest>

#include <limits>

using namespace eventlistd;

namespace
{
constexpr qint64 openStart = std::numeric_limits<qint64>::min();
constexpr qint64 openEnd = std::numeric_limits<qint64>::max();

EventFilterBuilder builder()
{
    return EventFilterBuilder(QStringLiteral("lang_en"));
}
} // namespace

class tst_EventFilter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsTypesAsCharacters_data();
    void readsTypesAsCharacters();
    void readsTimesAsText_data();
    void readsTimesAsText();
    void readsUnixTimes_data();
    void readsUnixTimes();
    void readsIds();
    void limitsRowsOnlyAboveZero();
    void looksForTextsAsTheListHasThem();
    void refusesListsThatAreTooLong();
};

void tst_EventFilter::readsTypesAsCharacters_data()
{
    QTest::addColumn<QStringList>("elements");
    QTest::addColumn<QList<int>>("types");
    QTest::addColumn<bool>("matchesNothing");
    const auto one = [](ushort code) { return QString(QChar(code)); };
    QTest::newRow("no restriction") << QStringList() << QList<int>() << false;
    QTest::newRow("cut by the bus") << QStringList{QString()} << QList<int>{0} << false;
    QTest::newRow("whole") << QStringList{one(0)} << QList<int>{0} << false;
    QTest::newRow("all") << QStringList{one(3), one(1), one(2), QString()} << QList<int>{3, 1, 2, 0}
                         << false;
    QTest::newRow("repeated") << QStringList{one(2), one(2)} << QList<int>{2} << false;
    QTest::newRow("beyond") << QStringList{one(4)} << QList<int>() << true;
    QTest::newRow("digit") << QStringList{QStringLiteral("0")} << QList<int>() << true;
    QTest::newRow("name") << QStringList{QStringLiteral("alarm")} << QList<int>() << true;
    QTest::newRow("two characters") << QStringList{one(1) + one(1)} << QList<int>() << true;
    QTest::newRow("one good") << QStringList{QStringLiteral("x"), one(1)} << QList<int>{1} << false;
}

void tst_EventFilter::readsTypesAsCharacters()
{
    QFETCH(QStringList, elements);
    QTEST(builder().eventTypes(elements).filter().types, "types");
    QTEST(builder().eventTypes(elements).filter().matchesNothing, "matchesNothing");
}

void tst_EventFilter::readsTimesAsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::newRow("offset") << QStringLiteral("2026-03-14T09:26:53.589+01:00")
                            << qint64(1773476813589) << qint64(1773476813589);
    QTest::newRow("utc") << QStringLiteral("2026-03-14T08:26:53.589Z") << qint64(1773476813589)
                         << qint64(1773476813589);
    QTest::newRow("empty") << QString() << openStart << openEnd;
    QTest::newRow("no time") << QStringLiteral("today") << openStart << openEnd;
    QTest::newRow("endless") << QString(1000000, QLatin1Char('2')) << openStart << openEnd;
}

void tst_EventFilter::readsTimesAsText()
{
    QFETCH(QString, text);
    QTEST(builder().timesAsText(text, QString()).filter().firstTimeMs, "start");
    QTEST(builder().timesAsText(QString(), text).filter().lastTimeMs, "end");
}

void tst_EventFilter::readsUnixTimes_data()
{
    QTest::addColumn<qint64>("number");
    QTest::addColumn<qint64>("start");
    QTest::addColumn<qint64>("end");
    QTest::newRow("zero") << qint64(0) << openStart << openEnd;
    QTest::newRow("negative") << openStart << openStart << openEnd;
    QTest::newRow("seconds") << qint64(1773476813) << qint64(1773476813000)
                             << qint64(1773476813999);
    QTest::newRow("last second") << qint64(99999999999) << qint64(99999999999000)
                                 << qint64(99999999999999);
    QTest::newRow("first millisecond")
        << qint64(100000000000) << qint64(100000000000) << qint64(100000000000);
    QTest::newRow("largest") << openEnd << openEnd << openEnd;
}

void tst_EventFilter::readsUnixTimes()
{
    QFETCH(qint64, number);
    QTEST(builder().unixTimes(number, 0).filter().firstTimeMs, "start");
    QTEST(builder().unixTimes(0, number).filter().lastTimeMs, "end");
}

void tst_EventFilter::readsIds()
{
    QCOMPARE(builder().ids(7, 9).filter().firstId, qint64(7));
    QCOMPARE(builder().ids(7, 9).filter().lastId, qint64(9));
    QCOMPARE(builder().ids(0, -1).filter().firstId, openStart);
    QCOMPARE(builder().ids(0, -1).filter().lastId, openEnd);
}

void tst_EventFilter::limitsRowsOnlyAboveZero()
{
    QCOMPARE(builder().rowLimit(1).filter().rowLimit, qint64(1));
    QCOMPARE(builder().rowLimit(0).filter().rowLimit, qint64(-1));
    QCOMPARE(builder().rowLimit(std::numeric_limits<int>::min()).filter().rowLimit, qint64(-1));
}

void tst_EventFilter::looksForTextsAsTheListHasThem()
{
    const QStringList given{QStringLiteral("\ufeffpump"), QStringLiteral("pump\uffff")};
    const QStringList kept{QStringLiteral("pump"), QStringLiteral("pump\ufffd")};
    QCOMPARE(builder().eventIds(given).filter().eventIds, kept);
    QCOMPARE(builder().moduleNames(given).filter().moduleNames, kept);
    QCOMPARE(builder().keywords(given).filter().keywords, kept);
    // No type is made of what is none: the empty text is an alarm.
    QVERIFY(builder().eventTypes({QStringLiteral("\ufeff")}).filter().matchesNothing);
}

void tst_EventFilter::refusesListsThatAreTooLong()
{
    QStringList list;
    for (int i = 0; i < longestFilterList; ++i)
    {
        list.append(QString());
    }
    QVERIFY(builder().moduleNames(list).keywords(list).isValid());
    list.append(QString());
    QVERIFY(!builder().eventTypes(list).isValid());
    QVERIFY(!builder().eventIds(list).isValid());
    QVERIFY(!builder().moduleNames(list).isValid());
    QVERIFY(!builder().keywords(list).isValid());
    QVERIFY(!builder().columns(list).isValid());
}

QTEST_APPLESS_MAIN(tst_EventFilter)
#include "tst_EventFilter.moc"
