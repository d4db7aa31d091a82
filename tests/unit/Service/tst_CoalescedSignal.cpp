#include "core/CoalescedSignal.h"

#include <QSignalSpy>
#include <QTest>

using eventlistd::CoalescedSignal;

class tst_CoalescedSignal : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void tellsTheFirstChangeAtOnce();
    void tellsLaterChangesTogetherAndNeverLosesTheLast();
    void staysSilentWithoutAChange();
};

void tst_CoalescedSignal::tellsTheFirstChangeAtOnce()
{
    CoalescedSignal signal(3600 * 1000);
    QSignalSpy spy(&signal, &CoalescedSignal::changed);
    signal.touch();
    QCOMPARE(spy.count(), 1);
}

void tst_CoalescedSignal::tellsLaterChangesTogetherAndNeverLosesTheLast()
{
    CoalescedSignal signal(20);
    QSignalSpy spy(&signal, &CoalescedSignal::changed);
    for (int i = 0; i < 1000; ++i)
    {
        signal.touch();
    }
    QCOMPARE(spy.count(), 1);
    QTRY_COMPARE(spy.count(), 2);
    signal.touch();
    QTRY_COMPARE(spy.count(), 3);
}

void tst_CoalescedSignal::staysSilentWithoutAChange()
{
    CoalescedSignal quiet(1);
    CoalescedSignal marker(10);
    QSignalSpy spy(&quiet, &CoalescedSignal::changed);
    QSignalSpy markerSpy(&marker, &CoalescedSignal::changed);
    quiet.touch();
    marker.touch();
    marker.touch();
    QTRY_COMPARE(markerSpy.count(), 2);
    QCOMPARE(spy.count(), 1);
}

QTEST_GUILESS_MAIN(tst_CoalescedSignal)
#include "tst_CoalescedSignal.moc"
