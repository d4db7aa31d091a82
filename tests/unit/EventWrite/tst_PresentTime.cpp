#include "EventWrite/detail/PresentTime.h"

#include "Platform/IsoDateConverter.h"

#include <QDateTime>
#include <QTest>

#include <ctime>
#include <thread>
#include <vector>

namespace
{

constexpr qint64 msPerMinute = 60000;

qint64 unixTimeMs(const char* utc)
{
    return QDateTime::fromString(QString::fromLatin1(utc), Qt::ISODateWithMs).toMSecsSinceEpoch();
}

QString askedAnew(qint64 timeMs)
{
    return IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(
        QDateTime::fromMSecsSinceEpoch(timeMs));
}

void setTimeZone(const QByteArray& name)
{
    qputenv("TZ", name);
    tzset();
}

} // namespace

class tst_PresentTime : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { setTimeZone("Europe/Berlin"); }
    void cleanupTestCase() { setTimeZone("Europe/Berlin"); }

    void isThePresentTime();
    void changesWithDaylightSavingToTheMillisecond_data();
    void changesWithDaylightSavingToTheMillisecond();
    void isTheTimeOfAClockThatWasNeverSet();
    void sawTheTimeZoneOnceInAMinute();
    void isRightInSeveralThreads();
};

void tst_PresentTime::isThePresentTime()
{
    const QDateTime before = QDateTime::currentDateTime();
    const QDateTime stamped = QDateTime::fromString(PresentTime::toText(), Qt::ISODateWithMs);

    QVERIFY(stamped >= before);
    QVERIFY(stamped <= QDateTime::currentDateTime());
    QCOMPARE(stamped.offsetFromUtc(), before.offsetFromUtc());
}

void tst_PresentTime::changesWithDaylightSavingToTheMillisecond_data()
{
    QTest::addColumn<QByteArray>("utc");
    QTest::addColumn<QString>("text");

    QTest::newRow("last of winter") << QByteArray("2026-03-29T00:59:59.999Z")
                                    << QStringLiteral("2026-03-29T01:59:59.999+01:00");
    QTest::newRow("first of summer") << QByteArray("2026-03-29T01:00:00.000Z")
                                     << QStringLiteral("2026-03-29T03:00:00.000+02:00");
    QTest::newRow("last of summer") << QByteArray("2026-10-25T00:59:59.999Z")
                                    << QStringLiteral("2026-10-25T02:59:59.999+02:00");
    QTest::newRow("first of winter") << QByteArray("2026-10-25T01:00:00.000Z")
                                     << QStringLiteral("2026-10-25T02:00:00.000+01:00");
}

void tst_PresentTime::changesWithDaylightSavingToTheMillisecond()
{
    QFETCH(QByteArray, utc);

    QTEST(PresentTime::toText(unixTimeMs(utc)), "text");
}

void tst_PresentTime::isTheTimeOfAClockThatWasNeverSet()
{
    QCOMPARE(PresentTime::toText(0), QStringLiteral("1970-01-01T01:00:00.000+01:00"));
}

void tst_PresentTime::sawTheTimeZoneOnceInAMinute()
{
    const qint64 minuteMs = unixTimeMs("2026-01-14T09:26:00.000Z");
    QCOMPARE(PresentTime::toText(minuteMs), QStringLiteral("2026-01-14T10:26:00.000+01:00"));

    // Without tzset(), as a change of the device's time zone comes.
    qputenv("TZ", "Asia/Tokyo");

    QCOMPARE(PresentTime::toText(minuteMs + msPerMinute - 1),
             QStringLiteral("2026-01-14T10:26:59.999+01:00"));
    QCOMPARE(PresentTime::toText(minuteMs + msPerMinute),
             QStringLiteral("2026-01-14T18:27:00.000+09:00"));
}

void tst_PresentTime::isRightInSeveralThreads()
{
    // Each thread has another season, and all of them one memory of the last minute.
    const std::vector<qint64> beginnings{
        unixTimeMs("2026-01-14T09:26:53.589Z"), unixTimeMs("2026-07-14T09:26:53.589Z"),
        unixTimeMs("2026-03-29T00:59:53.589Z"), unixTimeMs("2026-10-25T00:59:53.589Z")};
    std::vector<int> faults(beginnings.size(), -1);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < beginnings.size(); ++i)
    {
        threads.emplace_back([&, i] {
            int count = 0;
            for (int step = 0; step < 2000; ++step)
            {
                const qint64 timeMs = beginnings[i] + step % 10 * msPerMinute;
                count += PresentTime::toText(timeMs) == askedAnew(timeMs) ? 0 : 1;
            }
            faults[i] = count;
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    QCOMPARE(faults, std::vector<int>(beginnings.size(), 0));
}

QTEST_APPLESS_MAIN(tst_PresentTime)
#include "tst_PresentTime.moc"
