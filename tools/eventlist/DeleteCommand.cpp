#include "eventlist/DeleteCommand.h"

#include "eventlist/EventQuery.h"
#include "eventlist/ExitCode.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

namespace
{
// The id in the one row of an answer; 0 for an empty list.
int readId(const EventlistHandlerDBusConnectorRead& reader,
           const DBusPendingReply::SharedPointer& reply, qint64& id)
{
    ListReply rows;
    const int code = Service::waitForList(reader, reply, rows);
    id = rows.size() == 0
             ? 0
             : rows.number(0, EventlistHandlerDefinitions::getListColumnNameEventlistId());
    return code;
}
} // namespace

QString DeleteCommand::name() const
{
    return QStringLiteral("delete");
}

QString DeleteCommand::summary() const
{
    return QStringLiteral("delete the whole event list");
}

QString DeleteCommand::usage() const
{
    return QStringLiteral("--yes");
}

QString DeleteCommand::explanation() const
{
    return QStringLiteral(
        "Deletes every event of the event list; there is no way back. The alarm list stays. The\n"
        "new list begins with an entry that the old one was deleted, and its ids go on.\n");
}

QVector<Option> DeleteCommand::options() const
{
    return {{{QStringLiteral("yes")}, QString(), QStringLiteral("really do it")}};
}

QStringList DeleteCommand::examples() const
{
    return {QStringLiteral("list --count 0 --json > before.json && eventlist delete --yes")};
}

int DeleteCommand::run(const Arguments& arguments)
{
    if (!arguments.words().isEmpty() || !arguments.isSet(QStringLiteral("yes")))
    {
        return complain(
            QStringLiteral("this deletes the whole event list; say --yes if you mean it"));
    }
    EventlistHandlerDBusConnectorRead reader(false);
    if (!Service::isThere(reader))
    {
        return ExitCode::notReachable;
    }
    const EventQuery wholeList;
    qint64 newestBefore = 0;
    int code = readId(reader, wholeList.newest(reader, 1), newestBefore);
    if (code != ExitCode::success)
    {
        return code;
    }
    EventlistHandlerDBusConnectorWrite(false).deleteEventlist();
    // The deletion has no answer. This query comes after it on the same connection, and so does its
    // answer.
    qint64 oldestAfter = 0;
    code = readId(reader, wholeList.from(reader, 0, 1), oldestAfter);
    if (code == ExitCode::success && oldestAfter != 0 && oldestAfter <= newestBefore)
    {
        Output::error(QStringLiteral("the list was not deleted: the bus may allow it to others "
                                     "alone, or the log of the service says why"));
        return ExitCode::failed;
    }
    return code;
}
