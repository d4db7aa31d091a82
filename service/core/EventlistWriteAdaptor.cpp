#include "core/EventlistWriteAdaptor.h"

#include "core/BusObject.h"
#include "core/EventDecoder.h"
#include "core/EventlistService.h"

namespace eventlistd
{

EventlistWriteAdaptor::EventlistWriteAdaptor(BusObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_object(*object), m_service(service)
{
}

void EventlistWriteAdaptor::logEvent(const QStringList& eventAttributes, const QString& timestamp,
                                     const QString& moduleName, const QString& description,
                                     const QStringList& keywords, const QString& user,
                                     const QString& additionalData, const QString& alarmId)
{
    if (m_service.admitsEvent(m_object.caller()))
    {
        m_service.takeEvent(EventDecoder::fromBus(eventAttributes, timestamp, moduleName,
                                                  description, keywords, user, additionalData,
                                                  alarmId),
                            m_object.caller());
    }
}

void EventlistWriteAdaptor::deleteEventlist()
{
    m_service.deleteEventlist(m_object.caller());
}

void EventlistWriteAdaptor::suppressEventProcessing(bool suppress)
{
    m_service.suppressEventProcessing(suppress, m_object.caller());
}

} // namespace eventlistd
