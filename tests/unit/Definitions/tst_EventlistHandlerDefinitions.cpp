#include "Definitions/EventlistHandlerDefinitions.h"

#include "Definitions/EventlistHandlerEnums.h"
#include "TestSupport/SpoolFolder.h"
#include "TestSupport/WarningRecorder.h"

#include <QFile>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QTest>

#include <atomic>
#include <thread>

using Definitions = EventlistHandlerDefinitions;

namespace
{

struct Row
{
    const char* name;
    const QString& (*accessor)();
    const char* value;
};

#define ROW(accessor, value)                                                                       \
    {                                                                                              \
#accessor, &Definitions::accessor, value                                                   \
    }

// Every accessor of a string that is a literal, in the order of the declarations.
const Row rows[] = {
    ROW(getModuleName, "EventlistHandler"),
    ROW(getObjectNameEventlistRead, "EventlistRead"),
    ROW(getObjectNameEventlistWrite, "EventlistWrite"),
    ROW(getObjectNameAlarmlistRead, "AlarmlistRead"),
    ROW(getObjectNameAlarmlistWrite, "AlarmlistWrite"),
    ROW(getObjectNameHashRegister, "HashRegister"),
    ROW(getObjectNameGlobalEvent, "Global"),
    ROW(getObjectNameProcessData, "ProcessData"),
    ROW(getObjectNameSelectorData, "SelectorData"),
    ROW(getInterfaceNameEventlistRead, "Interface.EventlistRead"),
    ROW(getInterfaceNameEventlistWrite, "Interface.EventlistWrite"),
    ROW(getInterfaceNameAlarmlistRead, "Interface.AlarmlistRead"),
    ROW(getInterfaceNameAlarmlistWrite, "Interface.AlarmlistWrite"),
    ROW(getInterfaceNameHashRegister, "Interface.RegisterHash"),
    ROW(getInterfaceNameEvent, "Interface.Event"),
    ROW(getPrefixHash, "Hash"),
    ROW(getHashRegisterSignalName, "availableEventIcon"),
    ROW(getKeywordFirmware, "Firmware"),
    ROW(getKeywordBoot, "Boot"),
    ROW(getKeywordSystembus, "Systembus"),
    ROW(getKeywordCertificate, "Certificate"),
    ROW(getKeywordObserver, "Observer"),
    ROW(getKeywordCentralDetector, "CentralDetector"),
    ROW(getKeywordAlarmActive, "AlarmActive"),
    ROW(getKeywordAlarmInactive, "AlarmInactive"),
    ROW(getKeywordAlarmAck, "AlarmAck"),
    ROW(getKeywordPowerOnOff, "PowerOnOff"),
    ROW(getKeywordConfiguration, "Configuration"),
    ROW(getKeywordEmail, "Email"),
    ROW(getKeywordUsb, "USB"),
    ROW(getKeywordUpdate, "Update"),
    ROW(getKeywordBattery, "Battery"),
    ROW(getKeywordStatus, "Status"),
    ROW(getKeywordUser, "User"),
    ROW(getKeywordError, "Error"),
    ROW(getKeywordPlc, "PLC"),
    ROW(getKeywordTune, "Tune"),
    ROW(getKeywordLicense, "License"),
    ROW(getKeywordRecorder, "Recorder"),
    ROW(getKeywordRestart, "Restart"),
    ROW(getKeywordBatch, "Batch"),
    ROW(getKeywordMemory, "Memory"),
    ROW(getListHeaderName, "header"),
    ROW(getListDataName, "data"),
    ROW(getListColumnNameKeywordId, "KeywordId"),
    ROW(getListColumnNameEventlistId, "EventlistId"),
    ROW(getListColumnNameEventType, "EventType"),
    ROW(getListColumnNameEventState, "State"),
    ROW(getListColumnNameIconType, "IconType"),
    ROW(getListColumnNameModuleName, "ModuleName"),
    ROW(getListColumnNameLocalTime, "DateTimeLocal"),
    ROW(getListColumnNameTimestampUtc, "TimestampUtc"),
    ROW(getListColumnNameTimestampOffset, "TimestampOffset"),
    ROW(getListColumnNameDateTimeMsUtc, "DateTimeMsUTC"),
    ROW(getListColumnNameDescription, "Description"),
    ROW(getListColumnNameUser, "User"),
    ROW(getListColumnNameKeywords, "KeywordName"),
    ROW(getListColumnNameAlarmActive, "AlarmActive"),
    ROW(getListColumnNameAlarmAcknowledgment, "AlarmAcknowledgment"),
    ROW(getListColumnNameAlarmID, "AlarmID"),
    ROW(getListColumnNameEventId, "EventId"),
    ROW(getListColumnNameMetaData, "MetaData"),
    ROW(getListColumnNameSourceHashType, "SourceHashType"),
    ROW(getListColumnNameSourceHashes, "SourceHashes"),
    ROW(getKeyMetaDataDescriptionScheme, "DescriptionScheme"),
    ROW(getKeyMetaDataArguments, "Arguments"),
    ROW(getTextUrlAlarmAcknowledged, "EventlistHandler/AlarmAcknowledged"),
    ROW(getTextUrlCentralDetectorInactive, "EventlistHandler/CentralDetectorInactive"),
    ROW(getTextUrlCentralDetectorActive, "EventlistHandler/CentralDetectorActive"),
    ROW(getTextUrlAlarmlistOverflow, "EventlistHandler/AlarmlistOverflow"),
    ROW(getTextUrlEventlist, "EventlistHandler/Eventlist"),
    ROW(getTextUrlEventTypeAlarm, "EventlistHandler/EventTypeAlarm"),
    ROW(getTextUrlEventTypeFault, "EventlistHandler/EventTypeFault"),
    ROW(getTextUrlEventTypeAuditTrail, "EventlistHandler/EventTypeAuditTrail"),
    ROW(getTextUrlEventTypeOtherEvent, "EventlistHandler/EventTypeOtherEvent"),
    ROW(getTextUrlPowerOnEvent, "EventlistHandler/PowerOnEvent"),
    ROW(getTextUrlSystemWatchdog, "EventlistHandler/SystemWatchdog"),
    ROW(getTextUrlSystemHasBeenRestarted, "EventlistHandler/SystemRestarted"),
    ROW(getTextUrlFactoryResetSuccessful, "EventlistHandler/FactoryResetSuccessful"),
    ROW(getTextUrlFactoryResetError, "EventlistHandler/FactoryResetError"),
    ROW(getTextUrlEventlistDeleted, "EventlistHandler/EventlistDeleted"),
    ROW(getTextUrlFaultDatabaseError, "GlobalFaultTexts/DataBaseFault"),
    ROW(getIconNameEventlist, "EventList"),
    ROW(getIconNameAcknowledgeAlarm, "EventlistAcknowledgeAlarm"),
    ROW(getIconNameAcknowledgeFault, "EventlistAcknowledgeFault"),
    ROW(getIconNameEvent, "EventlistEvent"),
    ROW(getIconNameEventOn, "EventlistEventOn"),
    ROW(getIconNameEventOff, "EventlistEventOff"),
    ROW(getIconNameAuditTrail, "EventlistAuditTrail"),
    ROW(getIconNameAlarmOn, "EventlistAlarmOn"),
    ROW(getIconNameAlarmOff, "EventlistAlarmOff"),
    ROW(getIconNameFaultOn, "EventlistFaultOn"),
    ROW(getIconNameFaultOff, "EventlistFaultOff"),
    ROW(getIconNameEventPowerOn, "EventlistPowerOn"),
    ROW(getIconNameEventPowerOff, "EventlistPowerOff"),
    ROW(getExtensionEventToFile, ".event.json"),
    ROW(getSeperatorEventToFile, ";"),
};

#undef ROW

} // namespace

