#include "Platform/IsoDateConverter.h"

#include <QTest>
#include <QTimeZone>

#include <ctime>

namespace
{
QString convert(const QDateTime& dateTime)
{
    return IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(dateTime);
}

void setTimeZone(const QByteArray& name)
{
    qputenv("TZ", name);
    ::tzset();
}
} // namespace

class tst_IsoDateConverter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void writesALocalTimeWithItsOffset_data();
    void writesALocalTimeWithItsOffset();
    void writesTimesThatKnowTheirOffset_data();
    void writesTimesThatKnowTheirOffset();
    void answersWhatIsNoTimeWithTheEmptyString_data();
    void answersWhatIsNoTimeWithTheEmptyString();
    void namesTheInstantItWasGiven_data();
    void namesTheInstantItWasGiven();

private:
    QByteArray m_timeZone;
};

void tst_IsoDateConverter::initTestCase()
{
    m_timeZone = qgetenv("TZ");
}

void tst_IsoDateConverter::cleanup()
{
    setTimeZone(m_timeZone);
}

void tst_IsoDateConverter::writesALocalTimeWithItsOffset_data()
{
    QTest::addColumn<QByteArray>("timeZone");
    QTest::addColumn<qint64>("unixTimeMs");
    QTest::addColumn<QString>("text");

    QTest::newRow("Berlin, winter") << QByteArray("Europe/Berlin") << Q_INT64_C(1773476813589)
                                    << QStringLiteral("2026-03-14T09:26:53.589+01:00");
    QTest::newRow("Berlin, summer") << QByteArray("Europe/Berlin") << Q_INT64_C(1782864000007)
                                    << QStringLiteral("2026-07-01T02:00:00.007+02:00");
    QTest::newRow("Berlin, autumn, first 02:30")
        << QByteArray("Europe/Berlin") << Q_INT64_C(1792888200000)
        << QStringLiteral("2026-10-25T02:30:00.000+02:00");
    QTest::newRow("Berlin, autumn, second 02:30")
        << QByteArray("Europe/Berlin") << Q_INT64_C(1792891800000)
        << QStringLiteral("2026-10-25T02:30:00.000+01:00");
    QTest::newRow("Berlin, last ms before the spring gap")
        << QByteArray("Europe/Berlin") << Q_INT64_C(1774745999999)
        << QStringLiteral("2026-03-29T01:59:59.999+01:00");
    QTest::newRow("Berlin, first ms after the spring gap")
        << QByteArray("Europe/Berlin") << Q_INT64_C(1774746000000)
        << QStringLiteral("2026-03-29T03:00:00.000+02:00");
    QTest::newRow("UTC") << QByteArray("UTC") << Q_INT64_C(1773476813589)
                         << QStringLiteral("2026-03-14T08:26:53.589+00:00");
    QTest::newRow("London, winter") << QByteArray("Europe/London") << Q_INT64_C(1768435200000)
                                    << QStringLiteral("2026-01-15T00:00:00.000+00:00");
    QTest::newRow("Kathmandu") << QByteArray("Asia/Kathmandu") << Q_INT64_C(1773476813589)
                               << QStringLiteral("2026-03-14T14:11:53.589+05:45");
    QTest::newRow("St. John's") << QByteArray("America/St_Johns") << Q_INT64_C(1768435200000)
                                << QStringLiteral("2026-01-14T20:30:00.000-03:30");
    QTest::newRow("Marquesas") << QByteArray("Pacific/Marquesas") << Q_INT64_C(1773476813589)
                               << QStringLiteral("2026-03-13T22:56:53.589-09:30");
    QTest::newRow("a zone by rule")
        << QByteArray("XXX-14") << Q_INT64_C(0) << QStringLiteral("1970-01-01T14:00:00.000+14:00");
}

void tst_IsoDateConverter::writesALocalTimeWithItsOffset()
{
    QFETCH(QByteArray, timeZone);
    QFETCH(qint64, unixTimeMs);
    QFETCH(QString, text);
    setTimeZone(timeZone);

    QCOMPARE(convert(QDateTime::fromMSecsSinceEpoch(unixTimeMs)), text);
}

