#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"

#include "Platform/DBusPendingReply.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

class EventlistHandlerDBusConnectorRead;
class QDateTime;

/// Reads the event list, one method for each way of filtering, and tells when the list has changed.
/// For two filters at once use EventlistHandlerDBusConnectorRead::getPartOfEventlist.
///
/// Every query returns at once; the answer is taken from the reply:
///
///     const DBusPendingReply::SharedPointer reply =
///         m_reader.getPartOfEventlistFilteredByKeywords(QStringLiteral("lang_en"), keywords,
///                                                       yesterday, now, 100);
///     if (!reply.isNull())
///         connect(reply.data(), &DBusPendingReply::finished, this, &Panel::showEvents);
///
/// Failure: null, after one warning, when the service is not there. An error of the service stands
///          in the reply. No argument is checked: times in reverse order, numbers below 0 and empty
///          lists go to the service as they are.
/// Threads: the one that made it; the signal needs its event loop.
/// Owner:   a reply lives on without this object.
class EVENTLISTHANDLER_EXPORT EventHandlerRead : public QObject
{
    Q_OBJECT
public:
    /// Connects to the service. Blocks: see DBusConnectorBase.
    explicit EventHandlerRead(QObject* parent);
    ~EventHandlerRead() override;

    /// Asks for the whole list.
    /// \param queryContext  handed on to the service as it is
    DBusPendingReply::SharedPointer getCompleteEventlist(const QString& queryContext);

    /// Asks for the event types that the service knows.
    DBusPendingReply::SharedPointer getListOfEventTypes(const QString& queryContext);

    /// Asks for the events of a time span.
    /// \param extraList    handed on to the service as it is
    /// \param extraNumber  likewise
    DBusPendingReply::SharedPointer
    getPartOfEventlistFilteredByStartEndTime(const QString& queryContext,
                                             const QDateTime& startTime, const QDateTime& endTime,
                                             const QStringList& extraList, qint32 extraNumber);

    /// The same in Unix time.
    DBusPendingReply::SharedPointer
    getPartOfEventlistFilteredByStartEndUnixTime(const QString& queryContext, qint64 startTime,
                                                 qint64 endTime, const QStringList& extraList,
                                                 qint32 extraNumber);

    /// Asks for the events of a range of ids.
    /// \param extraFlag  handed on to the service as it is
    DBusPendingReply::SharedPointer getPartOfEventlistFilteredById(const QString& queryContext,
                                                                   qint64 startId, qint64 endId,
                                                                   const QStringList& extraList,
                                                                   qint32 extraNumber,
                                                                   bool extraFlag);

    /// Asks for the events with certain keywords. Here and in the next two the filter stands BEFORE
    /// the times, and there is no extraList.
    DBusPendingReply::SharedPointer
    getPartOfEventlistFilteredByKeywords(const QString& queryContext, const QStringList& keywords,
                                         const QDateTime& startTime, const QDateTime& endTime,
                                         qint32 extraNumber);

    /// Asks for the events of certain modules.
    DBusPendingReply::SharedPointer getPartOfEventlistFilteredByModuleName(
        const QString& queryContext, const QStringList& moduleNames, const QDateTime& startTime,
        const QDateTime& endTime, qint32 extraNumber);

    /// Asks for the events of certain types.
    /// Wire: each type is a string of the one character whose code is the number of the type, so
    ///       that `alarm`, the character U+0000, arrives as an empty string.
    DBusPendingReply::SharedPointer getPartOfEventlistFilteredByEventType(
        const QString& queryContext, const QList<EventlistHandlerEnums::EventType>& eventTypes,
        const QDateTime& startTime, const QDateTime& endTime, qint32 extraNumber);

Q_SIGNALS:
    /// The event list has changed.
    void changedEventlist();

private:
    QSharedPointer<EventlistHandlerDBusConnectorRead> m_connector;
};
