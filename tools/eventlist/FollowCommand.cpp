#include "eventlist/FollowCommand.h"

#include "eventlist/EventPrinter.h"
#include "eventlist/EventQuery.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Follower.h"
#include "eventlist/ListReply.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include <QSharedPointer>

namespace
{
constexpr int defaultRows = 10;
constexpr int rowsOfPiece = 500;

class EventFollower : public Follower
{
public:
    EventFollower(const QSharedPointer<EventlistHandlerDBusConnectorRead>& connector,
                  const EventQuery& query, int firstRows, EventPrinter::Form form)
        : Follower(*connector),
          m_connector(connector),
          m_query(query),
          m_printer(form),
          m_firstRows(firstRows)
    {
        connect(m_connector.data(), &EventlistHandlerDBusConnectorRead::changedEventlist, this,
                &EventFollower::look);
    }

private:
    enum Stage
    {
        position, // where the list ends now
        begin,    // the newest rows up to there, once
        follow    // what comes after
    };

    DBusPendingReply::SharedPointer ask() override
    {
        switch (m_stage)
        {
        case position:
            return EventQuery().newest(*m_connector, 1);
        case begin:
            return m_query.newest(*m_connector, m_firstRows);
        default:
            return m_query.from(*m_connector, m_lastId + 1, rowsOfPiece);
        }
    }

    bool take(const ListReply& answer) override
    {
        if (m_stage == position)
        {
            takePosition(idOf(answer, 0));
            return true;
        }
        ListReply list = answer;
        if (m_stage == begin)
        {
            list.reverse();
        }
        if (list.size() > 0)
        {
            m_printer.print(list);
        }
        if (m_stage == begin)
        {
            m_stage = follow;
            return true;
        }
        m_lastId = qMax(m_lastId, idOf(list, list.size() - 1));
        return list.size() == rowsOfPiece || list.isTruncated();
    }

    void takePosition(qint64 newestId)
    {
        const bool isFirst = m_lastId < 0;
        if (isFirst)
        {
            m_lastId = newestId;
            m_query.setLastId(newestId);
        }
        else if (newestId < m_lastId)
        {
            // Another list than before: its ids begin anew.
            m_lastId = 0;
        }
        m_stage = isFirst && m_firstRows > 0 && newestId > 0 ? begin : follow;
    }

    void serviceIsBack() override
    {
        if (m_stage == follow)
        {
            m_stage = position;
        }
    }

    static qint64 idOf(const ListReply& list, int row)
    {
        return row >= 0 && row < list.size()
                   ? list.number(row, EventlistHandlerDefinitions::getListColumnNameEventlistId())
                   : 0;
    }

    const QSharedPointer<EventlistHandlerDBusConnectorRead> m_connector;
    EventQuery m_query;
    EventPrinter m_printer;
    const int m_firstRows;
    Stage m_stage = position;
    qint64 m_lastId = -1;
};
} // namespace

QString FollowCommand::name() const
{
    return QStringLiteral("follow");
}

QString FollowCommand::summary() const
{
    return QStringLiteral("print new events as they come");
}

QString FollowCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString FollowCommand::explanation() const
{
    return QStringLiteral(
        "Prints the newest events, then every new one as it comes, until it is ended (Ctrl-C).\n"
        "When the service or the bus goes away it says so, waits, and goes on where it was.\n\n"
        "With --json the output has one object for each event, a line each.\n");
}

QVector<Option> FollowCommand::options() const
{
    return EventQuery::filterOptions() +
           QVector<Option>{
               {{QStringLiteral("n"), QStringLiteral("count")},
                QStringLiteral("N"),
                QStringLiteral("begin with the newest N events; 10 without this, 0 for none")},
               {{QStringLiteral("j"), QStringLiteral("json")},
                QString(),
                QStringLiteral("JSON, for programs")},
           };
}

QStringList FollowCommand::examples() const
{
    return {QStringLiteral("follow"), QStringLiteral("follow --type alarm --language fr"),
            QStringLiteral("follow --count 0 --json | while read -r event; do ...; done")};
}

int FollowCommand::run(const Arguments& arguments)
{
    EventQuery query;
    qint64 count = 0;
    if (!arguments.words().isEmpty())
    {
        return complain(QStringLiteral("'%1' is no option").arg(arguments.words().first()));
    }
    if (!query.read(arguments))
    {
        return complain(query.errorText());
    }
    QString error;
    if (!arguments.readNumber(QStringLiteral("count"), 0, defaultRows, count, error))
    {
        return complain(error);
    }
    const bool isJson = arguments.isSet(QStringLiteral("json"));
    EventFollower follower(EventlistHandlerDBusConnectorRead::createAndConnect(false), query,
                           int(qMin<qint64>(count, rowsOfPiece)),
                           isJson ? EventPrinter::jsonLines : EventPrinter::lines);
    return follower.run();
}
