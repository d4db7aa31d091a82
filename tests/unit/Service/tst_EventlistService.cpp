#include "core/EventlistService.h"

#include "TestSupport/FakeTextManager.h"
#include "TestSupport/WarningRecorder.h"

#include <QDateTime>
#include <QFile>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/fsuid.h>
#include <sys/stat.h>

using namespace eventlistd;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

// Makes each writing of a named value fail.
QString trigger()
{
    return s("CREATE TRIGGER fails BEFORE INSERT ON meta BEGIN SELECT missing(); END");
}

QString missing()
{
    return s("\"no such function: missing .*\" in \"INSERT OR REPLACE INTO meta.*");
}

DecodedEvent decoded(const QString& description, int type = otherEvents, int state = neutral)
{
    DecodedEvent made;
    made.event.moduleName = s("pump");
    made.event.description = description;
    made.event.type = type;
    made.event.state = state;
    made.event.alarmId = s("id");
    return made;
}
} // namespace

class tst_EventlistService : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void writesFromTheEventLoopAndTellsIt();
    void answersWithEverythingThatCameBefore();
    void tellsPowerOnFromRestart_data();
    void tellsPowerOnFromRestart();
    void dropsWhatOneSenderSendsTooMuch();
    void keepsTheOrderOfEventsAndCommands();
    void tellsStatesOnceAndOnlyWhenTheyDiffer();
    void tellsEverythingAfterAnEndThatWasNoOrderlyOne();
    void countsAlarmsOfTheLastBootAsGone_data();
    void countsAlarmsOfTheLastBootAsGone();
    void keepsAlarmsApartWhoseIdsTheDatabaseWouldConfuse();
    void worksAgainWhenItMayWriteItsFileAgain();
    void forgetsWhatWasRolledBack();
    void keepsTheTimeOfAnAcknowledgement();
    void hearsOperatorsAboveTheNoise();
    void namesWhoseAcknowledgementIsRefused();
    void keepsRoomForAcknowledgementsInTheQueue();

private:
    void start();
    QStringList descriptions();
    QStringList eventIds();
    QStringList alarms();
    bool runBeside(const QString& sql);
    void expectAFailure(const QStringList& failures);

    FakeTextManager m_texts;
    std::unique_ptr<QTemporaryDir> m_folder;
    EventlistService::Settings m_settings;
    std::unique_ptr<EventlistService> m_service;
    WarningRecorder m_warnings;
};

void tst_EventlistService::initTestCase()
{
    // As its signal names it.
    qRegisterMetaType<AlarmList::States>("AlarmList::States");
}

void tst_EventlistService::init()
{
    m_warnings.start();
    m_service.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_settings = EventlistService::Settings();
    m_settings.databasePath = m_folder->filePath(s("list.sqlite"));
    m_settings.spool.folder = m_folder->filePath(s("spool"));
    m_settings.bootId = s("first boot");
}

void tst_EventlistService::cleanup()
{
    m_service.reset();
    VERIFY_WARNINGS(m_warnings);
}

// What a database says that cannot be written, once events wait for it and again when it can.
void tst_EventlistService::expectAFailure(const QStringList& failures)
{
    for (const QString& failure : failures)
    {
        m_warnings.expectMatch(s("Database: ") + failure);
    }
    m_warnings.expect(s("The database takes nothing; events wait in memory"));
    m_warnings.expect(s("The database works again"));
}

void tst_EventlistService::start()
{
    m_service.reset();
    m_service = std::make_unique<EventlistService>(m_settings, m_texts);
    QVERIFY(m_service->start());
}

QStringList tst_EventlistService::descriptions()
{
    EventFilter filter;
    filter.moduleNames = QStringList({s("pump")});
    filter.oldestFirst = true;
    filter.columns = QStringList({s("Description")});
    QString error;
    QStringList all;
    for (const QStringList& row : m_service->events(filter, error).value(s("data")).value<Rows>())
    {
        all.append(row.constFirst());
    }
    return error.isEmpty() ? all : QStringList(error);
}

QStringList tst_EventlistService::eventIds()
{
    EventFilter filter;
    filter.moduleNames = QStringList({s("EventlistHandler")});
    filter.oldestFirst = true;
    filter.columns = QStringList({s("EventId")});
    QString error;
    QStringList all;
    for (const QStringList& row : m_service->events(filter, error).value(s("data")).value<Rows>())
    {
        all.append(row.constFirst());
    }
    return all;
}

