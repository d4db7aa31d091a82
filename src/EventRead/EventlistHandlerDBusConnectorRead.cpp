#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionSignalPollingHandler.h"
#include "Platform/IsoDateConverter.h"

#include <QDateTime>
#include <QDebug>

EventlistHandlerDBusConnectorRead::EventlistHandlerDBusConnectorRead(bool pollingMode)
    : DBusConnectorBase(EventlistHandlerDefinitions::getModuleName(),
                        EventlistHandlerDefinitions::getObjectNameEventlistRead(),
                        EventlistHandlerDefinitions::getInterfaceNameEventlistRead(), nullptr,
                        defaultMode),
      m_pollingMode(pollingMode)
{
    if (m_pollingMode)
    {
        m_eventlistPollingHandler = QSharedPointer<DBusConnectionSignalPollingHandler>(
            new DBusConnectionSignalPollingHandler(
                EventlistHandlerDefinitions::getModuleName(),
                EventlistHandlerDefinitions::getObjectNameEventlistRead(),
                QStringLiteral("changedEventlist"), DBusConnectionSignalPollingHandler::noArgument,
                false));
    }
}

EventlistHandlerDBusConnectorRead::~EventlistHandlerDBusConnectorRead() = default;

QSharedPointer<EventlistHandlerDBusConnectorRead>
EventlistHandlerDBusConnectorRead::createAndConnect(bool pollingMode)
{
    QSharedPointer<EventlistHandlerDBusConnectorRead> connector(
        new EventlistHandlerDBusConnectorRead(pollingMode));
    if (connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return connector;
    }
    connector->initObject();
    return connector;
}

DBusPendingReply::SharedPointer
EventlistHandlerDBusConnectorRead::getCompleteEventlist(const QString& queryContext)
{
    return asyncCallHelper(QStringLiteral("getCompleteEventlist"), queryContext);
}

DBusPendingReply::SharedPointer
EventlistHandlerDBusConnectorRead::getListOfEventTypes(const QString& queryContext)
{
    return asyncCallHelper(QStringLiteral("getListOfEventTypes"), queryContext);
}

DBusPendingReply::SharedPointer EventlistHandlerDBusConnectorRead::getPartOfEventlist(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, const QDateTime& startTime, const QDateTime& endTime,
    const QStringList& extraList, int extraNumber)
{
    const QString startText =
        IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(startTime);
    const QString endText = IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(endTime);
    return asyncCallHelper(QStringLiteral("getPartOfEventlist"), queryContext, eventTypeFilter,
                           secondFilter, moduleNameFilter, keywordFilter, startText, endText,
                           extraList, extraNumber);
}

DBusPendingReply::SharedPointer EventlistHandlerDBusConnectorRead::getPartOfEventlistUnixTime(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, long long startTime, long long endTime,
    const QStringList& extraList, int extraNumber)
{
    return asyncCallHelper(QStringLiteral("getPartOfEventlistUnixTime"), queryContext,
                           eventTypeFilter, secondFilter, moduleNameFilter, keywordFilter,
                           startTime, endTime, extraList, extraNumber);
}

DBusPendingReply::SharedPointer EventlistHandlerDBusConnectorRead::getPartOfEventlistById(
    const QString& queryContext, const QStringList& eventTypeFilter,
    const QStringList& secondFilter, const QStringList& moduleNameFilter,
    const QStringList& keywordFilter, long long startId, long long endId,
    const QStringList& extraList, int extraNumber, bool extraFlag)
{
    return asyncCallHelper(QStringLiteral("getPartOfEventlistById"), queryContext, eventTypeFilter,
                           secondFilter, moduleNameFilter, keywordFilter, startId, endId, extraList,
                           extraNumber, extraFlag);
}

bool EventlistHandlerDBusConnectorRead::changedFlagEventlist()
{
    if (!m_pollingMode)
    {
        qWarning() << "PollingMode not active";
        return false;
    }
    if (m_eventlistPollingHandler.isNull())
    {
        qWarning() << "Nollpointer access";
        return false;
    }
    if (!m_eventlistPollingHandler->isSignalOccured())
    {
        return false;
    }
    m_eventlistPollingHandler->resetAllSignals();
    return true;
}

void EventlistHandlerDBusConnectorRead::connectServices()
{
    if (m_pollingMode)
    {
        return;
    }
    if (!DBusConnection::getQDBusConnection().connect(getServiceName(), getDBusPath(), QString(),
                                                      QStringLiteral("changedEventlist"), this,
                                                      SIGNAL(changedEventlist())))
    {
        qWarning() << "Cannot connect to signal 'changedEventlist'!";
    }
}

void EventlistHandlerDBusConnectorRead::disconnectServices()
{
    if (m_pollingMode)
    {
        return;
    }
    DBusConnection::getQDBusConnection().disconnect(getServiceName(), getDBusPath(), QString(),
                                                    QStringLiteral("changedEventlist"), this,
                                                    SIGNAL(changedEventlist()));
}
