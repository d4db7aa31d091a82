#include "core/AlarmlistReadAdaptor.h"

#include "core/AnsweredQuery.h"
#include "core/BusObject.h"
#include "core/EventlistService.h"

namespace eventlistd
{

AlarmlistReadAdaptor::AlarmlistReadAdaptor(BusObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_object(*object), m_service(service)
{
    QObject::connect(&service, &EventlistService::alarmlistChanged, this,
                     &AlarmlistReadAdaptor::changedAlarmlist);
    QObject::connect(&service, &EventlistService::alarmStatesChanged, this,
                     [this](const AlarmList::States& now, const AlarmList::States& before) {
                         const auto tell = [](bool isOn, bool wasOn, auto&& send) {
                             if (isOn != wasOn)
                             {
                                 send(isOn);
                             }
                         };
                         tell(now.hasAlarm, before.hasAlarm,
                              [this](bool isOn) { Q_EMIT changedAlarmInAlarmlist(isOn); });
                         tell(now.hasActiveAlarm, before.hasActiveAlarm,
                              [this](bool isOn) { Q_EMIT changedActiveAlarmInAlarmlist(isOn); });
                         tell(now.hasFault, before.hasFault,
                              [this](bool isOn) { Q_EMIT changedFaultInAlarmlist(isOn); });
                         tell(now.hasActiveFault, before.hasActiveFault,
                              [this](bool isOn) { Q_EMIT changedActiveFaultInAlarmlist(isOn); });
                         tell(now.isCentralDetectorActive, before.isCentralDetectorActive,
                              [this](bool isOn) { Q_EMIT changedCentralDetector(isOn); });
                     });
}

QVariantMap AlarmlistReadAdaptor::getCompleteAlarmlist(const QString& queryContext)
{
    return answeredQuery(m_object, m_service.senders(),
                         [&](QString& error) { return m_service.alarms(queryContext, error); });
}

QVariantMap AlarmlistReadAdaptor::getAlarmState(const QString& queryContext)
{
    // States have no language.
    Q_UNUSED(queryContext)
    return m_service.alarmState();
}

} // namespace eventlistd
