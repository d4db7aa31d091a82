#pragma once

#include "Definitions/EventlistHandlerExport.h"

#include <QObject>

/// Owns the enumerations of an event. The numbers travel in events and stand in stored data.
class EVENTLISTHANDLER_EXPORT EventlistHandlerEnums : public QObject
{
    Q_OBJECT
public:
    /// Holds nothing: its enumerations are used without an object.
    explicit EventlistHandlerEnums(QObject* parent = nullptr);
    ~EventlistHandlerEnums() override;

    /// What kind of thing an event reports.
    enum class EventType
    {
        alarm = 0,      ///< an alarm coming or going, from an AlarmHandler
        auditTrail = 1, ///< an audit trail entry, from an AuditTrailHandler
        fault = 2,      ///< a fault coming or going, from a FaultHandler
        otherEvents = 3 ///< any other event, from an EventHandler
    };
    Q_ENUM(EventType)

    /// Whether a watched condition has begun or ended. A condition b is the state 2 - b.
    enum State : int
    {
        neutral = 0, ///< no on or off sense: a one-shot entry
        active = 1,  ///< the watched condition has begun
        inactive = 2 ///< the watched condition has ended
    };

    /// Stands beside the source hashes of an event and is handed on unchanged. Modules and the
    /// central service agree on further values and cast them.
    enum SourceHashType : int
    {
        noSourceHash = 0 ///< what a new producer holds
    };
};