// Of each row the id, and active and acknowledged as two digits.
QStringList tst_EventlistService::alarms()
{
    QString error;
    const QVariantMap answer = m_service->alarms(QString(), error);
    const QStringList header = answer.value(s("header")).toStringList();
    const int idColumn = header.indexOf(s("AlarmID"));
    const int activeColumn = header.indexOf(s("AlarmActive"));
    QStringList all;
    for (const QStringList& row : answer.value(s("data")).value<Rows>())
    {
        all.append(row.at(idColumn) + QLatin1Char(' ') + row.at(activeColumn) +
                   row.at(activeColumn + 1));
    }
    return error.isEmpty() ? all : QStringList(error);
}

// Through a connection of its own, as another program would.
bool tst_EventlistService::runBeside(const QString& sql)
{
    bool isDone = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(s("QSQLITE"), s("beside"));
        database.setDatabaseName(m_settings.databasePath);
        isDone = database.open() && QSqlQuery(database).exec(sql);
    }
    QSqlDatabase::removeDatabase(s("beside"));
    return isDone;
}

void tst_EventlistService::writesFromTheEventLoopAndTellsIt()
{
    start();
    QSignalSpy spy(m_service.get(), &EventlistService::eventlistChanged);
    m_service->takeEvent(decoded(s("one")), s(":1.1"));
    QCOMPARE(spy.count(), 0);
    QTRY_VERIFY(spy.count() > 0);
    QCOMPARE(descriptions(), QStringList({s("one")}));
}

void tst_EventlistService::answersWithEverythingThatCameBefore()
{
    start();
    QStringList expected;
    for (int i = 0; i < 12000; ++i)
    {
        m_service->takeEvent(decoded(QString::number(i)), s(":1.1"));
        expected.append(QString::number(i));
    }
    QCOMPARE(descriptions(), expected);
}

void tst_EventlistService::tellsPowerOnFromRestart_data()
{
    QTest::addColumn<QString>("secondBoot");
    QTest::addColumn<QString>("eventId");
    QTest::newRow("same boot") << s("first boot") << s("EventlistHandler/SystemRestarted");
    QTest::newRow("new boot") << s("second boot") << s("EventlistHandler/PowerOnEvent");
    QTest::newRow("unknown") << QString() << s("EventlistHandler/PowerOnEvent");
}

void tst_EventlistService::tellsPowerOnFromRestart()
{
    QFETCH(QString, secondBoot);
    QFETCH(QString, eventId);
    start();
    m_settings.bootId = secondBoot;
    start();
    QCOMPARE(eventIds(), QStringList({s("EventlistHandler/PowerOnEvent"), eventId}));
}

void tst_EventlistService::dropsWhatOneSenderSendsTooMuch()
{
    m_settings.senderLimits.eventBurst = 3;
    m_settings.senderLimits.eventsPerSecond = 0.001;
    m_warnings.expect(s("Too many events of \":1.1\" - dropped: 7"));
    start();
    int admitted = 0;
    for (int i = 0; i < 10; ++i)
    {
        admitted += m_service->admitsEvent(s(":1.1"));
    }
    QCOMPARE(admitted, 3);
    QVERIFY(m_service->admitsEvent(s(":1.2")));
    QTRY_VERIFY(eventIds().contains(s("EventlistHandler/EventsDropped")));
}

void tst_EventlistService::keepsTheOrderOfEventsAndCommands()
{
    start();
    m_service->takeEvent(decoded(s("gone")), s(":1.1"));
    m_service->deleteEventlist(s(":1.1"));
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->acknowledgeAlarms({s("id")}, s("meier"), s(":1.1"));
    m_service->takeEvent(decoded(s("off"), alarm, inactive), s(":1.1"));
    m_service->acknowledgeCentralDetector(s("meier"), s(":1.1"));
    QCOMPARE(descriptions(), QStringList({s("on"), s("off")}));
    QCOMPARE(eventIds(), QStringList({s("EventlistHandler/EventlistDeleted"),
                                      s("EventlistHandler/CentralDetectorActive"),
                                      s("EventlistHandler/AlarmAcknowledged"),
                                      s("EventlistHandler/CentralDetectorInactive")}));
    QString error;
    QCOMPARE(m_service->alarms(QString(), error).value(s("data")).value<Rows>(), Rows());
}

