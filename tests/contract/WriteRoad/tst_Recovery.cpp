#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "contract/WriteRoad/JournalService.h"

#include <QDebug>
#include <QSet>

#include <algorithm>
#include <memory>
#include <numeric>

#include <sched.h>

/// A module that runs no event loop logs one event each millisecond, while the service or the bus is
/// killed and comes back. Every event is received or warned about, except for the few that were on
/// their way in that moment.
class tst_Recovery : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void everyEventIsReceivedOrWarnedAbout_data();
    void everyEventIsReceivedOrWarnedAbout();

private:
    // Waits until so many more events have arrived.
    bool waitForEvents(const JournalService& service, int count) const
    {
        const int before = service.entries().size();
        return waitUntil([&] { return service.entries().size() >= before + count; });
    }

    PrivateBus m_bus;
};

namespace
{
constexpr int killCount = 5;
constexpr int unseenPerKill = 3;
constexpr qint64 longestRecoveryMs = 500;

struct Report
{
    int sent = -1;
    QSet<int> refused;
};

Report reportOf(ChildProcess& module)
{
    Report report;
    module.closeWriteChannel();
    const QByteArray sent = module.readOutputLine();
    if (sent.startsWith("sent "))
    {
        report.sent = sent.mid(5).toInt();
    }
    const QList<QByteArray> refused = module.readOutputLine().split(' ').mid(1);
    for (const QByteArray& number : refused)
    {
        report.refused.insert(number.toInt());
    }
    return report;
}
} // namespace

void tst_Recovery::initTestCase()
{
    // For this process and all that it starts. The events that a kill may cost are counted in
    // milliseconds; work that keeps the bus from running for some of them would cost more, and no
    // library can know of it.
    const sched_param lowest{::sched_get_priority_min(SCHED_FIFO)};
    if (::sched_setscheduler(0, SCHED_FIFO, &lowest) != 0)
    {
        qInfo() << "shares the processors with everybody";
    }
}

void tst_Recovery::everyEventIsReceivedOrWarnedAbout_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("isBusKilled");
    const QStringList application{QStringLiteral("--application")};
    QTest::newRow("service killed, no application") << QStringList() << false;
    QTest::newRow("service killed, application without loop") << application << false;
    QTest::newRow("bus killed, no application") << QStringList() << true;
    QTest::newRow("bus killed, application without loop") << application << true;
}

void tst_Recovery::everyEventIsReceivedOrWarnedAbout()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, isBusKilled);
    QVERIFY2(m_bus.start(), m_bus.errorText());
    JournalService service;
    QVERIFY(service.start());
    ChildProcess module;
    module.setProcessChannelMode(QProcess::SeparateChannels);
    QVERIFY(module.startAndWait(QStringLiteral(STEADY_MODULE), arguments));

    for (int kill = 0; kill < killCount; ++kill)
    {
        QVERIFY(waitForEvents(service, 100));
        QVERIFY(service.killBehindEvent(isBusKilled ? m_bus.processId() : 0));
        if (isBusKilled)
        {
            QVERIFY2(m_bus.restart(), m_bus.errorText());
        }
        QVERIFY(service.start());
    }
    QVERIFY(waitForEvents(service, 100));
    const Report report = reportOf(module);
    QVERIFY(module.waitForFinished());
    QCOMPARE(module.readAllStandardError(), QByteArray());

    const QVector<JournalService::Entry> entries = service.entries();
    QSet<int> received;
    QVector<int> firstEvents;
    qint64 slowestRecoveryNs = 0;
    int last = -1;
    for (int i = 0; i < entries.size(); ++i)
    {
        if (entries[i].event >= 0)
        {
            QVERIFY2(entries[i].event > last, "twice or out of order");
            last = entries[i].event;
            received.insert(last);
        }
        else if (i > 0)
        {
            QVERIFY(i + 1 < entries.size());
            firstEvents << entries[i + 1].event;
            slowestRecoveryNs =
                std::max(slowestRecoveryNs, entries[i + 1].timeNs - entries[i].timeNs);
        }
    }
    QCOMPARE(firstEvents.size(), killCount);
    QVERIFY(report.sent > killCount * 100);
    QVERIFY(!received.intersects(report.refused));
    QVERIFY2(!report.refused.isEmpty(), "no event fell into the gaps");

    // The unseen ones of each kill lie between the first events after two starts.
    QVector<int> unseen(killCount + 1, 0);
    for (int event = 0; event < report.sent; ++event)
    {
        if (!received.contains(event) && !report.refused.contains(event))
        {
            ++unseen[int(std::upper_bound(firstEvents.cbegin(), firstEvents.cend(), event) -
                         firstEvents.cbegin())];
        }
    }
    qInfo() << "sent" << report.sent << "received" << received.size() << "warned about"
            << report.refused.size() << "unseen after each kill" << unseen
            << "slowest recovery in ms" << double(slowestRecoveryNs) / 1e6;
    QCOMPARE(unseen.last(), 0);
    QCOMPARE(std::accumulate(unseen.cbegin(), unseen.cend(), 0),
             report.sent - received.size() - report.refused.size());
    QVERIFY(slowestRecoveryNs <= longestRecoveryMs * 1000000);
    const int mostUnseen = *std::max_element(unseen.cbegin(), unseen.cend());
    QVERIFY2(mostUnseen <= unseenPerKill, QByteArray::number(mostUnseen));
}

QTEST_GUILESS_MAIN(tst_Recovery)
#include "tst_Recovery.moc"
