#include "EventRead/EventHandlerRead.h"

#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include <QDateTime>
#include <QDebug>

EventHandlerRead::EventHandlerRead(QObject* parent)
    : QObject(parent), m_connector(EventlistHandlerDBusConnectorRead::createAndConnect(false))
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return;
    }
    connect(m_connector.data(), &EventlistHandlerDBusConnectorRead::changedEventlist, this,
            &EventHandlerRead::changedEventlist);
}

EventHandlerRead::~EventHandlerRead() = default;

DBusPendingReply::SharedPointer EventHandlerRead::getCompleteEventlist(const QString& queryContext)
{
    if (m_connector.isNull())
    {
        // No exclamation mark here, unlike in the constructor: the two texts differ on purpose.
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getCompleteEventlist(queryContext);
}

DBusPendingReply::SharedPointer EventHandlerRead::getListOfEventTypes(const QString& queryContext)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getListOfEventTypes(queryContext);
}

DBusPendingReply::SharedPointer EventHandlerRead::getPartOfEventlistFilteredByStartEndTime(
    const QString& queryContext, const QDateTime& startTime, const QDateTime& endTime,
    const QStringList& extraList, qint32 extraNumber)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlist(queryContext, QStringList(), QStringList(),
                                           QStringList(), QStringList(), startTime, endTime,
                                           extraList, extraNumber);
}

DBusPendingReply::SharedPointer EventHandlerRead::getPartOfEventlistFilteredByStartEndUnixTime(
    const QString& queryContext, qint64 startTime, qint64 endTime, const QStringList& extraList,
    qint32 extraNumber)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlistUnixTime(queryContext, QStringList(), QStringList(),
                                                   QStringList(), QStringList(), startTime, endTime,
                                                   extraList, extraNumber);
}

DBusPendingReply::SharedPointer
EventHandlerRead::getPartOfEventlistFilteredById(const QString& queryContext, qint64 startId,
                                                 qint64 endId, const QStringList& extraList,
                                                 qint32 extraNumber, bool extraFlag)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlistById(queryContext, QStringList(), QStringList(),
                                               QStringList(), QStringList(), startId, endId,
                                               extraList, extraNumber, extraFlag);
}

DBusPendingReply::SharedPointer EventHandlerRead::getPartOfEventlistFilteredByKeywords(
    const QString& queryContext, const QStringList& keywords, const QDateTime& startTime,
    const QDateTime& endTime, qint32 extraNumber)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlist(queryContext, QStringList(), QStringList(),
                                           QStringList(), keywords, startTime, endTime,
                                           QStringList(), extraNumber);
}

DBusPendingReply::SharedPointer EventHandlerRead::getPartOfEventlistFilteredByModuleName(
    const QString& queryContext, const QStringList& moduleNames, const QDateTime& startTime,
    const QDateTime& endTime, qint32 extraNumber)
{
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlist(queryContext, QStringList(), QStringList(), moduleNames,
                                           QStringList(), startTime, endTime, QStringList(),
                                           extraNumber);
}

DBusPendingReply::SharedPointer EventHandlerRead::getPartOfEventlistFilteredByEventType(
    const QString& queryContext, const QList<EventlistHandlerEnums::EventType>& eventTypes,
    const QDateTime& startTime, const QDateTime& endTime, qint32 extraNumber)
{
    // The number of the type as a character, not as a digit and not as its name.
    QStringList eventTypeFilter;
    for (const EventlistHandlerEnums::EventType eventType : eventTypes)
    {
        eventTypeFilter.append(QString(QChar(int(eventType))));
    }
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector";
        return {};
    }
    return m_connector->getPartOfEventlist(queryContext, eventTypeFilter, QStringList(),
                                           QStringList(), QStringList(), startTime, endTime,
                                           QStringList(), extraNumber);
}
