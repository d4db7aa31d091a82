<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="PumpControl/OverTemperature">
        <source>Overtemperature at %1, value %2</source>
        <translation>Übertemperatur an %1, Wert %2</translation>
    </message>
    <message id="PumpControl/OnlyGerman">
        <source>Only German</source>
        <translation>Nur auf Deutsch</translation>
    </message>
    <message id="PumpControl/Unfinished">
        <source>Unfinished</source>
        <translation type="unfinished">Unfertig</translation>
    </message>
    <message id="PumpControl/Empty">
        <source>Empty</source>
        <translation></translation>
    </message>
    <message id="Pumpe/Größe">
        <source>Size</source>
        <translation>Größe</translation>
    </message>
</context>
</TS>
