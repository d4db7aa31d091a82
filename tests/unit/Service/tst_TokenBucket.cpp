#include "core/TokenBucket.h"

#include <QTest>

using eventlistd::TokenBucket;

class tst_TokenBucket : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void givesItsBurstAndThenWhatComesWithTime();
    void neverHoldsMoreThanItsBurst();
    void takesNothingWhenThereIsNotEnough();
    void canBeOverdrawnAndFillsUpAgain();
    void standsStillWhenTheClockDoes();
};

void tst_TokenBucket::givesItsBurstAndThenWhatComesWithTime()
{
    TokenBucket bucket(10, 3);
    QVERIFY(bucket.take(1, 1000));
    QVERIFY(bucket.take(1, 1000));
    QVERIFY(bucket.take(1, 1000));
    QVERIFY(!bucket.take(1, 1000));
    QVERIFY(!bucket.take(1, 1099));
    QVERIFY(bucket.take(1, 1100));
    QVERIFY(!bucket.take(1, 1100));
}

void tst_TokenBucket::neverHoldsMoreThanItsBurst()
{
    TokenBucket bucket(10, 3);
    QVERIFY(bucket.take(1, 0));
    QVERIFY(bucket.take(3, 3600 * 1000));
    QVERIFY(!bucket.take(0.5, 3600 * 1000));
}

void tst_TokenBucket::takesNothingWhenThereIsNotEnough()
{
    TokenBucket bucket(1, 2);
    QVERIFY(!bucket.take(3, 0));
    QVERIFY(bucket.take(2, 0));
}

void tst_TokenBucket::canBeOverdrawnAndFillsUpAgain()
{
    TokenBucket bucket(1000, 10);
    bucket.takeAnyway(110, 0);
    QVERIFY(!bucket.isFilled(100));
    QVERIFY(bucket.isFilled(101));
}

void tst_TokenBucket::standsStillWhenTheClockDoes()
{
    TokenBucket bucket(1000, 1);
    QVERIFY(bucket.take(1, 500));
    QVERIFY(!bucket.take(1, 500));
    QVERIFY(!bucket.take(1, 400));
}

QTEST_APPLESS_MAIN(tst_TokenBucket)
#include "tst_TokenBucket.moc"
