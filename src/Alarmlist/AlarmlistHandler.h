#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "EventHandlers/AuditTrailHandler.h"

#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

class AlarmlistHandlerDBusConnectorWrite;
class TextManager;

/// Acknowledges alarms and leaves the trace that this must leave: an audit trail entry with the
/// text "GlobalAuditTrailTexts/AlarmsAcknowledged", keyword "AlarmAck".
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT AlarmlistHandler : public QObject
{
    Q_OBJECT
public:
    /// \param moduleName   module that acknowledges; the argument "%2" of the entry
    /// \param textManager  must know "GlobalAuditTrailTexts/AlarmsAcknowledged", with the
    ///                     placeholders "%1" and "%2". Not owned; it must outlive this object.
    AlarmlistHandler(const QString& moduleName, const TextManager& textManager, QObject* parent);
    ~AlarmlistHandler() override;

    /// Acknowledges alarms, then logs the entry. The entry stands for the attempt: it is written
    /// also when the acknowledgement was lost, and nobody learns whether the service took it.
    /// \param alarms         the alarms, as the service names them in the alarm list. They do not
    ///                     stand in the entry.
    /// \param user           who acknowledges; goes to the service and into the entry
    /// \param auditArgument  what the entry is to say was acknowledged; its argument "%1". It does
    ///                     not go to the service.
    /// Blocks:  never.
    /// Failure: the warnings of AlarmlistHandlerDBusConnectorWrite and of the entry. Without a
    ///          connector one warning, and nothing is acknowledged or logged.
    void acknowledgeAlarms(const QStringList& alarms, const QString& user,
                           const QString& auditArgument);

private:
    QString m_moduleName;
    AuditTrailHandler m_auditTrailHandler;
    QSharedPointer<AlarmlistHandlerDBusConnectorWrite> m_connector;
};
