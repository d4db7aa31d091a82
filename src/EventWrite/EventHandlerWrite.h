#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"
#include "EventWrite/EventlistHandlerEventToFile.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class EventlistHandlerDBusConnectorWrite;
class QJsonObject;

/// Sends the events of one producer on their way, over the bus or into spool files. One per
/// producer, held by value.
///
/// It starts on the bus road. setEventToFile() turns it to the file road for the rest of its life.
/// The choice is the module's alone: an event that one road loses never takes the other.
/// Blocks:  on the bus road never, but for the first one of a process, which waits at most 1 s for
///          the bus when it is made; on the file road until the file is durable.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT EventHandlerWrite : public QObject
{
    Q_OBJECT
public:
    /// Connects to the central service and makes the spool folder, whichever road will be taken.
    /// \param moduleName  module that reports the events
    EventHandlerWrite(const QString& moduleName, QObject* parent);
    ~EventHandlerWrite() override;

    /// Turns this producer to the file road. There is no way back.
    /// \param fileName  name of the spool files, without folder and ending, each event replacing
    ///                  the one before it; empty means numbered files. Must not come from outside
    ///                  the module.
    /// Failure: none here. A file that cannot be written is reported when an event needs it.
    void setEventToFile(const QString& fileName);

    /// Sends one event, with the present time.
    /// \param descriptionTextList  the finished texts: language key to text
    /// \param metaData             the same event's description with its placeholders
    /// The other arguments are those of EventlistHandlerDBusConnectorWrite::logEvent.
    /// Failure: the warnings of the road; the event is lost.
    void logEvent(EventlistHandlerEnums::EventType eventType, EventlistHandlerEnums::State state,
                  const QString& icon, const QStringList& keywords,
                  const QVariantMap& descriptionTextList, const QString& user,
                  const QString& eventId, const QJsonObject& metaData, const QString& alarmId,
                  const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

private:
    // The inner road: a producer that has written the texts itself asks which road to take, and
    // hands them over.
    friend class EventHandlerBaseClass;
    bool isOnFileRoad() const { return m_bEventToFile; }
    bool canSend() const { return !m_bEventToFile && !m_connector.isNull(); }
    Q_DECL_HIDDEN void sendEvent(EventlistHandlerEnums::EventType eventType,
                                 EventlistHandlerEnums::State state, const QString& icon,
                                 const QStringList& keywords, const QString& description,
                                 const QString& user, const QString& additionalData,
                                 const QString& alarmId);
    Q_DECL_HIDDEN void spoolEvent(EventlistHandlerEnums::EventType eventType,
                                  EventlistHandlerEnums::State state, const QString& icon,
                                  const QStringList& keywords, const QString& description,
                                  const QString& user, const QString& eventId,
                                  const QJsonObject& metaData, const QString& alarmId,
                                  const QString& sourceHashes,
                                  EventlistHandlerEnums::SourceHashType sourceHashType);

    QString m_moduleName;
    QSharedPointer<EventlistHandlerDBusConnectorWrite> m_connector;
    EventlistHandlerEventToFile m_eventToFile;
    bool m_bEventToFile = false;
    QString m_eventToFileName;
};
