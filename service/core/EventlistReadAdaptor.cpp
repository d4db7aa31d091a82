#include "core/EventlistReadAdaptor.h"

#include "core/AnsweredQuery.h"
#include "core/BusObject.h"
#include "core/EventFilter.h"
#include "core/EventlistService.h"

namespace eventlistd
{

EventlistReadAdaptor::EventlistReadAdaptor(BusObject* object, EventlistService& service)
    : QDBusAbstractAdaptor(object), m_object(*object), m_service(service)
{
    QObject::connect(&service, &EventlistService::eventlistChanged, this,
                     &EventlistReadAdaptor::changedEventlist);
}

QVariantMap EventlistReadAdaptor::getCompleteEventlist(const QString& queryContext)
{
    return answer(EventFilterBuilder(queryContext));
}

QVariantMap EventlistReadAdaptor::getListOfEventTypes(const QString& queryContext)
{
    return m_service.eventTypes(queryContext);
}

QVariantMap EventlistReadAdaptor::getPartOfEventlist(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, const QString& startTime, const QString& endTime,
    const QStringList& extraList, int extraNumber)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .timesAsText(startTime, endTime)
                      .columns(extraList)
                      .rowLimit(extraNumber));
}

QVariantMap EventlistReadAdaptor::getPartOfEventlistUnixTime(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, qlonglong startTime, qlonglong endTime,
    const QStringList& extraList, int extraNumber)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .unixTimes(startTime, endTime)
                      .columns(extraList)
                      .rowLimit(extraNumber));
}

QVariantMap EventlistReadAdaptor::getPartOfEventlistById(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, qlonglong startId, qlonglong endId,
    const QStringList& extraList, int extraNumber, bool extraFlag)
{
    return answer(EventFilterBuilder(queryContext)
                      .eventTypes(eventTypeFilter)
                      .eventIds(secondFilter)
                      .moduleNames(moduleNameFilter)
                      .keywords(keywordFilter)
                      .ids(startId, endId)
                      .columns(extraList)
                      .rowLimit(extraNumber)
                      .oldestFirst(extraFlag));
}

QVariantMap EventlistReadAdaptor::answer(const EventFilterBuilder& filter)
{
    if (!filter.isValid())
    {
        m_object.sendErrorReply(
            QStringLiteral("org.freedesktop.DBus.Error.InvalidArgs"),
            QStringLiteral("A filter list has more than %1 elements").arg(longestFilterList));
        return {};
    }
    return answeredQuery(m_object, m_service.senders(),
                         [&](QString& error) { return m_service.events(filter.filter(), error); });
}

} // namespace eventlistd
