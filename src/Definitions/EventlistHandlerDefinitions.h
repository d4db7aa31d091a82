#pragma once

#include "Definitions/EventlistHandlerExport.h"

#include <QString>
#include <QStringList>

/// The words that modules, this library and the central service share. They are a contract with the
/// service and with stored data, inconsistencies included: no value is made more regular.
///
/// Threads: any, at any time after the library is loaded, also from static initialisers. A value is
/// built at first use; the reference stays valid until the process ends, and each call returns the
/// same object.
class EVENTLISTHANDLER_EXPORT EventlistHandlerDefinitions
{
public:
    EventlistHandlerDefinitions() = delete;

    // Module and bus names. The module name is the word under which the central service is
    // addressed; object and interface names are those of its objects.
    static const QString& getModuleName();                  ///< "EventlistHandler"
    static const QString& getObjectNameEventlistRead();     ///< "EventlistRead"
    static const QString& getObjectNameEventlistWrite();    ///< "EventlistWrite"
    static const QString& getObjectNameAlarmlistRead();     ///< "AlarmlistRead"
    static const QString& getObjectNameAlarmlistWrite();    ///< "AlarmlistWrite"
    static const QString& getObjectNameHashRegister();      ///< "HashRegister"
    static const QString& getObjectNameGlobalEvent();       ///< "Global"
    static const QString& getObjectNameProcessData();       ///< "ProcessData"
    static const QString& getObjectNameSelectorData();      ///< "SelectorData"
    static const QString& getInterfaceNameEventlistRead();  ///< "Interface.EventlistRead"
    static const QString& getInterfaceNameEventlistWrite(); ///< "Interface.EventlistWrite"
    static const QString& getInterfaceNameAlarmlistRead();  ///< "Interface.AlarmlistRead"
    static const QString& getInterfaceNameAlarmlistWrite(); ///< "Interface.AlarmlistWrite"
    static const QString& getInterfaceNameHashRegister();   ///< "Interface.RegisterHash"
    static const QString& getInterfaceNameEvent();          ///< "Interface.Event"
    static const QString& getPrefixHash();                  ///< "Hash"
    static const QString& getHashRegisterSignalName();      ///< "availableEventIcon"

    // Keywords, by which events are classified. The library itself uses only "Firmware", which
    // every producer carries, and "AlarmAck"; the others are here so that all modules classify with
    // the same words.
    static const QString& getKeywordFirmware();        ///< "Firmware"
    static const QString& getKeywordBoot();            ///< "Boot"
    static const QString& getKeywordSystembus();       ///< "Systembus"
    static const QString& getKeywordCertificate();     ///< "Certificate"
    static const QString& getKeywordObserver();        ///< "Observer"
    static const QString& getKeywordCentralDetector(); ///< "CentralDetector"
    static const QString& getKeywordAlarmActive();     ///< "AlarmActive"
    static const QString& getKeywordAlarmInactive();   ///< "AlarmInactive"
    static const QString& getKeywordAlarmAck();        ///< "AlarmAck"
    static const QString& getKeywordPowerOnOff();      ///< "PowerOnOff"
    static const QString& getKeywordConfiguration();   ///< "Configuration"
    static const QString& getKeywordEmail();           ///< "Email"
    static const QString& getKeywordUsb();             ///< "USB"
    static const QString& getKeywordUpdate();          ///< "Update"
    static const QString& getKeywordBattery();         ///< "Battery"
    static const QString& getKeywordStatus();          ///< "Status"
    static const QString& getKeywordUser();            ///< "User"
    static const QString& getKeywordError();           ///< "Error"
    static const QString& getKeywordPlc();             ///< "PLC"
    static const QString& getKeywordTune();            ///< "Tune"
    static const QString& getKeywordLicense();         ///< "License"
    static const QString& getKeywordRecorder();        ///< "Recorder"
    static const QString& getKeywordRestart();         ///< "Restart"
    static const QString& getKeywordBatch();           ///< "Batch"
    static const QString& getKeywordMemory();          ///< "Memory"

