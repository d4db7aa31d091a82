<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name></name>
    <message id="Pump/Runs">
        <source>pump %1 runs</source>
        <translation>Pumpe %1 läuft</translation>
    </message>
    <message id="Pump/Kind1">
        <source>centrifugal pump</source>
        <translation>Kreiselpumpe</translation>
    </message>
</context>
</TS>
