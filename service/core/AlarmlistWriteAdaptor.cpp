#include "core/AlarmlistWriteAdaptor.h"

#include "core/BusObject.h"
#include "core/EventlistService.h"

namespace eventlistd
{

AlarmlistWriteAdaptor::AlarmlistWriteAdaptor(BusObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_object(*object), m_service(service)
{
}

void AlarmlistWriteAdaptor::acknowledgeVisualAlarm(const QStringList& alarms, const QString& user)
{
    m_service.acknowledgeAlarms(alarms, user, m_object.caller());
}

void AlarmlistWriteAdaptor::acknowledgeCentralDetector(const QString& user)
{
    m_service.acknowledgeCentralDetector(user, m_object.caller());
}

} // namespace eventlistd