void tst_EventlistService::tellsStatesOnceAndOnlyWhenTheyDiffer()
{
    start();
    QSignalSpy spy(m_service.get(), &EventlistService::alarmStatesChanged);
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->flush();
    QCOMPARE(spy.count(), 1);
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->takeEvent(decoded(s("other")), s(":1.1"));
    m_service->flush();
    QCOMPARE(spy.count(), 1);
    // On and off within one batch: nothing has changed for anybody outside.
    m_service->takeEvent(decoded(s("off"), alarm, inactive), s(":1.1"));
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->flush();
    QCOMPARE(spy.count(), 1);
}

void tst_EventlistService::tellsEverythingAfterAnEndThatWasNoOrderlyOne()
{
    start();
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->flush();
    m_service->stop();
    start();
    QSignalSpy spy(m_service.get(), &EventlistService::alarmStatesChanged);
    m_service->onReachable();
    QCOMPARE(spy.count(), 0);
    // The bus went away and came back: who listens may have missed something.
    m_service->onReachable();
    QCOMPARE(spy.count(), 1);
    start();
    QSignalSpy second(m_service.get(), &EventlistService::alarmStatesChanged);
    m_service->onReachable();
    QCOMPARE(second.count(), 1);
}

void tst_EventlistService::countsAlarmsOfTheLastBootAsGone_data()
{
    QTest::addColumn<QString>("secondBoot");
    QTest::addColumn<QStringList>("rows");
    QTest::addColumn<bool>("isActive");
    const QStringList before({s("open 10"), s("acknowledged 11")});
    QTest::newRow("same boot") << s("first boot") << before << true;
    QTest::newRow("new boot") << s("second boot") << QStringList({s("open 00")}) << false;
    QTest::newRow("unknown") << QString() << before << true;
}

void tst_EventlistService::countsAlarmsOfTheLastBootAsGone()
{
    QFETCH(QString, secondBoot);
    QFETCH(QStringList, rows);
    QFETCH(bool, isActive);
    if (!isActive)
    {
        m_warnings.expect(s("The device was switched on anew: what was active counts as gone"));
    }
    start();
    for (const char* id : {"acknowledged", "open"})
    {
        DecodedEvent event = decoded(s("on"), alarm, active);
        event.event.alarmId = s(id);
        m_service->takeEvent(event, s(":1.1"));
    }
    m_service->acknowledgeAlarms({s("acknowledged")}, s("meier"), s(":1.1"));
    m_service->flush();
    m_service->stop();
    m_settings.bootId = secondBoot;
    start();
    QCOMPARE(alarms(), rows);
    QCOMPARE(m_service->alarmState().value(s("ActiveAlarmInAlarmlist")).toBool(), isActive);
    // Nobody could hear it when it happened.
    QSignalSpy spy(m_service.get(), &EventlistService::alarmStatesChanged);
    m_service->onReachable();
    QCOMPARE(spy.count(), isActive ? 0 : 1);
    // It happens once: the next start of the service is no start of the device.
    m_service->takeEvent(decoded(s("new"), alarm, active), s(":1.1"));
    m_service->stop();
    start();
    QCOMPARE(alarms(), QStringList({s("id 10")}) + rows);
}

