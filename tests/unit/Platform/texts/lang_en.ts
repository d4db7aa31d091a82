<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <message id="PumpControl/OverTemperature">
        <source>Overtemperature at %1, value %2</source>
        <translation>Overtemperature at %1, value %2</translation>
    </message>
    <message id="PumpControl/Unfinished">
        <source>Unfinished</source>
        <translation type="unfinished">Unfinished</translation>
    </message>
    <message id="PumpControl/Empty">
        <source>Empty</source>
        <translation>No longer empty</translation>
    </message>
    <message id="Pumpe/Größe">
        <source>Size</source>
        <translation>Size</translation>
    </message>
</context>
</TS>
