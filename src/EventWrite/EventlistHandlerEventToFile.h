#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"

#include <QString>
#include <QStringList>
#include <QVariant>

class QJsonObject;

/// Writes events into spool files, one JSON object per file, below
/// EventlistHandlerDefinitions::getPathEventToFile(). The central service picks them up; this class
/// never reads, renames or deletes one.
///
/// A file without a name of its own is called "logEvent<n>.event.json". n counts the numbered files
/// of this process from 0, for all writers together; it starts again with the process, and two
/// processes count by themselves. An unread file of the same name is replaced.
///
/// Blocks:  until the file is durable: a few tens of microseconds in memory, 10 to 50 ms on slow
///          flash.
/// Threads: the count is shared and not guarded: writers in two threads may get the same number,
///          and then one event is lost.
class EVENTLISTHANDLER_EXPORT EventlistHandlerEventToFile
{
public:
    /// Makes the spool folder if it is missing.
    /// Failure: the warning "Can't create path" with the path; the object can be used all the same.
    EventlistHandlerEventToFile();
    virtual ~EventlistHandlerEventToFile();

    /// Writes one event, with the present time as EventlistHandlerDBusConnectorWrite::logEvent takes
    /// it. When this returns, the file is complete and durable, or the event is lost.
    /// \param description  its string form: the finished texts as JSON text, language key to text
    /// \param fileName     name without folder and ending; empty for a numbered file. It is used as
    ///                     it is and must not come from outside the module.
    /// The other arguments are those of EventlistHandlerDBusConnectorWrite::logEvent.
    /// Failure: two warnings, that the object cannot be written and that the event cannot.
    void logEvent(EventlistHandlerEnums::EventType eventType, EventlistHandlerEnums::State state,
                  const QString& icon, const QString& moduleName, const QVariant& description,
                  const QStringList& keywords, const QString& user, const QString& eventId,
                  const QJsonObject& metaData, const QString& alarmId, const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType, const QString& fileName);

    /// Fills the thirteen members of a spool file, with the present time. Members that are there
    /// are replaced, others left alone.
    void generateEventEntryData(QJsonObject& json, EventlistHandlerEnums::EventType eventType,
                                EventlistHandlerEnums::State state, const QString& icon,
                                const QString& moduleName, const QVariant& description,
                                const QStringList& keywords, const QString& user,
                                const QString& eventId, const QJsonObject& metaData,
                                const QString& alarmId, const QString& sourceHashes,
                                EventlistHandlerEnums::SourceHashType sourceHashType) const;

    /// Writes an object into a spool file.
    /// \param fileName  as above; a numbered file uses up its number also when it cannot be written
    /// Failure: false after the warning "Can't write jsonObject to file".
    bool writeEventToFile(const QJsonObject& json, const QString& fileName);

    /// Writes the emergency event of a watchdog: an event that needs no producer, no bus, no text
    /// files, no QCoreApplication and nothing else running. When this returns, it is durable, and
    /// the process may end at once.
    ///
    /// It carries no text. The central service makes the sentence from its own language files, text
    /// url "EventlistHandler/SystemWatchdog".
    /// \param moduleName  module that reports
    /// \param argument    what the sentence is to name, such as the module that hangs; its "%1"
    /// Failure: two warnings, and the event is lost.
    void setEventWatchdogEmergency(const QString& moduleName, const QString& argument);

private:
    static int sm_EventFileNameCnt;
    static const QString sm_cEventFilePathAndName;
};
