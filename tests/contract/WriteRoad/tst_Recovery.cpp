#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "contract/WriteRoad/JournalService.h"

#include <QDebug>
#include <QElapsedTimer>
#include <QMetaEnum>
#include <QSet>

#include <chrono>

#include <sched.h>

/// A module logs at most one event each millisecond, while the service or the bus is killed, ended, replaced or
/// frozen, or the bus throws the module out. Every event is received or warned about, except for the
/// few that were on their way in that moment.
///
/// EVENTLISTHANDLER_TEST_FAULTS sets how often it happens in each row.
class tst_Recovery : public QObject
{
    Q_OBJECT
public:
    enum class Fault
    {
        serviceKilled,
        serviceEnded,
        serviceReplaced,
        serviceFrozen,
        busKilled,
        busEnded,
        busFrozen,
        moduleThrownOut,
    };
    Q_ENUM(Fault)

private Q_SLOTS:
    void initTestCase();
    void everyEventIsReceivedOrWarnedAbout_data();
    void everyEventIsReceivedOrWarnedAbout();

private:
    bool disturb(Fault fault, JournalService& service, ChildProcess& module);

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
using Fault = tst_Recovery::Fault;

constexpr int eventsBetweenFaults = 50;
constexpr int unseenPerFault = 3;
// What is logged in the milliseconds that it takes to send so much waits behind it, and is thrown out
// with it.
constexpr int unseenBehindLarge = 25;
constexpr qint64 longestRecoveryMs = 500;
constexpr std::chrono::milliseconds frozenTime{150};

// In these no event may be lost or refused: what nobody reads waits.
bool isPatient(Fault fault)
{
    return fault == Fault::serviceFrozen || fault == Fault::busFrozen;
}

// The fault itself lasts so long; nothing else is waited for.
bool isOver(std::chrono::milliseconds time)
{
    QElapsedTimer timer;
    timer.start();
    return waitUntil([&] { return timer.hasExpired(time.count()); });
}

bool isServiceStarted(Fault fault)
{
    return !isPatient(fault) && fault != Fault::moduleThrownOut;
}

int faultCount()
{
    constexpr int shortForm = 1;
    const int wanted = qEnvironmentVariableIntValue("EVENTLISTHANDLER_TEST_FAULTS");
    return wanted > 0 ? wanted : shortForm;
}

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
    // For this process and all that it starts. The events that a fault may cost are counted in
    // milliseconds, so nothing may keep the bus from running for some of them while the module goes on:
    // no other work, and no processor that is taken away from this machine. What shares one processor
    // stands still together.
    cpu_set_t processor;
    CPU_ZERO(&processor);
    CPU_SET(::sched_getcpu(), &processor);
    QCOMPARE(::sched_setaffinity(0, sizeof processor, &processor), 0);
    const sched_param lowest{::sched_get_priority_min(SCHED_FIFO)};
    if (::sched_setscheduler(0, SCHED_FIFO, &lowest) != 0)
    {
        qInfo() << "shares the processors with everybody";
    }
}

void tst_Recovery::everyEventIsReceivedOrWarnedAbout_data()
{
    QTest::addColumn<Fault>("fault");
    QTest::addColumn<QStringList>("arguments");
    const QMetaEnum faults = QMetaEnum::fromType<Fault>();
    const QString application = QStringLiteral("--application");
    const QString eventLoop = QStringLiteral("--event-loop");
    const QStringList manyProducers{QStringLiteral("--producers"), QStringLiteral("100")};
    for (int i = 0; i < faults.keyCount(); ++i)
    {
        const Fault fault = Fault(faults.value(i));
        const auto addRow = [&](const char* kind, const QStringList& arguments) {
            QTest::addRow("%s, %s", faults.key(i), kind) << fault << arguments;
        };
        addRow("no application", {});
        addRow("application without loop", {application});
        addRow("event loop", {eventLoop});
        addRow("many producers", manyProducers);
        addRow("many producers, event loop", manyProducers + QStringList(eventLoop));
    }
}

