#include "Definitions/EventlistHandlerDefinitions.h"

const QString& EventlistHandlerDefinitions::getModuleName()
{
    static const QString value = QStringLiteral("EventlistHandler");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameEventlistRead()
{
    static const QString value = QStringLiteral("EventlistRead");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameEventlistWrite()
{
    static const QString value = QStringLiteral("EventlistWrite");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameAlarmlistRead()
{
    static const QString value = QStringLiteral("AlarmlistRead");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameAlarmlistWrite()
{
    static const QString value = QStringLiteral("AlarmlistWrite");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameHashRegister()
{
    static const QString value = QStringLiteral("HashRegister");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameGlobalEvent()
{
    static const QString value = QStringLiteral("Global");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameProcessData()
{
    static const QString value = QStringLiteral("ProcessData");
    return value;
}

const QString& EventlistHandlerDefinitions::getObjectNameSelectorData()
{
    static const QString value = QStringLiteral("SelectorData");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameEventlistRead()
{
    static const QString value = QStringLiteral("Interface.EventlistRead");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameEventlistWrite()
{
    static const QString value = QStringLiteral("Interface.EventlistWrite");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameAlarmlistRead()
{
    static const QString value = QStringLiteral("Interface.AlarmlistRead");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameAlarmlistWrite()
{
    static const QString value = QStringLiteral("Interface.AlarmlistWrite");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameHashRegister()
{
    static const QString value = QStringLiteral("Interface.RegisterHash");
    return value;
}

const QString& EventlistHandlerDefinitions::getInterfaceNameEvent()
{
    static const QString value = QStringLiteral("Interface.Event");
    return value;
}

const QString& EventlistHandlerDefinitions::getPrefixHash()
{
    static const QString value = QStringLiteral("Hash");
    return value;
}

const QString& EventlistHandlerDefinitions::getHashRegisterSignalName()
{
    static const QString value = QStringLiteral("availableEventIcon");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordFirmware()
{
    static const QString value = QStringLiteral("Firmware");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordBoot()
{
    static const QString value = QStringLiteral("Boot");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordSystembus()
{
    static const QString value = QStringLiteral("Systembus");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordCertificate()
{
    static const QString value = QStringLiteral("Certificate");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordObserver()
{
    static const QString value = QStringLiteral("Observer");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordCentralDetector()
{
    static const QString value = QStringLiteral("CentralDetector");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordAlarmActive()
{
    static const QString value = QStringLiteral("AlarmActive");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordAlarmInactive()
{
    static const QString value = QStringLiteral("AlarmInactive");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordAlarmAck()
{
    static const QString value = QStringLiteral("AlarmAck");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordPowerOnOff()
{
    static const QString value = QStringLiteral("PowerOnOff");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordConfiguration()
{
    static const QString value = QStringLiteral("Configuration");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordEmail()
{
    static const QString value = QStringLiteral("Email");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordUsb()
{
    static const QString value = QStringLiteral("USB");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordUpdate()
{
    static const QString value = QStringLiteral("Update");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordBattery()
{
    static const QString value = QStringLiteral("Battery");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordStatus()
{
    static const QString value = QStringLiteral("Status");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordUser()
{
    static const QString value = QStringLiteral("User");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordError()
{
    static const QString value = QStringLiteral("Error");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordPlc()
{
    static const QString value = QStringLiteral("PLC");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordTune()
{
    static const QString value = QStringLiteral("Tune");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordLicense()
{
    static const QString value = QStringLiteral("License");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordRecorder()
{
    static const QString value = QStringLiteral("Recorder");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordRestart()
{
    static const QString value = QStringLiteral("Restart");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordBatch()
{
    static const QString value = QStringLiteral("Batch");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeywordMemory()
{
    static const QString value = QStringLiteral("Memory");
    return value;
}

const QString& EventlistHandlerDefinitions::getListHeaderName()
{
    static const QString value = QStringLiteral("header");
    return value;
}

const QString& EventlistHandlerDefinitions::getListDataName()
{
    static const QString value = QStringLiteral("data");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameKeywordId()
{
    static const QString value = QStringLiteral("KeywordId");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameEventlistId()
{
    static const QString value = QStringLiteral("EventlistId");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameEventType()
{
    static const QString value = QStringLiteral("EventType");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameEventState()
{
    static const QString value = QStringLiteral("State");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameIconType()
{
    static const QString value = QStringLiteral("IconType");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameModuleName()
{
    static const QString value = QStringLiteral("ModuleName");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameLocalTime()
{
    static const QString value = QStringLiteral("DateTimeLocal");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameTimestampUtc()
{
    static const QString value = QStringLiteral("TimestampUtc");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameTimestampOffset()
{
    static const QString value = QStringLiteral("TimestampOffset");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameDateTimeMsUtc()
{
    static const QString value = QStringLiteral("DateTimeMsUTC");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameDescription()
{
    static const QString value = QStringLiteral("Description");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameUser()
{
    static const QString value = QStringLiteral("User");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameKeywords()
{
    static const QString value = QStringLiteral("KeywordName");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameAlarmActive()
{
    static const QString value = QStringLiteral("AlarmActive");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameAlarmAcknowledgment()
{
    static const QString value = QStringLiteral("AlarmAcknowledgment");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameAlarmID()
{
    static const QString value = QStringLiteral("AlarmID");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameEventId()
{
    static const QString value = QStringLiteral("EventId");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameMetaData()
{
    static const QString value = QStringLiteral("MetaData");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameSourceHashType()
{
    static const QString value = QStringLiteral("SourceHashType");
    return value;
}

const QString& EventlistHandlerDefinitions::getListColumnNameSourceHashes()
{
    static const QString value = QStringLiteral("SourceHashes");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeyMetaDataDescriptionScheme()
{
    static const QString value = QStringLiteral("DescriptionScheme");
    return value;
}

const QString& EventlistHandlerDefinitions::getKeyMetaDataArguments()
{
    static const QString value = QStringLiteral("Arguments");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlAlarmAcknowledged()
{
    static const QString value = QStringLiteral("EventlistHandler/AlarmAcknowledged");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlCentralDetectorInactive()
{
    static const QString value = QStringLiteral("EventlistHandler/CentralDetectorInactive");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlCentralDetectorActive()
{
    static const QString value = QStringLiteral("EventlistHandler/CentralDetectorActive");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlAlarmlistOverflow()
{
    static const QString value = QStringLiteral("EventlistHandler/AlarmlistOverflow");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventlist()
{
    static const QString value = QStringLiteral("EventlistHandler/Eventlist");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventTypeAlarm()
{
    static const QString value = QStringLiteral("EventlistHandler/EventTypeAlarm");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventTypeFault()
{
    static const QString value = QStringLiteral("EventlistHandler/EventTypeFault");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventTypeAuditTrail()
{
    static const QString value = QStringLiteral("EventlistHandler/EventTypeAuditTrail");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventTypeOtherEvent()
{
    static const QString value = QStringLiteral("EventlistHandler/EventTypeOtherEvent");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlPowerOnEvent()
{
    static const QString value = QStringLiteral("EventlistHandler/PowerOnEvent");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlSystemWatchdog()
{
    static const QString value = QStringLiteral("EventlistHandler/SystemWatchdog");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlSystemHasBeenRestarted()
{
    static const QString value = QStringLiteral("EventlistHandler/SystemRestarted");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlFactoryResetSuccessful()
{
    static const QString value = QStringLiteral("EventlistHandler/FactoryResetSuccessful");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlFactoryResetError()
{
    static const QString value = QStringLiteral("EventlistHandler/FactoryResetError");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlEventlistDeleted()
{
    static const QString value = QStringLiteral("EventlistHandler/EventlistDeleted");
    return value;
}

const QString& EventlistHandlerDefinitions::getTextUrlFaultDatabaseError()
{
    static const QString value = QStringLiteral("GlobalFaultTexts/DataBaseFault");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEventlist()
{
    static const QString value = QStringLiteral("EventList");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameAcknowledgeAlarm()
{
    static const QString value = QStringLiteral("EventlistAcknowledgeAlarm");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameAcknowledgeFault()
{
    static const QString value = QStringLiteral("EventlistAcknowledgeFault");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEvent()
{
    static const QString value = QStringLiteral("EventlistEvent");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEventOn()
{
    static const QString value = QStringLiteral("EventlistEventOn");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEventOff()
{
    static const QString value = QStringLiteral("EventlistEventOff");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameAuditTrail()
{
    static const QString value = QStringLiteral("EventlistAuditTrail");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameAlarmOn()
{
    static const QString value = QStringLiteral("EventlistAlarmOn");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameAlarmOff()
{
    static const QString value = QStringLiteral("EventlistAlarmOff");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameFaultOn()
{
    static const QString value = QStringLiteral("EventlistFaultOn");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameFaultOff()
{
    static const QString value = QStringLiteral("EventlistFaultOff");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEventPowerOn()
{
    static const QString value = QStringLiteral("EventlistPowerOn");
    return value;
}

const QString& EventlistHandlerDefinitions::getIconNameEventPowerOff()
{
    static const QString value = QStringLiteral("EventlistPowerOff");
    return value;
}

const QString& EventlistHandlerDefinitions::getPathEventToFile()
{
    static const QString value =
        QString::fromUtf8(EVENTLISTHANDLER_DATA_ROOT) + QStringLiteral("var/EventToFileData/");
    return value;
}

const QString& EventlistHandlerDefinitions::getExtensionEventToFile()
{
    static const QString value = QStringLiteral(".event.json");
    return value;
}

const QString& EventlistHandlerDefinitions::getSeperatorEventToFile()
{
    static const QString value = QStringLiteral(";");
    return value;
}

const QStringList& EventlistHandlerDefinitions::getEventTypes()
{
    static const QStringList value{QStringLiteral("alarm"), QStringLiteral("auditTrail"),
                                   QStringLiteral("fault"), QStringLiteral("otherEvents")};
    return value;
}

const QStringList& EventlistHandlerDefinitions::getStates()
{
    static const QStringList value{QStringLiteral("neutral"), QStringLiteral("active"),
                                   QStringLiteral("inactive")};
    return value;
}
