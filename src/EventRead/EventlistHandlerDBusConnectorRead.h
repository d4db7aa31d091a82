#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerExport.h"

#include "Platform/DBusPendingReply.h"

#include <QSharedPointer>
#include <QString>
#include <QStringList>

class DBusConnectionSignalPollingHandler;
class QDateTime;

/// D-Bus client of the central service's read object: bus name of the module "EventlistHandler",
/// path "/EventlistRead", interface "Interface.EventlistRead". Places queries of the event list,
/// and tells that the list has changed.
///
/// The news come in one of two ways, chosen at construction. In signal mode changedEventlist() is
/// emitted, which needs the event loop of this thread. In polling mode it never is, and the owner
/// asks changedFlagEventlist() when it suits him; that needs no event loop.
///
/// Queries. Each returns at once, with a reply that carries the answer or the error later.
/// Failure: null when the service is not there, after one warning.
/// Wire:    a D-Bus method of the function's name. What the service makes of queryContext,
///          secondFilter, extraList, extraNumber and extraFlag is the service's; they are handed on
///          as they are.
/// Blocks:  in polling mode the constructor, at most 1 s, until the subscription is on its way to
///          the bus; otherwise see DBusConnectorBase.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT EventlistHandlerDBusConnectorRead : public DBusConnectorBase
{
    Q_OBJECT
public:
    /// A connector that can place queries and be polled. For signals use createAndConnect().
    /// \param pollingMode  true for polling mode, for good
    explicit EventlistHandlerDBusConnectorRead(bool pollingMode);
    ~EventlistHandlerDBusConnectorRead() override;

    /// Makes a connector, finished and subscribed.
    static QSharedPointer<EventlistHandlerDBusConnectorRead> createAndConnect(bool pollingMode);

    /// Asks for the whole event list. Wire: s.
    DBusPendingReply::SharedPointer getCompleteEventlist(const QString& queryContext);

    /// Asks for the event types that the service knows. Wire: s.
    DBusPendingReply::SharedPointer getListOfEventTypes(const QString& queryContext);

    /// Asks for the events that pass all filters; an empty list is no filter.
    /// \param eventTypeFilter  one string of one character for each type, whose code is the number
    ///                         of the type: see EventHandlerRead
    /// \param startTime        sent as ISO text with milliseconds and offset; an invalid time is
    ///                         sent as the empty string
    /// Wire: sasasasasssasi.
    DBusPendingReply::SharedPointer
    getPartOfEventlist(const QString& queryContext, const QStringList& eventTypeFilter,
                       const QStringList& secondFilter, const QStringList& moduleNameFilter,
                       const QStringList& keywordFilter, const QDateTime& startTime,
                       const QDateTime& endTime, const QStringList& extraList, int extraNumber);

    /// The same with Unix times. Wire: sasasasasxxasi.
    DBusPendingReply::SharedPointer
    getPartOfEventlistUnixTime(const QString& queryContext, const QStringList& eventTypeFilter,
                               const QStringList& secondFilter, const QStringList& moduleNameFilter,
                               const QStringList& keywordFilter, long long startTime,
                               long long endTime, const QStringList& extraList, int extraNumber);

    /// The same with a range of ids, both ends included. Wire: sasasasasxxasib.
    DBusPendingReply::SharedPointer
    getPartOfEventlistById(const QString& queryContext, const QStringList& eventTypeFilter,
                           const QStringList& secondFilter, const QStringList& moduleNameFilter,
                           const QStringList& keywordFilter, long long startId, long long endId,
                           const QStringList& extraList, int extraNumber, bool extraFlag);

    /// Polling mode: true once when the list has changed since the last call, however often.
    /// Failure: false in signal mode, after a warning.
    bool changedFlagEventlist();

Q_SIGNALS:
    /// Signal mode: the list has changed.
    void changedEventlist();

protected Q_SLOTS:
    void connectServices() override;
    void disconnectServices() override;

private:
    bool m_pollingMode;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_eventlistPollingHandler;
};