// A row that is there already would pass for damage, and both lists would begin anew.
void tst_EventlistService::keepsAlarmsApartWhoseIdsTheDatabaseWouldConfuse()
{
    const QStringList ids{s("id"),
                          QChar(0xfeff) + s("id"),
                          QChar(0xfffe) + s("id"),
                          QChar(0xffff) + s("id"),
                          QChar(0xd800) + s("id"),
                          s("id") + QChar(0xfffe),
                          s("id") + QChar(0xdc00)};
    const auto tellAll = [&] {
        for (const QString& id : ids)
        {
            DecodedEvent event = decoded(id, alarm, active);
            event.event.alarmId = id;
            m_service->takeEvent(event, s(":1.1"));
        }
        QVERIFY(m_service->flush());
    };
    const QString odd{QChar(QChar::ReplacementCharacter)};
    const QStringList expected{s("id") + odd + s(" 10"), odd + s("id") + s(" 10"), s("id 10")};
    start();
    tellAll();
    QCOMPARE(alarms(), expected);
    QCOMPARE(descriptions().size(), ids.size());

    start();
    tellAll();
    QCOMPARE(alarms(), expected);
    QCOMPARE(descriptions().size(), 2 * ids.size());
    m_service->acknowledgeAlarms({QChar(0xfeff) + s("id"), s("id") + odd}, s("meier"), s(":1.1"));
    QCOMPARE(alarms(),
             QStringList({s("id") + odd + s(" 11"), odd + s("id") + s(" 10"), s("id 11")}));
}

// What was opened without the right to write stays so, whatever becomes of the file's rights.
void tst_EventlistService::worksAgainWhenItMayWriteItsFileAgain()
{
    start();
    m_service->takeEvent(decoded(s("before")), s(":1.1"));
    QVERIFY(m_service->flush());
    m_service.reset();
    const QByteArray file = QFile::encodeName(m_settings.databasePath);
    constexpr uid_t nobody = 65534;
    constexpr uid_t unchanged = uid_t(-1);
    const bool isRoot = ::setfsuid(unchanged) == 0;
    const auto setRights = [&](bool mayWrite) {
        if (!isRoot)
        {
            return ::chmod(file.constData(), mayWrite ? 0600 : 0400) == 0;
        }
        // Nothing is forbidden to root but to be somebody else.
        const uid_t user = mayWrite ? 0 : nobody;
        ::setfsuid(user);
        return uid_t(::setfsuid(unchanged)) == user;
    };
    if (isRoot)
    {
        QVERIFY(QFile::remove(m_settings.databasePath + s(".lock")));
        QCOMPARE(::chmod(file.constData(), 0644), 0);
        QCOMPARE(::chmod(QFile::encodeName(m_folder->path()).constData(), 0777), 0);
    }
    QVERIFY(setRights(false));
    const auto giveBack = qScopeGuard([&] { setRights(true); });
    const QString readOnly = s("\"attempt to write a readonly database .*\" in \"INSERT ");
    expectAFailure({readOnly + s("OR REPLACE INTO meta.*"), readOnly + s("INTO event.*")});
    start();
    m_service->takeEvent(decoded(s("after")), s(":1.1"));
    QVERIFY(!m_service->flush());
    QVERIFY(setRights(true));
    QTRY_COMPARE(descriptions(), QStringList({s("before"), s("after")}));
}

void tst_EventlistService::forgetsWhatWasRolledBack()
{
    m_settings.maximumAlarms = 1;
    start();
    m_service->takeEvent(decoded(s("first"), alarm, active), s(":1.1"));
    m_service->acknowledgeCentralDetector(s("meier"), s(":1.1"));
    QVERIFY(m_service->flush());
    QSignalSpy states(m_service.get(), &EventlistService::alarmStatesChanged);
    QSignalSpy icons(m_service.get(), &EventlistService::iconAvailable);
    QCOMPARE(m_service->registerHash(s("abcd")), HashRegister::Result::registered);

    // Fails behind the entry about the overflow, when the central detector is set.
    expectAFailure({missing()});
    QVERIFY(runBeside(trigger()));
    DecodedEvent second = decoded(s("second"), alarm, active);
    second.event.alarmId = s("second");
    second.event.icon = s("EventlistAlarmOn");
    second.event.sourceHashes = s("abcd");
    m_service->takeEvent(second, s(":1.1"));
    QVERIFY(!m_service->flush());
    QCOMPARE(states.count() + icons.count(), 0);
    QVERIFY(runBeside(s("DROP TRIGGER fails")));
    QVERIFY(m_service->flush());
    QCOMPARE(states.count(), 1);
    QCOMPARE(icons.count(), 1);
    QCOMPARE(eventIds().count(s("EventlistHandler/AlarmlistOverflow")), 1);
    QCOMPARE(eventIds().count(s("EventlistHandler/CentralDetectorActive")), 2);
    QCOMPARE(descriptions(), QStringList({s("first"), s("second")}));
}

