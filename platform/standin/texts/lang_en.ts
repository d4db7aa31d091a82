<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <message id="EventlistHandler/AlarmAcknowledged">
        <source>Alarm acknowledged</source>
        <translation>Alarm acknowledged</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorInactive">
        <source>Central detector inactive</source>
        <translation>Central detector inactive</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorActive">
        <source>Central detector active</source>
        <translation>Central detector active</translation>
    </message>
    <message id="EventlistHandler/AlarmlistOverflow">
        <source>Alarm list overflow: the list is full</source>
        <translation>Alarm list overflow: the list is full</translation>
    </message>
    <message id="EventlistHandler/Eventlist">
        <source>Event list</source>
        <translation>Event list</translation>
    </message>
    <message id="EventlistHandler/EventTypeAlarm">
        <source>Alarm</source>
        <translation>Alarm</translation>
    </message>
    <message id="EventlistHandler/EventTypeFault">
        <source>Fault</source>
        <translation>Fault</translation>
    </message>
    <message id="EventlistHandler/EventTypeAuditTrail">
        <source>Audit trail</source>
        <translation>Audit trail</translation>
    </message>
    <message id="EventlistHandler/EventTypeOtherEvent">
        <source>Other event</source>
        <translation>Other event</translation>
    </message>
    <message id="EventlistHandler/PowerOnEvent">
        <source>Device switched on</source>
        <translation>Device switched on</translation>
    </message>
    <message id="EventlistHandler/SystemWatchdog">
        <source>System watchdog triggered: %1</source>
        <extracomment>%1: what the watchdog acted on, such as the name of a program</extracomment>
        <translation>System watchdog triggered: %1</translation>
    </message>
    <message id="EventlistHandler/SystemRestarted">
        <source>System restarted</source>
        <translation>System restarted</translation>
    </message>
    <message id="EventlistHandler/FactoryResetSuccessful">
        <source>Device reset to factory settings</source>
        <translation>Device reset to factory settings</translation>
    </message>
    <message id="EventlistHandler/FactoryResetError">
        <source>Reset to factory settings failed</source>
        <translation>Reset to factory settings failed</translation>
    </message>
    <message id="EventlistHandler/EventlistDeleted">
        <source>Event list deleted</source>
        <translation>Event list deleted</translation>
    </message>
    <message id="EventlistHandler/EventsDropped">
        <source>%1 events were dropped, from: %2</source>
        <extracomment>%1: a number; %2: what the events came from</extracomment>
        <translation>%1 events were dropped, from: %2</translation>
    </message>
    <message id="EventlistHandler/EventProcessingSuppressed">
        <source>Event processing suppressed</source>
        <translation>Event processing suppressed</translation>
    </message>
    <message id="EventlistHandler/EventProcessingResumed">
        <source>Event processing resumed</source>
        <translation>Event processing resumed</translation>
    </message>
    <message id="GlobalFaultTexts/DataBaseFault">
        <source>Database fault</source>
        <translation>Database fault</translation>
    </message>
    <message id="GlobalAuditTrailTexts/AlarmsAcknowledged">
        <source>Alarms acknowledged via %2: %1</source>
        <extracomment>%1: which alarms, as the acknowledging module names them; %2: that module</extracomment>
        <translation>Alarms acknowledged via %2: %1</translation>
    </message>
</context>
</TS>