void tst_IsoDateConverter::writesTimesThatKnowTheirOffset_data()
{
    QTest::addColumn<QDateTime>("dateTime");
    QTest::addColumn<QString>("text");

    const QDate date(2026, 3, 14);
    const QTime time(9, 26, 53, 589);
    QTest::newRow("UTC") << QDateTime(date, time, Qt::UTC)
                         << QStringLiteral("2026-03-14T09:26:53.589+00:00");
    QTest::newRow("offset zero") << QDateTime(date, time, Qt::OffsetFromUTC, 0)
                                 << QStringLiteral("2026-03-14T09:26:53.589+00:00");
    QTest::newRow("offset of minutes") << QDateTime(date, time, Qt::OffsetFromUTC, -1800)
                                       << QStringLiteral("2026-03-14T09:26:53.589-00:30");
    QTest::newRow("named zone") << QDateTime(date, time, QTimeZone("Asia/Tokyo"))
                                << QStringLiteral("2026-03-14T09:26:53.589+09:00");
    QTest::newRow("first year") << QDateTime(QDate(1, 1, 1), QTime(0, 0), Qt::UTC)
                                << QStringLiteral("0001-01-01T00:00:00.000+00:00");
    QTest::newRow("last year") << QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999), Qt::UTC)
                               << QStringLiteral("9999-12-31T23:59:59.999+00:00");
}

void tst_IsoDateConverter::writesTimesThatKnowTheirOffset()
{
    QFETCH(QDateTime, dateTime);
    QFETCH(QString, text);

    QCOMPARE(convert(dateTime), text);
}

void tst_IsoDateConverter::answersWhatIsNoTimeWithTheEmptyString_data()
{
    QTest::addColumn<QDateTime>("dateTime");

    setTimeZone("Europe/Berlin");
    QTest::newRow("null") << QDateTime();
    QTest::newRow("no such day") << QDateTime(QDate(2026, 2, 30), QTime(1, 0));
    QTest::newRow("skipped in spring") << QDateTime(QDate(2026, 3, 29), QTime(2, 30));
    QTest::newRow("year of five digits") << QDateTime(QDate(10000, 1, 1), QTime(0, 0), Qt::UTC);
    QTest::newRow("before our era") << QDateTime(QDate(-1, 1, 1), QTime(0, 0), Qt::UTC);
}

void tst_IsoDateConverter::answersWhatIsNoTimeWithTheEmptyString()
{
    QFETCH(QDateTime, dateTime);
    setTimeZone("Europe/Berlin");

    QCOMPARE(convert(dateTime), QString());
}

void tst_IsoDateConverter::namesTheInstantItWasGiven_data()
{
    QTest::addColumn<QByteArray>("timeZone");

    for (const char* name : {"Europe/Berlin", "America/New_York", "Australia/Lord_Howe",
                             "Africa/Casablanca", "Asia/Kolkata", "UTC"})
    {
        QTest::newRow(name) << QByteArray(name);
    }
}

void tst_IsoDateConverter::namesTheInstantItWasGiven()
{
    QFETCH(QByteArray, timeZone);
    setTimeZone(timeZone);

    // Steps of seven hours and a bit over six years: every change of the clock is met.
    constexpr qint64 stepMs = Q_INT64_C(25261907);
    for (qint64 unixTimeMs = Q_INT64_C(1600000000000); unixTimeMs < Q_INT64_C(1800000000000);
         unixTimeMs += stepMs)
    {
        const QString text = convert(QDateTime::fromMSecsSinceEpoch(unixTimeMs));
        QCOMPARE(text.size(), 29);
        QCOMPARE(QDateTime::fromString(text, Qt::ISODateWithMs).toMSecsSinceEpoch(), unixTimeMs);
    }
}

QTEST_APPLESS_MAIN(tst_IsoDateConverter)
#include "tst_IsoDateConverter.moc"
