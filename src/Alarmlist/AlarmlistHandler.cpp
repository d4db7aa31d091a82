#include "Alarmlist/AlarmlistHandler.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDebug>

AlarmlistHandler::AlarmlistHandler(const QString& moduleName, const TextManager& textManager,
                                   QObject* parent)
    : QObject(parent),
      m_moduleName(moduleName),
      m_auditTrailHandler(moduleName, textManager,
                          QStringLiteral("GlobalAuditTrailTexts/AlarmsAcknowledged"),
                          QStringList(EventlistHandlerDefinitions::getKeywordAlarmAck())),
      m_connector(AlarmlistHandlerDBusConnectorWrite::createAndConnect())
{
}

AlarmlistHandler::~AlarmlistHandler() = default;

void AlarmlistHandler::acknowledgeAlarms(const QStringList& alarms, const QString& user,
                                         const QString& auditArgument)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to alarm list write dbus connector!";
        return;
    }
    m_connector->acknowledgeVisualAlarm(alarms, user);
    // The entry stands for the attempt: nothing comes back that it could depend on.
    m_auditTrailHandler.logAuditTrail(
        user, {{QStringLiteral("%1"), auditArgument}, {QStringLiteral("%2"), m_moduleName}});
}