    // Names of the parts of an event list or alarm list and of its columns. The value is what
    // counts: some differ from the accessor's name.
    static const QString& getListHeaderName();                    ///< "header"
    static const QString& getListDataName();                      ///< "data"
    static const QString& getListColumnNameKeywordId();           ///< "KeywordId"
    static const QString& getListColumnNameEventlistId();         ///< "EventlistId"
    static const QString& getListColumnNameEventType();           ///< "EventType"
    static const QString& getListColumnNameEventState();          ///< "State"
    static const QString& getListColumnNameIconType();            ///< "IconType"
    static const QString& getListColumnNameModuleName();          ///< "ModuleName"
    static const QString& getListColumnNameLocalTime();           ///< "DateTimeLocal"
    static const QString& getListColumnNameTimestampUtc();        ///< "TimestampUtc"
    static const QString& getListColumnNameTimestampOffset();     ///< "TimestampOffset"
    static const QString& getListColumnNameDateTimeMsUtc();       ///< "DateTimeMsUTC"
    static const QString& getListColumnNameDescription();         ///< "Description"
    static const QString& getListColumnNameUser();                ///< "User"
    static const QString& getListColumnNameKeywords();            ///< "KeywordName"
    static const QString& getListColumnNameAlarmActive();         ///< "AlarmActive"
    static const QString& getListColumnNameAlarmAcknowledgment(); ///< "AlarmAcknowledgment"
    static const QString& getListColumnNameAlarmID();             ///< "AlarmID"
    static const QString& getListColumnNameEventId();             ///< "EventId"
    static const QString& getListColumnNameMetaData();            ///< "MetaData"
    static const QString& getListColumnNameSourceHashType();      ///< "SourceHashType"
    static const QString& getListColumnNameSourceHashes();        ///< "SourceHashes"

    // The two members of a metadata object.
    static const QString& getKeyMetaDataDescriptionScheme(); ///< "DescriptionScheme"
    static const QString& getKeyMetaDataArguments();         ///< "Arguments"

    // Text urls of the central service's own texts. Modules that show such an event look the text
    // up under these.
    static const QString& getTextUrlAlarmAcknowledged(); ///< "EventlistHandler/AlarmAcknowledged"
    static const QString&
    getTextUrlCentralDetectorInactive(); ///< "EventlistHandler/CentralDetectorInactive"
    static const QString&
    getTextUrlCentralDetectorActive(); ///< "EventlistHandler/CentralDetectorActive"
    static const QString& getTextUrlAlarmlistOverflow(); ///< "EventlistHandler/AlarmlistOverflow"
    static const QString& getTextUrlEventlist();         ///< "EventlistHandler/Eventlist"
    static const QString& getTextUrlEventTypeAlarm();    ///< "EventlistHandler/EventTypeAlarm"
    static const QString& getTextUrlEventTypeFault();    ///< "EventlistHandler/EventTypeFault"
    static const QString&
    getTextUrlEventTypeAuditTrail(); ///< "EventlistHandler/EventTypeAuditTrail"
    static const QString&
    getTextUrlEventTypeOtherEvent();                  ///< "EventlistHandler/EventTypeOtherEvent"
    static const QString& getTextUrlPowerOnEvent();   ///< "EventlistHandler/PowerOnEvent"
    static const QString& getTextUrlSystemWatchdog(); ///< "EventlistHandler/SystemWatchdog"
    static const QString&
    getTextUrlSystemHasBeenRestarted(); ///< "EventlistHandler/SystemRestarted"
    static const QString&
    getTextUrlFactoryResetSuccessful(); ///< "EventlistHandler/FactoryResetSuccessful"
    static const QString& getTextUrlFactoryResetError();  ///< "EventlistHandler/FactoryResetError"
    static const QString& getTextUrlEventlistDeleted();   ///< "EventlistHandler/EventlistDeleted"
    static const QString& getTextUrlFaultDatabaseError(); ///< "GlobalFaultTexts/DataBaseFault"

    // Icon names: a short word that travels with an event and names the icon with which it is
    // shown.
    static const QString& getIconNameEventlist();        ///< "EventList"
    static const QString& getIconNameAcknowledgeAlarm(); ///< "EventlistAcknowledgeAlarm"
    static const QString& getIconNameAcknowledgeFault(); ///< "EventlistAcknowledgeFault"
    static const QString& getIconNameEvent();            ///< "EventlistEvent"
    static const QString& getIconNameEventOn();          ///< "EventlistEventOn"
    static const QString& getIconNameEventOff();         ///< "EventlistEventOff"
    static const QString& getIconNameAuditTrail();       ///< "EventlistAuditTrail"
    static const QString& getIconNameAlarmOn();          ///< "EventlistAlarmOn"
    static const QString& getIconNameAlarmOff();         ///< "EventlistAlarmOff"
    static const QString& getIconNameFaultOn();          ///< "EventlistFaultOn"
    static const QString& getIconNameFaultOff();         ///< "EventlistFaultOff"
    static const QString& getIconNameEventPowerOn();     ///< "EventlistPowerOn"
    static const QString& getIconNameEventPowerOff();    ///< "EventlistPowerOff"

    // Spool files: the folder with its closing slash, the ending of a file name, and what joins the
    // keywords.
    static const QString& getPathEventToFile();      ///< data root + "var/EventToFileData/"
    static const QString& getExtensionEventToFile(); ///< ".event.json"
    static const QString& getSeperatorEventToFile(); ///< ";"

    // The text forms of EventType and State: the position in the list equals the enumerator's
    // value.
    static const QStringList& getEventTypes(); ///< "alarm", "auditTrail", "fault", "otherEvents"
    static const QStringList& getStates();     ///< "neutral", "active", "inactive"
};