class tst_EventlistHandlerDefinitions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void givesOneAddressToTwoThreadsThatRaceAtFirstUse();
    void givesTheWord_data();
    void givesTheWord();
    void sharesTheLiteralAndOwnsNoMemory_data() { givesTheWord_data(); }
    void sharesTheLiteralAndOwnsNoMemory();
    void givesTheSameObjectAtEveryCall();
    void declaresTheAccessorsInTheOrderOfTheTables();
    void joinsTheSpoolFolderFromTheDataRoot();
    void needsNoSeparatorBetweenFolderNameAndEnding();
    void listsTheEventTypesByTheirValue();
    void namesTheEventTypesLikeTheEnumerators();
    void listsTheStatesByTheirValue();
    void keepsTheInconsistenciesOfTheWords();

private:
    WarningRecorder m_warnings;
};

// First of all: neither another test function nor the loading of the library has used these two.
void tst_EventlistHandlerDefinitions::givesOneAddressToTwoThreadsThatRaceAtFirstUse()
{
    std::atomic<int> readyCount{0};
    const void* states[2] = {};
    const void* lists[2] = {};
    const auto use = [&](int index) {
        ++readyCount;
        while (readyCount < 2)
        {
        }
        states[index] = &Definitions::getStates();
        lists[index] = &Definitions::getEventTypes();
    };

    std::thread first(use, 0);
    std::thread second(use, 1);
    first.join();
    second.join();

    QVERIFY(states[0] != nullptr);
    QCOMPARE(states[0], states[1]);
    QCOMPARE(lists[0], lists[1]);
    QCOMPARE(states[0], static_cast<const void*>(&Definitions::getStates()));
}

void tst_EventlistHandlerDefinitions::givesTheWord_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Row& row : rows)
    {
        QTest::newRow(row.name) << index++;
    }
}

void tst_EventlistHandlerDefinitions::givesTheWord()
{
    QFETCH(int, index);
    QCOMPARE(rows[index].accessor(), QString::fromLatin1(rows[index].value));
}

