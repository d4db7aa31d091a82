#pragma once

#include "eventlist/Arguments.h"

#include "Platform/DBusPendingReply.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

class EventlistHandlerDBusConnectorRead;
class ListReply;

/// Which events of the list are wanted, from the options of a command.
class EventQuery
{
public:
    /// The options that choose events, for list and follow alike.
    static QVector<Option> filterOptions();
    /// The options of a span of time or of ids, which only list has.
    static QVector<Option> spanOptions();

    /// Takes the options.
    /// Failure: false, and errorText() says why.
    bool read(const Arguments& arguments);

    QString errorText() const { return m_errorText; }

    /// Language of the descriptions; empty for all.
    const QString& language() const { return m_language; }

    /// Places the query for the newest rows of the span.
    /// \param rowLimit  0 for as many as an answer holds
    DBusPendingReply::SharedPointer newest(EventlistHandlerDBusConnectorRead& connector,
                                           int rowLimit) const;

    /// Places the query for the oldest rows with this id and higher ones, oldest first.
    DBusPendingReply::SharedPointer from(EventlistHandlerDBusConnectorRead& connector, qint64 id,
                                         int rowLimit) const;

    /// True when ids limit the span; the list can then be read piece by piece.
    bool isById() const { return !m_since.isValid() && !m_until.isValid(); }

    /// Asks for what lies before this id from now on.
    void setLastId(qint64 id) { m_toId = id; }

    /// Asks for the user and the process of the sender too.
    void askForSender();

private:
    bool readTypes(const QStringList& words);
    bool readTimes(const Arguments& arguments);
    DBusPendingReply::SharedPointer byId(EventlistHandlerDBusConnectorRead& connector,
                                         qint64 firstId, qint64 lastId, int rowLimit,
                                         bool isOldestFirst) const;

    QString m_language;
    QStringList m_types;
    QStringList m_eventIds;
    QStringList m_modules;
    QStringList m_keywords;
    QStringList m_columns;
    QDateTime m_since;
    QDateTime m_until;
    qint64 m_fromId = 0;
    qint64 m_toId = 0;
    QString m_errorText;
};
