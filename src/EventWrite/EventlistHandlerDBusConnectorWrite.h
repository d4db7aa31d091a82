#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"

#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVariant>

class QJsonObject;

/// D-Bus client of the central service's write object: bus name of the module "EventlistHandler",
/// path "/EventlistWrite", interface "Interface.EventlistWrite". Every event that goes over the bus
/// leaves the process here, one connector per producer.
///
/// All calls are fire and forget: nothing is awaited and nothing comes back.
/// Blocks:  never after construction (see DBusConnectorBase).
/// Failure: an invalid interface gives two equal warnings, dBusConnectionError(), and the event or
///          the command is lost. What the service makes of a call is never known.
/// Limits:  keep an event under 1 MiB: the bus ends the connection of a process whose message is
///          larger than it allows. Calls are queued and sent in the background, so those placed in
///          the last moments of a process may be lost.
class EVENTLISTHANDLER_EXPORT EventlistHandlerDBusConnectorWrite : public DBusConnectorBase
{
    Q_OBJECT
public:
    /// \param pollingMode  ignored: this object subscribes to nothing
    explicit EventlistHandlerDBusConnectorWrite(bool pollingMode);
    ~EventlistHandlerDBusConnectorWrite() override;

    /// Makes a connector, finished and ready; the usual way.
    static QSharedPointer<EventlistHandlerDBusConnectorWrite> createAndConnect(bool pollingMode);

    /// Sends an event with the present time. The offset of the time zone is asked for once a minute:
    /// when the device gets another zone, the old offset may stand for the rest of the minute. The
    /// instant is right at any time, and so is daylight saving.
    /// \param icon            icon name, may be empty
    /// \param moduleName      module that reports the event
    /// \param description     a string: the finished texts as JSON text, language key to text.
    ///                        Another type changes the signature of the call, which the service
    ///                        refuses.
    /// \param user            user to whom the event belongs, or empty
    /// \param eventId         text url of the description
    /// \param metaData        from EventlistHandlerConvenienceFunctions::generateMetaData
    /// \param alarmId         identity of the alarm or fault, or empty
    /// \param sourceHashes    hashes of the producer's source tags, or empty
    /// Wire: method "logEvent", assssassss: (type, state, icon) as text, time, module name,
    ///       description, keywords, user, additional data, alarm id. The additional data are
    ///       compact JSON text with "EventId", "MetaData" (JSON text again), "SourceHashType" (a
    ///       number) and "SourceHashes".
    void logEvent(EventlistHandlerEnums::EventType eventType, EventlistHandlerEnums::State state,
                  const QString& icon, const QString& moduleName, const QVariant& description,
                  const QStringList& keywords, const QString& user, const QString& eventId,
                  const QJsonObject& metaData, const QString& alarmId, const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

    /// The same with the first two values as they travel.
    /// \param eventAttributes  event type and state as decimal text, and the icon name
    /// \param timestamp        from IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QVariant& description,
                  const QStringList& keywords, const QString& user, const QString& eventId,
                  const QJsonObject& metaData, const QString& alarmId, const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

    /// Tells the service to delete the event list.
    /// Wire: method "deleteEventlist", no arguments.
    void deleteEventlist();

    /// Tells the service to take no more events, or to take them again.
    /// Wire: method "suppressEventProcessing", b.
    void suppressEventProcessing(bool suppress);

private:
    // The inner road: the additional data are written already.
    friend class EventHandlerWrite;
    friend class EventsDBusProviderBaseClass;
    Q_DECL_HIDDEN void sendEvent(EventlistHandlerEnums::EventType eventType,
                                 EventlistHandlerEnums::State state, const QString& icon,
                                 const QString& moduleName, const QVariant& description,
                                 const QStringList& keywords, const QString& user,
                                 const QString& additionalData, const QString& alarmId);
    Q_DECL_HIDDEN void sendEvent(const QStringList& eventAttributes, const QString& timestamp,
                                 const QString& moduleName, const QVariant& description,
                                 const QStringList& keywords, const QString& user,
                                 const QString& additionalData, const QString& alarmId);
};
