#include "TestSupport/ChildProcess.h"

#include <QFile>
#include <QTest>

#include <csignal>

using namespace std::chrono_literals;

namespace
{
/// State of a process as the kernel tells it, such as "T" for one that stands still; "-" for none.
QByteArray stateOf(qint64 processId)
{
    QFile file(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!file.open(QFile::ReadOnly))
    {
        return "-";
    }
    const QByteArray text = file.readAll();
    return text.mid(text.lastIndexOf(')') + 2, 1);
}

bool isGone(qint64 processId)
{
    const QByteArray state = stateOf(processId);
    return state == "-" || state == "Z" || state == "X";
}
} // namespace

class tst_ChildProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void readsLineByLine();
    void tellsAnEndFromAnEmptyLine();
    void givesUpAtTheDeadline();
    void stopsInGoodOrder();
    void killsWhatDoesNotStop();
    void standsStillAndGoesOn();
    void endsAFrozenProcess_data();
    void endsAFrozenProcess();
    void isKilledByItsDestructor();
    void doesNotStartWhatIsMissing();
    void dieWithTheTestThatStartedThem();
    void endsWhatHangsWithAMessage();

private:
    static QStringList shell(const char* script)
    {
        return {QStringLiteral("-c"), QLatin1String(script)};
    }

    const QString m_shell = QStringLiteral("/bin/sh");
};

void tst_ChildProcess::readsLineByLine()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("echo one; echo two; echo wrong >&2")));

    QCOMPARE(process.readOutputLine(), QByteArray("one"));
    QCOMPARE(process.readErrorLine(), QByteArray("wrong"));
    QCOMPARE(process.readOutputLine(), QByteArray("two"));
}

void tst_ChildProcess::tellsAnEndFromAnEmptyLine()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("echo; printf unfinished")));

    const QByteArray line = process.readOutputLine();
    QVERIFY(!line.isNull());
    QVERIFY(line.isEmpty());
    QVERIFY(process.readOutputLine().isNull());
}

void tst_ChildProcess::givesUpAtTheDeadline()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("read line")));

    QVERIFY(process.readOutputLine(20ms).isNull());
    QVERIFY(process.isRunning());
}

void tst_ChildProcess::stopsInGoodOrder()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(
        m_shell, shell("trap 'exit 3' TERM; echo ready; while :; do read line; done")));
    QCOMPARE(process.readOutputLine(), QByteArray("ready"));

    QVERIFY(process.stop());

    QVERIFY(!process.isRunning());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 3);
    QVERIFY(process.stop());
}

void tst_ChildProcess::killsWhatDoesNotStop()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("trap '' TERM; echo ready; read line")));
    QCOMPARE(process.readOutputLine(), QByteArray("ready"));

    QVERIFY(!process.stop(20ms));

    QVERIFY(!process.isRunning());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
}

void tst_ChildProcess::standsStillAndGoesOn()
{
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("read line; echo got $line")));

    QVERIFY(process.freeze());
    QCOMPARE(stateOf(process.processId()), QByteArray("T"));
    process.write("water\n");

    process.thaw();
    QCOMPARE(process.readOutputLine(), QByteArray("got water"));
}

void tst_ChildProcess::endsAFrozenProcess_data()
{
    QTest::addColumn<bool>("isHard");

    QTest::newRow("kill") << true;
    QTest::newRow("stop") << false;
}

void tst_ChildProcess::endsAFrozenProcess()
{
    QFETCH(bool, isHard);
    ChildProcess process;
    QVERIFY(process.startAndWait(m_shell, shell("read line")));
    QVERIFY(process.freeze());

    if (isHard)
    {
        process.killHard();
    }
    else
    {
        QVERIFY(process.stop());
    }

    QVERIFY(!process.isRunning());
    QVERIFY(!process.freeze());
}

void tst_ChildProcess::isKilledByItsDestructor()
{
    qint64 processId = 0;
    {
        ChildProcess process;
        QVERIFY(process.startAndWait(m_shell, shell("read line")));
        processId = process.processId();
    }
    QVERIFY(isGone(processId));
}

void tst_ChildProcess::doesNotStartWhatIsMissing()
{
    ChildProcess process;

    QVERIFY(!process.startAndWait(QStringLiteral("/nonexistent"), {}));

    QVERIFY(!process.errorString().isEmpty());
    QVERIFY(!process.isRunning());
}

void tst_ChildProcess::dieWithTheTestThatStartedThem()
{
    ChildProcess victim;
    victim.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QVERIFY(victim.startAndWait(QStringLiteral(VICTIM_STARTS_A_BUS), {}));
    const QList<QByteArray> ids = victim.readOutputLine().split(' ');
    QCOMPARE(ids.size(), 2);
    const qint64 bus = ids.at(0).toLongLong();
    const qint64 service = ids.at(1).toLongLong();
    QVERIFY(!isGone(bus));
    QCOMPARE(stateOf(service), QByteArray("T"));

    victim.killHard();

    QTRY_VERIFY(isGone(bus));
    QTRY_VERIFY(isGone(service));
}

void tst_ChildProcess::endsWhatHangsWithAMessage()
{
    ChildProcess victim;
    QVERIFY(victim.startAndWait(QStringLiteral(VICTIM_HANGS), {}));

    QCOMPARE(victim.readErrorLine(),
             QByteArray("Watchdog: \"waiting for the pump\" has not ended within 20 ms"));

    QVERIFY(victim.waitForFinished(int(defaultDeadline.count())));
    QCOMPARE(victim.exitStatus(), QProcess::CrashExit);
    QCOMPARE(victim.exitCode(), SIGABRT);
}

QTEST_GUILESS_MAIN(tst_ChildProcess)
#include "tst_ChildProcess.moc"
