#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "contract/WriteRoad/JournalService.h"

#include <QDebug>
#include <QElapsedTimer>

/// While service and bus live, no event is lost on the road.
class tst_Delivery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void hundredThousandEventsArriveInOrder();

private:
    PrivateBus m_bus;
};

void tst_Delivery::hundredThousandEventsArriveInOrder()
{
    constexpr int eventCount = 100000;
    QVERIFY2(m_bus.start(), m_bus.errorText());
    JournalService service;
    QVERIFY(service.start());
    ChildProcess module;
    QElapsedTimer timer;
    timer.start();
    QVERIFY(module.startAndWait(QStringLiteral(STEADY_MODULE),
                                {QStringLiteral("--count"), QString::number(eventCount)}));
    QCOMPARE(module.readOutputLine(std::chrono::seconds(100)), QByteArray("sent 100000"));
    QCOMPARE(module.readOutputLine(), QByteArray("refused"));
    const QByteArray slowest = module.readOutputLine();
    QVERIFY(module.waitForFinished());
    QCOMPARE(module.readAllStandardError(), QByteArray());
    qInfo() << eventCount << "events in ms:" << timer.elapsed() << "in us:" << slowest;

    const QVector<JournalService::Entry> entries = service.entries();
    QCOMPARE(entries.size(), eventCount + 1);
    for (int i = 0; i < entries.size(); ++i)
    {
        QCOMPARE(entries[i].event, i - 1);
    }
}

QTEST_GUILESS_MAIN(tst_Delivery)
#include "tst_Delivery.moc"
