#include "EventWrite/EventlistHandlerEventToFile.h"

#include "EventWrite/EventHandlerWrite.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include <QDateTime>
#include <QProcessEnvironment>
#include <QTest>

PRIVATE_MEMBER(fileCount, int*, &EventlistHandlerEventToFile::sm_EventFileNameCnt)

namespace
{

// All of the file but its time.
const char* const emergencyEvent =
    R"({"AlarmID":"","Description":"","EventId":"EventlistHandler/SystemWatchdog","EventType":3,)"
    R"("IconType":"EventlistEvent","KeywordName":"Firmware",)"
    R"("MetaData":{"Arguments":[{"%1":"PumpControl"}]},"ModuleName":"supervisor",)"
    R"("SourceHashType":0,"SourceHashes":"","State":0,"User":""})";

} // namespace

class tst_WatchdogEmergency : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        m_warnings.start();
        *fileCount() = 0;
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void writesAllThirteenMembers();
    void stampsThePresentTime();
    void takesBothWordsAsTheyAre_data();
    void takesBothWordsAsTheyAre();
    void makesOneMoreNumberedFileAtEachCall();
    void doesNotCareForTheFixedNameOfARouter();
    void warnsTwiceAndUsesTheNumberUpWhenTheFolderIsMissing();
    void needsNothingElseOfTheProcess_data();
    void needsNothingElseOfTheProcess();

private:
    SpoolFolder m_spool;
    WarningRecorder m_warnings;
};

void tst_WatchdogEmergency::writesAllThirteenMembers()
{
    EventlistHandlerEventToFile writer;

    writer.setEventWatchdogEmergency(QStringLiteral("supervisor"), QStringLiteral("PumpControl"));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent0.event.json")));
    QCOMPARE(eventWithoutTime(m_spool, QStringLiteral("logEvent0.event.json")),
             QByteArray(emergencyEvent));
    QCOMPARE(m_spool.read(QStringLiteral("logEvent0.event.json")).size(), 13);
}

void tst_WatchdogEmergency::stampsThePresentTime()
{
    const QDateTime before = QDateTime::currentDateTime();

    EventlistHandlerEventToFile().setEventWatchdogEmergency(QString(), QString());

    const QString time = m_spool.read(QStringLiteral("logEvent0.event.json"))
                             .value(QStringLiteral("DateTimeMsUTC"))
                             .toString();
    const QDateTime stamped = QDateTime::fromString(time, Qt::ISODateWithMs);
    QVERIFY(stamped >= before);
    QVERIFY(stamped <= QDateTime::currentDateTime());
}

void tst_WatchdogEmergency::takesBothWordsAsTheyAre_data()
{
    QTest::addColumn<QString>("moduleName");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QByteArray>("metaData");

    QTest::newRow("an empty argument")
        << QStringLiteral("supervisor") << QString() << QByteArray(R"({"Arguments":[{"%1":""}]})");
    QTest::newRow("an empty module")
        << QString() << QStringLiteral("x") << QByteArray(R"({"Arguments":[{"%1":"x"}]})");
    QTest::newRow("placeholders, quotes, not ASCII")
        << QStringLiteral("a \"b\"; %1") << QStringLiteral("%1 \"ä\"")
        << QByteArray(R"({"Arguments":[{"%1":"%1 \"ä\""}]})");
}

void tst_WatchdogEmergency::takesBothWordsAsTheyAre()
{
    QFETCH(QString, moduleName);
    QFETCH(QString, argument);
    QFETCH(QByteArray, metaData);

    EventlistHandlerEventToFile().setEventWatchdogEmergency(moduleName, argument);

    const QJsonObject event = m_spool.read(QStringLiteral("logEvent0.event.json"));
    QCOMPARE(event.value(QStringLiteral("ModuleName")).toString(), moduleName);
    QCOMPARE(compactJson(event.value(QStringLiteral("MetaData")).toObject()), metaData);
}

void tst_WatchdogEmergency::makesOneMoreNumberedFileAtEachCall()
{
    EventlistHandlerEventToFile first;
    EventlistHandlerEventToFile second;

    first.setEventWatchdogEmergency(QStringLiteral("supervisor"), QStringLiteral("a"));
    second.setEventWatchdogEmergency(QStringLiteral("supervisor"), QStringLiteral("b"));
    first.setEventWatchdogEmergency(QStringLiteral("supervisor"), QStringLiteral("c"));

    QCOMPARE(m_spool.entries(), QStringList({QStringLiteral("logEvent0.event.json"),
                                             QStringLiteral("logEvent1.event.json"),
                                             QStringLiteral("logEvent2.event.json")}));
    QCOMPARE(*fileCount(), 3);
}

void tst_WatchdogEmergency::doesNotCareForTheFixedNameOfARouter()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QStringLiteral("bootlog"));

    EventlistHandlerEventToFile().setEventWatchdogEmergency(QStringLiteral("supervisor"),
                                                            QStringLiteral("PumpControl"));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent0.event.json")));
}

void tst_WatchdogEmergency::warnsTwiceAndUsesTheNumberUpWhenTheFolderIsMissing()
{
    EventlistHandlerEventToFile writer;
    m_spool.remove();
    m_warnings
        .expect(QStringLiteral("Can't write jsonObject to file"),
                QStringLiteral("EventlistHandlerEventToFile"),
                QStringLiteral("EventlistHandlerEventToFile::writeEventToFile"))
        .expect(QStringLiteral(
                    R"(Can't write eventWatchdogEmergency to file. ModuleName: "supervisor")"),
                QStringLiteral("EventlistHandlerEventToFile"),
                QStringLiteral("EventlistHandlerEventToFile::setEventWatchdogEmergency"));

    writer.setEventWatchdogEmergency(QStringLiteral("supervisor"), QStringLiteral("PumpControl"));

    QCOMPARE(*fileCount(), 1);
    QVERIFY(m_spool.entries().isEmpty());
}

void tst_WatchdogEmergency::needsNothingElseOfTheProcess_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<bool>("isKilled");

    QTest::newRow("from a static constructor") << QStringLiteral("static") << false;
    QTest::newRow("without QCoreApplication") << QStringLiteral("main") << false;
    QTest::newRow("killed right behind the call") << QStringLiteral("kill") << true;
}

void tst_WatchdogEmergency::needsNothingElseOfTheProcess()
{
    QFETCH(QString, way);
    QFETCH(bool, isKilled);
    ChildProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("EMERGENCY_EVENT"), way);
    program.setProcessEnvironment(environment);
    // Made by the program itself.
    m_spool.remove();

    QVERIFY(program.startAndWait(QStringLiteral(TEST_EMERGENCY_PROGRAM), {}));
    QVERIFY(program.state() == QProcess::NotRunning ||
            program.waitForFinished(int(defaultDeadline.count())));

    QCOMPARE(program.exitStatus(), isKilled ? QProcess::CrashExit : QProcess::NormalExit);
    QCOMPARE(program.exitCode(), isKilled ? 9 : 0);
    QCOMPARE(program.readAllStandardError(), QByteArray());
    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent0.event.json")));
    QCOMPARE(eventWithoutTime(m_spool, QStringLiteral("logEvent0.event.json")),
             QByteArray(emergencyEvent));
}

QTEST_GUILESS_MAIN(tst_WatchdogEmergency)
#include "tst_WatchdogEmergency.moc"
