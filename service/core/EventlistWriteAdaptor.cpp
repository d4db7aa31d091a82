#include "core/EventlistWriteAdaptor.h"

#include "core/EventDecoder.h"
#include "core/EventlistService.h"

namespace eventlistd
{

EventlistWriteAdaptor::EventlistWriteAdaptor(QObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_service(service)
{
}

void EventlistWriteAdaptor::logEvent(const QStringList& eventAttributes, const QString& timestamp,
                                     const QString& moduleName, const QString& description,
                                     const QStringList& keywords, const QString& user,
                                     const QString& additionalData, const QString& alarmId,
                                     const QDBusMessage& message)
{
    if (m_service.admitsEvent(message.service()))
    {
        m_service.takeEvent(EventDecoder::fromBus(eventAttributes, timestamp, moduleName,
                                                  description, keywords, user, additionalData,
                                                  alarmId),
                            message.service());
    }
}

void EventlistWriteAdaptor::deleteEventlist(const QDBusMessage& message)
{
    m_service.deleteEventlist(message.service());
}

void EventlistWriteAdaptor::suppressEventProcessing(bool suppress, const QDBusMessage& message)
{
    m_service.suppressEventProcessing(suppress, message.service());
}

} // namespace eventlistd
