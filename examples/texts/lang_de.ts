<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="PumpControl/OverTemperature">
        <source>Overtemperature at %1: %2 °C</source>
        <extracomment>%1: which pump; %2: the temperature in °C</extracomment>
        <translation>Übertemperatur an %1: %2&#xa0;°C</translation>
    </message>
    <message id="PumpControl/Pump3">
        <source>pump 3</source>
        <extracomment>Name of a pump inside of a sentence</extracomment>
        <translation>Pumpe 3</translation>
    </message>
    <message id="PumpControl/SensorMissing">
        <source>The temperature sensor is missing: %1</source>
        <extracomment>%1: path of the sensor</extracomment>
        <translation>Der Temperaturfühler fehlt: %1</translation>
    </message>
    <message id="PumpControl/Started">
        <source>%1 started, speed %2</source>
        <extracomment>%1: which pump; %2: its speed</extracomment>
        <translation>%1 gestartet, Drehzahl %2</translation>
    </message>
    <message id="PumpControl/LimitChanged">
        <source>Temperature limit changed from %1 to %2</source>
        <extracomment>%1: old limit; %2: new limit</extracomment>
        <translation>Temperaturgrenzwert von %1 auf %2 geändert</translation>
    </message>
    <message id="MachineWatch/Started">
        <source>Watching the machine %1, which has been up for %2</source>
        <extracomment>%1: name of this machine; %2: how long it is up</extracomment>
        <translation>Überwachung der Maschine %1 begonnen, sie läuft seit %2</translation>
    </message>
    <message id="MachineWatch/Readings">
        <source>Readings: load %1, memory in use %2 %, disk in use %3 %, up for %4</source>
        <extracomment>%1: load; %2: memory in use, percent; %3: disk space in use, percent; %4: time since start</extracomment>
        <translation>Messwerte: Last %1, Speicher zu %2&#xa0;% belegt, Datenträger zu %3&#xa0;% belegt, Laufzeit %4</translation>
    </message>
    <message id="MachineWatch/LimitExceeded">
        <source>%1 is above its limit: %2 (limit %3)</source>
        <extracomment>%1: what is measured; %2: reading; %3: limit</extracomment>
        <translation>%1 über dem Grenzwert: %2 (Grenzwert %3)</translation>
    </message>
    <message id="MachineWatch/FolderMissing">
        <source>The watched folder %1 is missing</source>
        <extracomment>%1: path of a folder</extracomment>
        <translation>Der überwachte Ordner %1 fehlt</translation>
    </message>
    <message id="MachineWatch/LimitChanged">
        <source>%1: limit changed from %2 to %3</source>
        <extracomment>%1: what is measured; %2: old limit; %3: new limit</extracomment>
        <translation>%1: Grenzwert von %2 auf %3 geändert</translation>
    </message>
    <message id="MachineWatch/Load">
        <source>Load</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Last</translation>
    </message>
    <message id="MachineWatch/Memory">
        <source>Memory use</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Speicherbelegung</translation>
    </message>
    <message id="MachineWatch/Disk">
        <source>Disk use</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Datenträgerbelegung</translation>
    </message>
</context>
</TS>
