#include "eventlist/ListCommand.h"

#include "eventlist/EventPrinter.h"
#include "eventlist/EventQuery.h"
#include "eventlist/ExitCode.h"
#include "eventlist/FollowCommand.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Progress.h"
#include "eventlist/Service.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include <limits>

namespace
{
constexpr int defaultRows = 100;
// Rows of one query when the list is read piece by piece: far below what a message may hold.
constexpr int rowsOfPiece = 1000;

// Reads from the newest row backwards until the span or the number of rows is used up.
int readPieces(EventlistHandlerDBusConnectorRead& connector, EventQuery query, qint64 rows,
               ListReply& list)
{
    Progress progress(QStringLiteral("reading the event list"));
    for (;;)
    {
        progress.tell(QStringLiteral("%1 events").arg(list.size()));
        const qint64 missing = rows - list.size();
        const int wanted = int(qMin<qint64>(missing, rowsOfPiece));
        ListReply piece;
        const int code = Service::askForList(
            connector, [&] { return query.newest(connector, wanted); }, piece);
        if (code != ExitCode::success)
        {
            return code;
        }
        const int lastRow = piece.size() - 1;
        list.append(piece);
        if (piece.size() == 0 || list.size() >= rows ||
            (piece.size() < wanted && !piece.isTruncated()))
        {
            return ExitCode::success;
        }
        const qint64 lowestId =
            piece.number(lastRow, EventlistHandlerDefinitions::getListColumnNameEventlistId());
        if (lowestId <= 1)
        {
            return ExitCode::success;
        }
        query.setLastId(lowestId - 1);
    }
}
} // namespace

QString ListCommand::name() const
{
    return QStringLiteral("list");
}

QString ListCommand::summary() const
{
    return QStringLiteral("show the event list");
}

QString ListCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString ListCommand::explanation() const
{
    return QStringLiteral(
        "Shows the newest events of the event list, the newest one last. Several filters hold\n"
        "together. On a terminal the last column is cut to the line; into a pipe or a file\n"
        "everything is written.\n\n"
        "With --json the output is one array with an object for each event, whose members are the\n"
        "columns of the list; \"Description\" and \"MetaData\" are objects, \"KeywordName\" is an\n"
        "array. EventType: 0 alarm, 1 audit trail, 2 fault, 3 other. State: 0 none, 1 on, 2 "
        "off.\n");
}

QVector<Option> ListCommand::options() const
{
    return EventQuery::filterOptions() + EventQuery::spanOptions() +
           QVector<Option>{
               {{QStringLiteral("n"), QStringLiteral("count")},
                QStringLiteral("N"),
                QStringLiteral("at most so many events, the newest; 100 without this, 0 for all")},
               {{QStringLiteral("r"), QStringLiteral("reverse")},
                QString(),
                QStringLiteral("the newest event first")},
               {{QStringLiteral("f"), QStringLiteral("follow")},
                QString(),
                QStringLiteral("then every new event as it comes, as 'eventlist follow' does")},
               {{QStringLiteral("sender")},
                QString(),
                QStringLiteral("show who sent each event, as the bus and the file system know it:\n"
                               "user[process], or the user to whom a spool file belonged")},
               {{QStringLiteral("j"), QStringLiteral("json")},
                QString(),
                QStringLiteral("JSON, for programs")},
           };
}

QStringList ListCommand::examples() const
{
    return {QStringLiteral("list --type alarm,fault --since today"),
            QStringLiteral("list --module PumpControl --keyword Error --count 20 --language de"),
            QStringLiteral("list --type audit --sender"),
            QStringLiteral("list --from-id 1200 --count 0 --json > events.json"),
            QStringLiteral("list --json | jq -r '.[] | select(.User != \"\") | .User'")};
}

// What is still to come has no end and no other order.
int ListCommand::follow(const Arguments& arguments) const
{
    for (const QString& option :
         {QStringLiteral("since"), QStringLiteral("until"), QStringLiteral("from-id"),
          QStringLiteral("to-id"), QStringLiteral("reverse"), QStringLiteral("sender")})
    {
        if (arguments.isSet(option))
        {
            return complain(QStringLiteral("--%1 and --follow do not go together").arg(option));
        }
    }
    return FollowCommand().run(arguments);
}

int ListCommand::run(const Arguments& arguments)
{
    if (arguments.isSet(QStringLiteral("follow")))
    {
        return follow(arguments);
    }
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
    if (arguments.isSet(QStringLiteral("sender")))
    {
        query.askForSender();
    }
    QString error;
    if (!arguments.readNumber(QStringLiteral("count"), 0, defaultRows, count, error))
    {
        return complain(error);
    }
    EventlistHandlerDBusConnectorRead connector(false);
    if (!Service::isThere(connector))
    {
        return ExitCode::notReachable;
    }

    ListReply list;
    int code = ExitCode::success;
    if (query.isById())
    {
        code = readPieces(connector, query, count > 0 ? count : std::numeric_limits<qint64>::max(),
                          list);
    }
    else
    {
        const int rows = int(qMin<qint64>(count, std::numeric_limits<int>::max()));
        code = Service::waitForList(connector, query.newest(connector, rows), list);
    }
    if (code != ExitCode::success)
    {
        return code;
    }
    if (list.isTruncated())
    {
        Output::error(QStringLiteral("the oldest events of this span did not fit into one answer; "
                                     "ask for a shorter span, or by --from-id and --to-id"));
    }
    if (!arguments.isSet(QStringLiteral("reverse")))
    {
        list.reverse();
    }
    const bool isJson = arguments.isSet(QStringLiteral("json"));
    if (list.size() == 0 && !isJson)
    {
        Output::error(QStringLiteral("no events"));
        return ExitCode::success;
    }
    EventPrinter(isJson ? EventPrinter::jsonArray : EventPrinter::wholeTable).print(list);
    return ExitCode::success;
}
