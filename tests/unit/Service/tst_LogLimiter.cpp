#include "core/LogLimiter.h"

#include <QTest>

using namespace eventlistd;

class tst_LogLimiter : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void letsABurstThroughThenOneEachInterval();
    void countsWhatItKeepsBack();
    void shortensLongValuesOnly();
};

void tst_LogLimiter::letsABurstThroughThenOneEachInterval()
{
    LogLimiter limiter(2, 1000);
    QVERIFY(limiter.allows(5000));
    QVERIFY(limiter.allows(5000));
    QVERIFY(!limiter.allows(5000));
    QVERIFY(!limiter.allows(5999));
    QVERIFY(limiter.allows(6000));
    QVERIFY(!limiter.allows(6500));
}

void tst_LogLimiter::countsWhatItKeepsBack()
{
    LogLimiter limiter(1, 1000);
    QVERIFY(limiter.allows(1000));
    QVERIFY(!limiter.allows(1000));
    QVERIFY(!limiter.allows(1000));
    QCOMPARE(limiter.takeSuppressed(), 2);
    QCOMPARE(limiter.takeSuppressed(), 0);
}

void tst_LogLimiter::shortensLongValuesOnly()
{
    const QString limit(longestLogValue, QLatin1Char('x'));
    QCOMPARE(shortened(limit), limit);
    QCOMPARE(shortened(limit + QLatin1Char('y')), limit + QStringLiteral("..."));
    QCOMPARE(shortened(QString()), QString());
}

QTEST_APPLESS_MAIN(tst_LogLimiter)
#include "tst_LogLimiter.moc"
