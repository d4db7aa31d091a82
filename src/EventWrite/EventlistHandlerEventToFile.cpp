#include "EventWrite/EventlistHandlerEventToFile.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventWrite/detail/PresentTime.h"

#include "Platform/JsonFunctions.h"

#include <QDebug>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>

// Plain on purpose: the number is shared by all spool writers of a process, but not guarded.
int EventlistHandlerEventToFile::sm_EventFileNameCnt = 0;

const QString EventlistHandlerEventToFile::sm_cEventFilePathAndName =
    EventlistHandlerDefinitions::getPathEventToFile() + QLatin1String("logEvent");

EventlistHandlerEventToFile::EventlistHandlerEventToFile()
{
    const QString& path = EventlistHandlerDefinitions::getPathEventToFile();
    QDir folder(path);
    if (!folder.exists() && !folder.mkpath(path))
    {
        qWarning() << "Can't create path" << path;
    }
}

EventlistHandlerEventToFile::~EventlistHandlerEventToFile() = default;

void EventlistHandlerEventToFile::logEvent(EventlistHandlerEnums::EventType eventType,
                                           EventlistHandlerEnums::State state, const QString& icon,
                                           const QString& moduleName, const QVariant& description,
                                           const QStringList& keywords, const QString& user,
                                           const QString& eventId, const QJsonObject& metaData,
                                           const QString& alarmId, const QString& sourceHashes,
                                           EventlistHandlerEnums::SourceHashType sourceHashType,
                                           const QString& fileName)
{
    QJsonObject json;
    generateEventEntryData(json, eventType, state, icon, moduleName, description, keywords, user,
                           eventId, metaData, alarmId, sourceHashes, sourceHashType);
    if (!writeEventToFile(json, fileName))
    {
        qWarning() << "Can't write event to file. ModuleName:" << moduleName
                   << "Description:" << description;
    }
}

void EventlistHandlerEventToFile::generateEventEntryData(
    QJsonObject& json, EventlistHandlerEnums::EventType eventType,
    EventlistHandlerEnums::State state, const QString& icon, const QString& moduleName,
    const QVariant& description, const QStringList& keywords, const QString& user,
    const QString& eventId, const QJsonObject& metaData, const QString& alarmId,
    const QString& sourceHashes, EventlistHandlerEnums::SourceHashType sourceHashType) const
{
    using Definitions = EventlistHandlerDefinitions;
    json.insert(Definitions::getListColumnNameDateTimeMsUtc(), PresentTime::toText());
    json.insert(Definitions::getListColumnNameEventType(), int(eventType));
    json.insert(Definitions::getListColumnNameEventState(), int(state));
    json.insert(Definitions::getListColumnNameIconType(), icon);
    json.insert(Definitions::getListColumnNameModuleName(), moduleName);
    json.insert(Definitions::getListColumnNameDescription(), description.toString());
    json.insert(Definitions::getListColumnNameKeywords(),
                keywords.join(Definitions::getSeperatorEventToFile()));
    json.insert(Definitions::getListColumnNameUser(), user);
    json.insert(Definitions::getListColumnNameEventId(), eventId);
    // An object here, and JSON text on the bus.
    json.insert(Definitions::getListColumnNameMetaData(), metaData);
    json.insert(Definitions::getListColumnNameAlarmID(), alarmId);
    json.insert(Definitions::getListColumnNameSourceHashType(), int(sourceHashType));
    json.insert(Definitions::getListColumnNameSourceHashes(), sourceHashes);
}

bool EventlistHandlerEventToFile::writeEventToFile(const QJsonObject& json, const QString& fileName)
{
    QString path;
    if (fileName.isEmpty())
    {
        const int number = sm_EventFileNameCnt;
        // Through unsigned: the count goes on at the smallest number when it has reached the
        // largest.
        sm_EventFileNameCnt = int(unsigned(number) + 1U);
        path = sm_cEventFilePathAndName + QString::number(number, 10) +
               EventlistHandlerDefinitions::getExtensionEventToFile();
    }
    else
    {
        path = EventlistHandlerDefinitions::getPathEventToFile() + fileName +
               EventlistHandlerDefinitions::getExtensionEventToFile();
    }
    const bool isWritten = writeJsonObjectToFile(json, path);
    if (!isWritten)
    {
        qWarning() << "Can't write jsonObject to file";
    }
    return isWritten;
}

void EventlistHandlerEventToFile::setEventWatchdogEmergency(const QString& moduleName,
                                                            const QString& argument)
{
    // Not the metadata of other events, on purpose: an array of one object with the bare argument
    // and no texts, so that nothing but this function is needed to make it.
    QJsonObject entry;
    QJsonObject metaData;
    QJsonObject argumentObject;
    argumentObject.insert(QStringLiteral("%1"), argument);
    metaData.insert(EventlistHandlerDefinitions::getKeyMetaDataArguments(),
                    QJsonArray{argumentObject});
    generateEventEntryData(
        entry, EventlistHandlerEnums::EventType::otherEvents, EventlistHandlerEnums::State::neutral,
        EventlistHandlerDefinitions::getIconNameEvent(), moduleName, QVariant(QString()),
        QStringList(EventlistHandlerDefinitions::getKeywordFirmware()), QString(),
        EventlistHandlerDefinitions::getTextUrlSystemWatchdog(), metaData, QString(), QString(),
        EventlistHandlerEnums::SourceHashType::noSourceHash);
    if (!writeEventToFile(entry, QString()))
    {
        qWarning() << "Can't write eventWatchdogEmergency to file. ModuleName:" << moduleName;
    }
}