void tst_EventlistHandlerDefinitions::sharesTheLiteralAndOwnsNoMemory()
{
    QFETCH(int, index);
    QString copy = rows[index].accessor();

    QVERIFY(copy.data_ptr()->ref.isStatic());
    QCOMPARE(copy.constData(), rows[index].accessor().constData());
}

void tst_EventlistHandlerDefinitions::givesTheSameObjectAtEveryCall()
{
    for (const Row& row : rows)
    {
        QVERIFY2(&row.accessor() == &row.accessor(), row.name);
    }
    QCOMPARE(&Definitions::getPathEventToFile(), &Definitions::getPathEventToFile());
    QCOMPARE(&Definitions::getEventTypes(), &Definitions::getEventTypes());
    QCOMPARE(&Definitions::getStates(), &Definitions::getStates());
}

void tst_EventlistHandlerDefinitions::declaresTheAccessorsInTheOrderOfTheTables()
{
    QFile header(QStringLiteral(TEST_SOURCE_FOLDER "Definitions/EventlistHandlerDefinitions.h"));
    QVERIFY(header.open(QFile::ReadOnly));
    const QRegularExpression declaration(
        QStringLiteral("static const (?:QString|QStringList)&\\s+(\\w+)\\(\\);"));
    QStringList declared;
    auto found = declaration.globalMatch(QString::fromUtf8(header.readAll()));
    while (found.hasNext())
    {
        declared.append(found.next().captured(1));
    }

    QStringList expected;
    for (const Row& row : rows)
    {
        expected.append(QString::fromLatin1(row.name));
    }
    expected.insert(expected.indexOf(QStringLiteral("getExtensionEventToFile")),
                    QStringLiteral("getPathEventToFile"));
    expected << QStringLiteral("getEventTypes") << QStringLiteral("getStates");
    QCOMPARE(declared, expected);
    QCOMPARE(declared.size(), 100);
}

void tst_EventlistHandlerDefinitions::joinsTheSpoolFolderFromTheDataRoot()
{
    QString path = Definitions::getPathEventToFile();

    QCOMPARE(path, QStringLiteral(TEST_DATA_ROOT "var/EventToFileData/"));
    QCOMPARE(path, SpoolFolder::compiledInPath());
    // The one word of the catalogue that is no literal.
    QVERIFY(!path.data_ptr()->ref.isStatic());
}

void tst_EventlistHandlerDefinitions::needsNoSeparatorBetweenFolderNameAndEnding()
{
    QVERIFY(Definitions::getPathEventToFile().endsWith(QLatin1Char('/')));
    QVERIFY(Definitions::getExtensionEventToFile().startsWith(QLatin1Char('.')));
}

void tst_EventlistHandlerDefinitions::listsTheEventTypesByTheirValue()
{
    QCOMPARE(Definitions::getEventTypes(),
             QStringList({QStringLiteral("alarm"), QStringLiteral("auditTrail"),
                          QStringLiteral("fault"), QStringLiteral("otherEvents")}));
}

void tst_EventlistHandlerDefinitions::namesTheEventTypesLikeTheEnumerators()
{
    const auto metaEnum = QMetaEnum::fromType<EventlistHandlerEnums::EventType>();
    QCOMPARE(metaEnum.keyCount(), Definitions::getEventTypes().size());
    for (int i = 0; i < metaEnum.keyCount(); ++i)
    {
        QCOMPARE(Definitions::getEventTypes().at(metaEnum.value(i)),
                 QString::fromLatin1(metaEnum.key(i)));
    }
}

void tst_EventlistHandlerDefinitions::listsTheStatesByTheirValue()
{
    const QStringList& states = Definitions::getStates();

    QCOMPARE(states.size(), 3);
    QCOMPARE(states.at(int(EventlistHandlerEnums::State::neutral)), QStringLiteral("neutral"));
    QCOMPARE(states.at(int(EventlistHandlerEnums::State::active)), QStringLiteral("active"));
    QCOMPARE(states.at(int(EventlistHandlerEnums::State::inactive)), QStringLiteral("inactive"));
}

void tst_EventlistHandlerDefinitions::keepsTheInconsistenciesOfTheWords()
{
    QCOMPARE(Definitions::getListColumnNameKeywords(), QStringLiteral("KeywordName"));
    QCOMPARE(Definitions::getListColumnNameEventState(), QStringLiteral("State"));
    QCOMPARE(Definitions::getIconNameEventlist(), QStringLiteral("EventList"));
    QVERIFY(Definitions::getTextUrlSystemHasBeenRestarted().endsWith(
        QStringLiteral("SystemRestarted")));
    QVERIFY(!Definitions::getTextUrlFaultDatabaseError().startsWith(Definitions::getModuleName()));
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerDefinitions)
#include "tst_EventlistHandlerDefinitions.moc"
