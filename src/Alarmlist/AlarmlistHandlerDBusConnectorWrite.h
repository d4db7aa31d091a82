#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerExport.h"

#include <QSharedPointer>
#include <QString>
#include <QStringList>

/// D-Bus client of the central service's alarm write object: bus name of the module
/// "EventlistHandler", path "/AlarmlistWrite", interface "Interface.AlarmlistWrite". It leaves no
/// audit trail: see AlarmlistHandler for that.
///
/// Both calls are fire and forget.
/// Blocks:  never after construction.
/// Failure: an invalid interface gives two equal warnings, dBusConnectionError(), and the
///          acknowledgement is lost. What the service makes of a call is never known.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT AlarmlistHandlerDBusConnectorWrite : public DBusConnectorBase
{
    // No meta-object of its own: it adds no signal and no slot.
public:
    /// \param pollingMode  ignored: this object subscribes to nothing
    explicit AlarmlistHandlerDBusConnectorWrite(bool pollingMode);
    ~AlarmlistHandlerDBusConnectorWrite() override;

    /// Makes a connector, finished and ready; the usual way.
    static QSharedPointer<AlarmlistHandlerDBusConnectorWrite> createAndConnect();

    /// Acknowledges alarms and faults of the alarm list.
    /// \param alarms  as the service names them in the list; handed on as they are
    /// \param user    who acknowledges
    /// Wire: method "acknowledgeVisualAlarm", ass.
    void acknowledgeVisualAlarm(const QStringList& alarms, const QString& user);

    /// Acknowledges the central detector, which silences it.
    /// Wire: method "acknowledgeCentralDetector", s.
    void acknowledgeCentralDetector(const QString& user);
};
