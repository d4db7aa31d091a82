#include "eventlist/DeleteCommand.h"

#include "eventlist/ExitCode.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"

#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

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
    EventlistHandlerDBusConnectorWrite connector(false);
    if (!Service::isThere(connector))
    {
        return ExitCode::notReachable;
    }
    connector.deleteEventlist();
    return Service::flush(connector);
}
