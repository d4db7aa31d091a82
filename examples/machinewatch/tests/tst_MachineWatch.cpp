// How a module is tested: its class in this process, the bus and the central service beside it. Nothing of the
// machine's own bus is touched.

#include "machinewatch/MachineWatch.h"

#include "TestSupport/FakeTextManager.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/RecordingCentralService.h"
#include "TestSupport/SpoolFolder.h"
#include "TestSupport/WarningRecorder.h"

#include <QTemporaryDir>
#include <QTest>

namespace
{
const QString english = QStringLiteral("lang_en");
const QString german = QStringLiteral("lang_de");
const QString limitExceeded = QStringLiteral("MachineWatch/LimitExceeded");
} // namespace

class tst_MachineWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void reportsItsStart();
    void raisesAnAlarmAboveTheLimitAndEndsItBelow();
    void namesTheUserWhoChangesALimit();
    void reportsAFaultWhileTheFolderIsMissing();
    void leavesItsReportInTheSpoolFolder();
    void logsNothingForAReadingThatIsUnknown();

private:
    // The bus first: who uses D-Bus later finds it.
    PrivateBus m_bus;
    RecordingCentralService m_service{m_bus};
    WarningRecorder m_warnings;
    FakeTextManager m_texts;
    QTemporaryDir m_folder;
};

void tst_MachineWatch::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());

    m_texts.setTexts(QStringLiteral("MachineWatch/Started"), QStringLiteral("Gestartet auf %1"),
                     QStringLiteral("Started on %1"));
    m_texts.setTexts(limitExceeded, QStringLiteral("%1 zu hoch (Grenze %3)"),
                     QStringLiteral("%1 too high (limit %3)"));
    m_texts.setTexts(QStringLiteral("MachineWatch/Memory"), QStringLiteral("Speicher"),
                     QStringLiteral("memory"));
    m_texts.setTexts(QStringLiteral("MachineWatch/LimitChanged"), QStringLiteral("%1: %2 auf %3"),
                     QStringLiteral("%1: from %2 to %3"));
    m_texts.setTexts(QStringLiteral("MachineWatch/FolderMissing"), QStringLiteral("%1 fehlt"),
                     QStringLiteral("%1 is missing"));
    m_texts.setTexts(QStringLiteral("MachineWatch/Readings"), QStringLiteral("Last %1"),
                     QStringLiteral("load %1"));
}

void tst_MachineWatch::init()
{
    m_warnings.start();
    QVERIFY2(m_service.reset(), m_service.errorText());
}

void tst_MachineWatch::cleanup()
{
    // A warning that nobody expected is a failure, also one of Qt.
    VERIFY_WARNINGS(m_warnings);
}

void tst_MachineWatch::reportsItsStart()
{
    const MachineWatch watch(m_texts, m_folder.path());

    VERIFY_EVENTS(m_service.events(),
                  {EventMatcher::otherEvent(QStringLiteral("MachineWatch/Started"))
                       .moduleName(QStringLiteral("MachineWatch"))
                       .text(english, QLatin1String("Started on ") + Readings::machineName())
                       .keyword(QStringLiteral("Boot"))});
}

void tst_MachineWatch::raisesAnAlarmAboveTheLimitAndEndsItBelow()
{
    MachineWatch watch(m_texts, m_folder.path());
    m_service.takeEvents(); // that of its start

    // This machine uses more than nothing of its memory, and never more than all of it.
    QVERIFY(watch.setLimit(QStringLiteral("memory"), 0, QStringLiteral("anna")));
    watch.look();
    watch.look();
    QVERIFY(watch.setLimit(QStringLiteral("memory"), 100, QStringLiteral("anna")));
    watch.look();

    const QVector<RecordedEvent> events = m_service.events();
    const QString changed = QStringLiteral("MachineWatch/LimitChanged");
    VERIFY_EVENTS(events,
                  {EventMatcher::auditTrail(changed),
                   EventMatcher::alarmBegins(limitExceeded)
                       .text(english, QStringLiteral("memory too high (limit 0.0 %)"))
                       .text(german, QStringLiteral("Speicher zu hoch (Grenze 0.0 %)")),
                   EventMatcher::auditTrail(changed),
                   EventMatcher::alarmEnds(limitExceeded).alarmId(events.value(1).alarmId)});
}

void tst_MachineWatch::namesTheUserWhoChangesALimit()
{
    MachineWatch watch(m_texts, m_folder.path());
    m_service.takeEvents(); // that of its start

    QVERIFY(watch.setLimit(QStringLiteral("memory"), 90, QStringLiteral("anna")));

    VERIFY_EVENTS(m_service.events(),
                  {EventMatcher::auditTrail(QStringLiteral("MachineWatch/LimitChanged"))
                       .user(QStringLiteral("anna"))
                       .text(english, QStringLiteral("memory: from 100.0 % to 90.0 %"))});
}

void tst_MachineWatch::reportsAFaultWhileTheFolderIsMissing()
{
    const QString missing = m_folder.filePath(QStringLiteral("missing"));
    MachineWatch watch(m_texts, missing);
    m_service.takeEvents(); // that of its start

    watch.look();

    VERIFY_EVENTS(m_service.events(),
                  {EventMatcher::faultBegins(QStringLiteral("MachineWatch/FolderMissing"))
                       .argument(QStringLiteral("%1"), missing)});
}

void tst_MachineWatch::leavesItsReportInTheSpoolFolder()
{
    const SpoolFolder spool;
    MachineWatch watch(m_texts, m_folder.path());
    m_service.takeEvents(); // that of its start

    watch.report();

    VERIFY_EVENTS(spool.events(),
                  {EventMatcher::otherEvent(QStringLiteral("MachineWatch/Readings"))});
    VERIFY_EVENTS(m_service.events(), {});
}

void tst_MachineWatch::logsNothingForAReadingThatIsUnknown()
{
    MachineWatch watch(m_texts, m_folder.path());
    m_service.takeEvents(); // that of its start

    QVERIFY(!watch.setLimit(QStringLiteral("noise"), 1, QStringLiteral("anna")));

    VERIFY_EVENTS(m_service.events(), {});
}

QTEST_GUILESS_MAIN(tst_MachineWatch)
#include "tst_MachineWatch.moc"