// True when all is there again, as far as this process can tell.
bool tst_Recovery::disturb(Fault fault, JournalService& service, ChildProcess& module)
{
    const auto order = [&module](const QByteArray& line) {
        return module.write(line + '\n') > 0 && module.waitForBytesWritten();
    };
    // The service ends together with the bus.
    const auto end = [&](const char* how, qint64 processId) {
        return order(how + QByteArray::number(processId)) && service.waitForEnd();
    };
    switch (fault)
    {
    case Fault::serviceKilled:
        return end("kill ", service.processId()) && service.start();
    case Fault::serviceEnded:
        return end("end ", service.processId()) && service.start();
    case Fault::serviceReplaced:
        return service.startStandby() && end("kill ", service.processId()) && service.takeOver();
    case Fault::serviceFrozen: {
        const bool isFrozen = service.freeze() && isOver(frozenTime);
        service.thaw();
        return isFrozen;
    }
    case Fault::busKilled:
        return end("kill ", m_bus.processId()) && m_bus.restart() && service.start();
    case Fault::busEnded:
        return end("end ", m_bus.processId()) && m_bus.restart() && service.start();
    case Fault::busFrozen: {
        const bool isFrozen = m_bus.freeze() && isOver(frozenTime);
        m_bus.thaw();
        return isFrozen;
    }
    case Fault::moduleThrownOut:
        return order("too large");
    }
    return false;
}

void tst_Recovery::everyEventIsReceivedOrWarnedAbout()
{
    QFETCH(Fault, fault);
    QFETCH(QStringList, arguments);
    QVERIFY2(m_bus.start(), m_bus.errorText());
    JournalService service;
    QVERIFY(service.start());
    ChildProcess module;
    module.setProcessChannelMode(QProcess::SeparateChannels);
    QVERIFY(module.startAndWait(QStringLiteral(STEADY_MODULE), arguments));

    const int count = faultCount();
    for (int i = 0; i < count; ++i)
    {
        QVERIFY(waitForEvents(service, eventsBetweenFaults));
        QVERIFY(disturb(fault, service, module));
    }
    QVERIFY(waitForEvents(service, eventsBetweenFaults));
    const Report report = reportOf(module);
    QVERIFY(module.waitForFinished());
    QCOMPARE(module.readAllStandardError(), QByteArray());

    int starts = 0;
    int received = 0;
    int unseen = 0;
    int gaps = 0;
    int mostUnseen = 0;
    int next = 0;
    qint64 longestPauseNs = 0;
    qint64 lastNs = 0;
    for (const JournalService::Entry& entry : service.entries())
    {
        if (entry.event < 0)
        {
            ++starts;
            lastNs = entry.timeNs;
            continue;
        }
        QVERIFY2(entry.event >= next, "twice or out of order");
        QVERIFY(!report.refused.contains(entry.event));
        // All that is missing between two that have arrived went missing in one and the same fault.
        int unseenInGap = 0;
        gaps += entry.event > next ? 1 : 0;
        for (; next < entry.event; ++next)
        {
            unseenInGap += report.refused.contains(next) ? 0 : 1;
        }
        unseen += unseenInGap;
        mostUnseen = qMax(mostUnseen, unseenInGap);
        ++received;
        ++next;
        longestPauseNs = qMax(longestPauseNs, entry.timeNs - lastNs);
        lastNs = entry.timeNs;
    }
    qInfo() << "faults" << count << "sent" << report.sent << "received" << received
            << "warned about" << report.refused.size() << "unseen" << unseen << "most in a fault"
            << mostUnseen << "longest pause in ms" << double(longestPauseNs) / 1e6;
    QCOMPARE(next, report.sent);
    QCOMPARE(received + report.refused.size() + unseen, report.sent);
    QVERIFY(received >= (count + 1) * eventsBetweenFaults - 2 * count);
    QCOMPARE(starts, isServiceStarted(fault) ? 1 + count : 1);
    if (isPatient(fault))
    {
        QCOMPARE(gaps, 0);
        longestPauseNs -= std::chrono::nanoseconds(frozenTime).count();
    }
    QVERIFY(gaps <= count);
    QVERIFY(longestPauseNs <= longestRecoveryMs * 1000000);
    const int allowed = fault == Fault::moduleThrownOut ? unseenBehindLarge : unseenPerFault;
    QVERIFY2(mostUnseen <= allowed, QByteArray::number(mostUnseen));
}

QTEST_GUILESS_MAIN(tst_Recovery)
#include "tst_Recovery.moc"
