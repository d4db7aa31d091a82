#include "core/EventlistReadAdaptor.h"

#include "core/EventFilter.h"
#include "core/EventlistService.h"
#include "core/MonotonicClock.h"

namespace eventlistd
{

EventlistReadAdaptor::EventlistReadAdaptor(QObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_service(service)
{
    QObject::connect(&service, &EventlistService::eventlistChanged, this,
                     &EventlistReadAdaptor::changedEventlist);
}

QVariantMap EventlistReadAdaptor::getCompleteEventlist(const QString& queryContext,
                                                       const QDBusMessage& message)
{
    return answer(EventFilterBuilder(queryContext), message);
}

QVariantMap EventlistReadAdaptor::getListOfEventTypes(const QString& queryContext)
{
    return m_service.eventTypes(queryContext);
}

QVariantMap EventlistReadAdaptor::getPartOfEventlist(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, const QString& startTime, const QString& endTime,
    const QStringList& extraList, int extraNumber, const QDBusMessage& message)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .timesAsText(startTime, endTime)
                      .columns(extraList)
                      .rowLimit(extraNumber),
                  message);
}

QVariantMap EventlistReadAdaptor::getPartOfEventlistUnixTime(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, qlonglong startTime, qlonglong endTime,
    const QStringList& extraList, int extraNumber, const QDBusMessage& message)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .unixTimes(startTime, endTime)
                      .columns(extraList)
                      .rowLimit(extraNumber),
                  message);
}

QVariantMap EventlistReadAdaptor::getPartOfEventlistById(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, qlonglong startId, qlonglong endId,
    const QStringList& extraList, int extraNumber, bool extraFlag, const QDBusMessage& message)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .ids(startId, endId)
                      .columns(extraList)
                      .rowLimit(extraNumber)
                      .oldestFirst(extraFlag),
                  message);
}

QVariantMap EventlistReadAdaptor::answer(const EventFilterBuilder& filter,
                                         const QDBusMessage& message)
{
    if (!filter.isValid())
    {
        return refuse(
            message, QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
            QStringLiteral("A filter list has more than %1 elements").arg(longestFilterList));
    }
    if (!m_service.senders().admitQuery(message.service()))
    {
        return refuse(message, QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded"),
                      QStringLiteral("Too many queries, try again later"));
    }
    QString error;
    const qint64 begin = monotonicMs();
    const QVariantMap events = m_service.events(filter.filter(), error);
    m_service.senders().chargeQuery(message.service(), monotonicMs() - begin);
    return error.isEmpty()
               ? events
               : refuse(message, QStringLiteral("org.freedesktop.DBus.Error.IOError"), error);
}

QVariantMap EventlistReadAdaptor::refuse(const QDBusMessage& message, const QString& error,
                                         const QString& text)
{
    message.setDelayedReply(true);
    m_connection.send(message.createErrorReply(error, text));
    return {};
}

} // namespace eventlistd
