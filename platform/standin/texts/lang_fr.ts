<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name></name>
    <message id="EventlistHandler/AlarmAcknowledged">
        <source>Alarm acknowledged</source>
        <translation>Alarme acquittée</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorInactive">
        <source>Central detector inactive</source>
        <translation>Détecteur central inactif</translation>
    </message>
    <message id="EventlistHandler/CentralDetectorActive">
        <source>Central detector active</source>
        <translation>Détecteur central actif</translation>
    </message>
    <message id="EventlistHandler/AlarmlistOverflow">
        <source>Alarm list overflow: the list is full</source>
        <translation>Débordement de la liste d’alarmes&#xa0;: la liste est pleine</translation>
    </message>
    <message id="EventlistHandler/Eventlist">
        <source>Event list</source>
        <translation>Liste des événements</translation>
    </message>
    <message id="EventlistHandler/EventTypeAlarm">
        <source>Alarm</source>
        <translation>Alarme</translation>
    </message>
    <message id="EventlistHandler/EventTypeFault">
        <source>Fault</source>
        <translation>Défaut</translation>
    </message>
    <message id="EventlistHandler/EventTypeAuditTrail">
        <source>Audit trail</source>
        <translation>Piste d’audit</translation>
    </message>
    <message id="EventlistHandler/EventTypeOtherEvent">
        <source>Other event</source>
        <translation>Autre événement</translation>
    </message>
    <message id="EventlistHandler/PowerOnEvent">
        <source>Device switched on</source>
        <translation>Appareil mis sous tension</translation>
    </message>
    <message id="EventlistHandler/SystemWatchdog">
        <source>System watchdog triggered: %1</source>
        <extracomment>%1: what the watchdog acted on, such as the name of a program</extracomment>
        <translation>Le chien de garde du système s’est déclenché&#xa0;: %1</translation>
    </message>
    <message id="EventlistHandler/SystemRestarted">
        <source>System restarted</source>
        <translation>Système redémarré</translation>
    </message>
    <message id="EventlistHandler/FactoryResetSuccessful">
        <source>Device reset to factory settings</source>
        <translation>Appareil réinitialisé aux réglages d’usine</translation>
    </message>
    <message id="EventlistHandler/FactoryResetError">
        <source>Reset to factory settings failed</source>
        <translation>Échec de la réinitialisation aux réglages d’usine</translation>
    </message>
    <message id="EventlistHandler/EventlistDeleted">
        <source>Event list deleted</source>
        <translation>Liste des événements effacée</translation>
    </message>
    <message id="EventlistHandler/EventsDropped">
        <source>%1 events were dropped, from: %2</source>
        <extracomment>%1: a number; %2: what the events came from</extracomment>
        <translation>%1 événements rejetés, de : %2</translation>
    </message>
    <message id="EventlistHandler/EventProcessingSuppressed">
        <source>Event processing suppressed</source>
        <translation>Traitement des événements suspendu</translation>
    </message>
    <message id="EventlistHandler/EventProcessingResumed">
        <source>Event processing resumed</source>
        <translation>Traitement des événements repris</translation>
    </message>
    <message id="GlobalFaultTexts/DataBaseFault">
        <source>Database fault</source>
        <translation>Défaut de la base de données</translation>
    </message>
    <message id="GlobalAuditTrailTexts/AlarmsAcknowledged">
        <source>Alarms acknowledged via %2: %1</source>
        <extracomment>%1: which alarms, as the acknowledging module names them; %2: that module</extracomment>
        <translation>Alarmes acquittées via %2&#xa0;: %1</translation>
    </message>
</context>
</TS>
