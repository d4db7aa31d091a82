#include "bus/WorkedExample.h"

#include <QJsonDocument>

const QString& WorkedExample::eventId()
{
    static const QString value = QStringLiteral("PumpControl/OverTemperature");
    return value;
}

const QString& WorkedExample::time()
{
    static const QString value = QStringLiteral("2026-03-14T09:26:53.589+01:00");
    return value;
}

const QString& WorkedExample::alarmId()
{
    static const QString value = QStringLiteral("{6f1c2a8e-3b0d-4e57-9a41-0d2c7be41f05}");
    return value;
}

const QString& WorkedExample::description()
{
    static const QString value =
        QStringLiteral(R"({"lang_de":"Übertemperatur an Pumpe 3, Wert 97.5",)"
                       R"("lang_en":"Overtemperature at pump 3, value 97.5"})");
    return value;
}

const QString& WorkedExample::metaData()
{
    static const QString value =
        QStringLiteral(R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3",)"
                       R"("lang_en":"pump 3"}},"%2":{"type":"string","value":"97.5"}},)"
                       R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
                       R"("lang_en":"Overtemperature at %1, value %2"}})");
    return value;
}

QJsonObject WorkedExample::metaDataObject()
{
    return QJsonDocument::fromJson(metaData().toUtf8()).object();
}

const QString& WorkedExample::additionalData()
{
    static const QString value = QStringLiteral(
        R"({"EventId":"PumpControl/OverTemperature","MetaData":"{\"Arguments\":{\"%1\":{)"
        R"(\"type\":\"text\",\"value\":{\"lang_de\":\"Pumpe 3\",\"lang_en\":\"pump 3\"}},)"
        R"(\"%2\":{\"type\":\"string\",\"value\":\"97.5\"}},\"DescriptionScheme\":{)"
        R"(\"lang_de\":\"Übertemperatur an %1, Wert %2\",\"lang_en\":\"Overtemperature at %1,)"
        R"( value %2\"}}","SourceHashType":0,"SourceHashes":""})");
    return value;
}