void tst_EventlistService::keepsTheTimeOfAnAcknowledgement()
{
    start();
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    QVERIFY(m_service->flush());
    expectAFailure({missing()});
    QVERIFY(runBeside(trigger()));
    m_service->acknowledgeAlarms({s("id")}, s("meier"), s(":1.1"));
    m_service->acknowledgeCentralDetector(s("meier"), s(":1.1"));
    const qint64 latest = QDateTime::currentMSecsSinceEpoch();
    QVERIFY(!m_service->flush());
    QTRY_VERIFY(QDateTime::currentMSecsSinceEpoch() > latest);
    QVERIFY(runBeside(s("DROP TRIGGER fails")));

    QString error;
    const Rows rows = m_service->alarms(QString(), error).value(s("data")).value<Rows>();
    // The trouble itself is a fault, and newer.
    QCOMPARE(rows.size(), 2);
    const QDateTime at = QDateTime::fromString(rows.constLast().constLast(), Qt::ISODateWithMs);
    QVERIFY(at.isValid());
    QVERIFY(at.toMSecsSinceEpoch() <= latest);
    EventFilter filter;
    filter.eventIds = QStringList(
        {s("EventlistHandler/AlarmAcknowledged"), s("EventlistHandler/CentralDetectorInactive")});
    filter.columns = QStringList({s("TimestampUtc")});
    const Rows entries = m_service->events(filter, error).value(s("data")).value<Rows>();
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries.at(1).constFirst().toLongLong(), at.toMSecsSinceEpoch());
    QVERIFY(entries.at(0).constFirst().toLongLong() <= latest);
}

void tst_EventlistService::hearsOperatorsAboveTheNoise()
{
    m_settings.senderLimits.eventBurst = 1;
    m_settings.senderLimits.eventsPerSecond = 0.001;
    start();
    QVERIFY(m_service->admitsEvent(s(":1.1")));
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    QVERIFY(!m_service->admitsEvent(s(":1.1")));
    m_service->acknowledgeAlarms({s("id")}, s("meier"), s(":1.1"));
    m_service->acknowledgeCentralDetector(s("meier"), s(":1.1"));
    QCOMPARE(alarms(), QStringList({s("id 11")}));
    QVERIFY(!m_service->alarmState().value(s("CentralDetector")).toBool());
}

void tst_EventlistService::namesWhoseAcknowledgementIsRefused()
{
    m_settings.senderLimits.acknowledgementBurst = 1;
    m_settings.senderLimits.acknowledgementsPerSecond = 0.001;
    start();
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    m_service->acknowledgeCentralDetector(s("meier"), s(":1.1"));
    m_warnings.expect(
        s("An acknowledgement by \"schmidt\" from \":1.1\" is refused: too many of them"));
    m_service->acknowledgeAlarms({s("id")}, s("schmidt"), s(":1.1"));
    QCOMPARE(alarms(), QStringList({s("id 10")}));
    m_service->acknowledgeAlarms({s("id")}, s("schmidt"), s(":1.2"));
    QCOMPARE(alarms(), QStringList({s("id 11")}));
}

void tst_EventlistService::keepsRoomForAcknowledgementsInTheQueue()
{
    m_settings.maximumQueue = 10000;
    m_settings.acknowledgementReserve = 10;
    start();
    m_service->takeEvent(decoded(s("on"), alarm, active), s(":1.1"));
    QVERIFY(m_service->flush());
    DecodedEvent filler = decoded(QString());
    filler.event.description = QString(10000 - filler.event.size(), QLatin1Char('x'));
    m_service->takeEvent(filler, s(":1.1"));
    m_service->takeEvent(decoded(s("too much")), s(":1.1"));
    m_warnings.expect(
        s("An acknowledgement by \"schmidt\" from \":1.1\" is refused: the queue is full"));
    m_service->acknowledgeAlarms({s("much too long")}, s("schmidt"), s(":1.1"));
    m_service->acknowledgeAlarms({s("id")}, s("meier"), s(":1.1"));
    QCOMPARE(alarms(), QStringList({s("id 11")}));
    QCOMPARE(descriptions(), QStringList({s("on"), filler.event.description}));
}

QTEST_GUILESS_MAIN(tst_EventlistService)
#include "tst_EventlistService.moc"
