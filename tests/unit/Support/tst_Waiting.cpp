#include "TestSupport/Waiting.h"
#include "TestSupport/Watchdog.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

using namespace std::chrono_literals;

class tst_Waiting : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isOverWhenTheConditionHolds();
    void letsEventsRun();
    void givesUpAtTheDeadline();
    void theWatchdogLetsAPunctualTestPass();
};

void tst_Waiting::isOverWhenTheConditionHolds()
{
    QElapsedTimer clock;
    clock.start();

    QVERIFY(waitUntil([] { return true; }));

    QVERIFY(clock.elapsed() < defaultDeadline.count());
}

void tst_Waiting::letsEventsRun()
{
    bool isDone = false;
    QTimer::singleShot(0, this, [&isDone] { isDone = true; });

    QVERIFY(waitUntil([&isDone] { return isDone; }));
}

void tst_Waiting::givesUpAtTheDeadline()
{
    QVERIFY(!waitUntil([] { return false; }, 50ms));
}

void tst_Waiting::theWatchdogLetsAPunctualTestPass()
{
    QElapsedTimer clock;
    clock.start();
    {
        const Watchdog watchdog(defaultDeadline, "nothing");
    }
    // Its end does not wait for its deadline.
    QVERIFY(clock.elapsed() < defaultDeadline.count());
}

QTEST_GUILESS_MAIN(tst_Waiting)
#include "tst_Waiting.moc"
