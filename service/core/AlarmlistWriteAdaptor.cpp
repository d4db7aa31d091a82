#include "core/AlarmlistWriteAdaptor.h"

#include "core/EventlistService.h"

namespace eventlistd
{

AlarmlistWriteAdaptor::AlarmlistWriteAdaptor(QObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_service(service)
{
}

void AlarmlistWriteAdaptor::acknowledgeVisualAlarm(const QStringList& alarms, const QString& user,
                                                   const QDBusMessage& message)
{
    m_service.acknowledgeAlarms(alarms, user, message.service());
}

void AlarmlistWriteAdaptor::acknowledgeCentralDetector(const QString& user,
                                                       const QDBusMessage& message)
{
    m_service.acknowledgeCentralDetector(user, message.service());
}

} // namespace eventlistd
