<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name></name>
    <message id="PumpControl/OverTemperature">
        <source>Overtemperature at %1: %2 °C</source>
        <extracomment>%1: which pump; %2: the temperature in °C</extracomment>
        <translation>Surchauffe de la %1&#xa0;: %2&#xa0;°C</translation>
    </message>
    <message id="PumpControl/Pump3">
        <source>pump 3</source>
        <extracomment>Name of a pump inside of a sentence</extracomment>
        <translation>pompe 3</translation>
    </message>
    <message id="PumpControl/SensorMissing">
        <source>The temperature sensor is missing: %1</source>
        <extracomment>%1: path of the sensor</extracomment>
        <translation>Capteur de température absent&#xa0;: %1</translation>
    </message>
    <message id="PumpControl/Started">
        <source>%1 started, speed %2</source>
        <extracomment>%1: which pump; %2: its speed</extracomment>
        <translation>Démarrage de la %1, vitesse %2</translation>
    </message>
    <message id="PumpControl/LimitChanged">
        <source>Temperature limit changed from %1 to %2</source>
        <extracomment>%1: old limit; %2: new limit</extracomment>
        <translation>Seuil de température modifié de %1 à %2</translation>
    </message>
    <message id="MachineWatch/Started">
        <source>Watching the machine %1, which has been up for %2</source>
        <extracomment>%1: name of this machine; %2: how long it is up</extracomment>
        <translation>Surveillance de la machine %1 commencée, en marche depuis %2</translation>
    </message>
    <message id="MachineWatch/Readings">
        <source>Readings: load %1, memory in use %2 %, disk in use %3 %, up for %4</source>
        <extracomment>%1: load; %2: memory in use, percent; %3: disk space in use, percent; %4: time since start</extracomment>
        <translation>Mesures&#xa0;: charge %1, mémoire occupée à %2&#xa0;%, disque occupé à %3&#xa0;%, en marche depuis %4</translation>
    </message>
    <message id="MachineWatch/LimitExceeded">
        <source>%1 is above its limit: %2 (limit %3)</source>
        <extracomment>%1: what is measured; %2: reading; %3: limit</extracomment>
        <translation>%1 au-dessus du seuil&#xa0;: %2 (seuil %3)</translation>
    </message>
    <message id="MachineWatch/FolderMissing">
        <source>The watched folder %1 is missing</source>
        <extracomment>%1: path of a folder</extracomment>
        <translation>Le dossier surveillé %1 est absent</translation>
    </message>
    <message id="MachineWatch/LimitChanged">
        <source>%1: limit changed from %2 to %3</source>
        <extracomment>%1: what is measured; %2: old limit; %3: new limit</extracomment>
        <translation>%1&#xa0;: seuil modifié de %2 à %3</translation>
    </message>
    <message id="MachineWatch/Load">
        <source>Load</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Charge</translation>
    </message>
    <message id="MachineWatch/Memory">
        <source>Memory use</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Occupation de la mémoire</translation>
    </message>
    <message id="MachineWatch/Disk">
        <source>Disk use</source>
        <extracomment>Name of a reading, at the beginning of a sentence</extracomment>
        <translation>Occupation du disque</translation>
    </message>
</context>
</TS>
