<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="EventlistHandler/AlarmAcknowledged">
        <source>Alarm acknowledged</source>
        <translation>Alarm quittiert</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorInactive">
        <source>Central detector inactive</source>
        <translation>Zentralmelder inaktiv</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorActive">
        <source>Central detector active</source>
        <translation>Zentralmelder aktiv</translation>
    </message>
    <message id="EventlistHandler/AlarmlistOverflow">
        <source>Alarm list overflow: the list is full</source>
        <translation>Überlauf der Alarmliste: Die Liste ist voll</translation>
    </message>
    <message id="EventlistHandler/Eventlist">
        <source>Event list</source>
        <translation>Ereignisliste</translation>
    </message>
    <message id="EventlistHandler/EventTypeAlarm">
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message id="EventlistHandler/EventTypeFault">
        <source>Fault</source>
        <translation>Störung</translation>
    </message>
    <message id="EventlistHandler/EventTypeAuditTrail">
        <source>Audit trail</source>
        <translation>Audit-Trail</translation>
    </message>
    <message id="EventlistHandler/EventTypeOtherEvent">
        <source>Other event</source>
        <translation>Sonstiges Ereignis</translation>
    </message>
    <message id="EventlistHandler/PowerOnEvent">
        <source>Device switched on</source>
        <translation>Gerät eingeschaltet</translation>
    </message>
    <message id="EventlistHandler/SystemWatchdog">
        <source>System watchdog triggered: %1</source>
        <extracomment>%1: what the watchdog acted on, such as the name of a program</extracomment>
        <translation>Systemüberwachung hat ausgelöst: %1</translation>
    </message>
    <message id="EventlistHandler/SystemRestarted">
        <source>System restarted</source>
        <translation>System neu gestartet</translation>
    </message>
    <message id="EventlistHandler/FactoryResetSuccessful">
        <source>Device reset to factory settings</source>
        <translation>Gerät auf Werkseinstellungen zurückgesetzt</translation>
    </message>
    <message id="EventlistHandler/FactoryResetError">
        <source>Reset to factory settings failed</source>
        <translation>Zurücksetzen auf Werkseinstellungen fehlgeschlagen</translation>
    </message>
    <message id="EventlistHandler/EventlistDeleted">
        <source>Event list deleted</source>
        <translation>Ereignisliste gelöscht</translation>
    </message>
    <message id="EventlistHandler/EventsDropped">
        <source>%1 events were dropped, from: %2</source>
        <extracomment>%1: a number; %2: what the events came from</extracomment>
        <translation>%1 Ereignisse verworfen, von: %2</translation>
    </message>
    <message id="EventlistHandler/EventProcessingSuppressed">
        <source>Event processing suppressed</source>
        <translation>Ereignisverarbeitung unterdrückt</translation>
    </message>
    <message id="EventlistHandler/EventProcessingResumed">
        <source>Event processing resumed</source>
        <translation>Ereignisverarbeitung wieder aufgenommen</translation>
    </message>
    <message id="GlobalFaultTexts/DataBaseFault">
        <source>Database fault</source>
        <translation>Störung der Datenbank</translation>
    </message>
    <message id="GlobalAuditTrailTexts/AlarmsAcknowledged">
        <source>Alarms acknowledged via %2: %1</source>
        <extracomment>%1: which alarms, as the acknowledging module names them; %2: that module</extracomment>
        <translation>Alarme über %2 quittiert: %1</translation>
    </message>
</context>
</TS>
