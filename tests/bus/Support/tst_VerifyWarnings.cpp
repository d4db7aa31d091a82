#include "TestSupport/ChildProcess.h"

#include <QTest>

/// How a test looks whose warnings are not those that it expects.
class tst_VerifyWarnings : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { m_process.killHard(); }

    void passesWithTheExpectedWarnings_data();
    void passesWithTheExpectedWarnings();
    void failsOnAnUnexpectedWarning();
    void failsOnAMissingWarning();
    void showsEveryWarning();
    void showsWhatCameTooLateForAnyTest();

private:
    QByteArray outputOf(const char* function);

    ChildProcess m_process;
};

void tst_VerifyWarnings::init()
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

QByteArray tst_VerifyWarnings::outputOf(const char* function)
{
    if (!m_process.startAndWait(QStringLiteral(VICTIM_WARNS), {QLatin1String(function)}) ||
        !m_process.waitForFinished(int(defaultDeadline.count())))
    {
        return {};
    }
    return m_process.readAll();
}

void tst_VerifyWarnings::passesWithTheExpectedWarnings_data()
{
    QTest::addColumn<QByteArray>("function");

    QTest::newRow("none") << QByteArray("isSilent");
    QTest::newRow("one") << QByteArray("warnsAsExpected");
}

void tst_VerifyWarnings::passesWithTheExpectedWarnings()
{
    QFETCH(QByteArray, function);

    const QByteArray output = outputOf(function.constData());

    QVERIFY2(output.contains("PASS   : victim_warns::" + function), output.constData());
    QCOMPARE(m_process.exitCode(), 0);
}

void tst_VerifyWarnings::failsOnAnUnexpectedWarning()
{
    const QByteArray output = outputOf("warnsUnexpectedly");

    QVERIFY2(output.contains("FAIL!  : victim_warns::warnsUnexpectedly()"), output.constData());
    QVERIFY2(output.contains("+ warning No power on \"pump 3\""), output.constData());
    QCOMPARE(m_process.exitCode(), 1);
}

void tst_VerifyWarnings::failsOnAMissingWarning()
{
    const QByteArray output = outputOf("misses");

    QVERIFY2(output.contains("FAIL!  : victim_warns::misses()"), output.constData());
    QVERIFY2(output.contains("- warning Overflow"), output.constData());
    QCOMPARE(m_process.exitCode(), 1);
}

void tst_VerifyWarnings::showsEveryWarning()
{
    const QByteArray output = outputOf("warnsAtLength");

    QCOMPARE(output.count("+ warning A warning"), 100);
    QVERIFY2(output.contains("+ warning The last one"), output.right(200).constData());
}

void tst_VerifyWarnings::showsWhatCameTooLateForAnyTest()
{
    const QByteArray output = outputOf("isSilent");

    QVERIFY2(output.contains("Nobody has looked at: warning A warning that nobody looks at"),
             output.constData());
    QCOMPARE(output.count("A warning in the destructor"), 1);
    QCOMPARE(output.count("A warning after the end"), 1);
}

QTEST_GUILESS_MAIN(tst_VerifyWarnings)
#include "tst_VerifyWarnings.moc"
