<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name></name>
    <message id="Pump/Runs">
        <source>pump %1 runs</source>
        <translation>pump %1 runs</translation>
    </message>
    <message id="Pump/Kind1">
        <source>centrifugal pump</source>
        <translation>centrifugal pump</translation>
    </message>
</context>
</TS>
