#include "eventlist/TypesCommand.h"

#include "eventlist/EventPrinter.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Language.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"
#include "eventlist/Table.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"

using Names = EventlistHandlerDefinitions;

QString TypesCommand::name() const
{
    return QStringLiteral("types");
}

QString TypesCommand::summary() const
{
    return QStringLiteral("show the types of events");
}

QString TypesCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString TypesCommand::explanation() const
{
    return QStringLiteral(
        "Shows the event types that the service knows: the number with which they stand in the\n"
        "list, the word for --type, and what they are called in your language.\n");
}

QVector<Option> TypesCommand::options() const
{
    return {{{QStringLiteral("l"), QStringLiteral("language")},
             QStringLiteral("LANGUAGE"),
             QStringLiteral("de, en, fr ... or all; without it, that of your locale,\n"
                            "and with --json all")},
            {{QStringLiteral("j"), QStringLiteral("json")},
             QString(),
             QStringLiteral("JSON, for programs")}};
}

QStringList TypesCommand::examples() const
{
    return {QStringLiteral("types --language de")};
}

int TypesCommand::run(const Arguments& arguments)
{
    if (!arguments.words().isEmpty())
    {
        return complain(QStringLiteral("'%1' is no option").arg(arguments.words().first()));
    }
    const bool isJson = arguments.isSet(QStringLiteral("json"));
    const QString language = Language::ofArguments(arguments);
    EventlistHandlerDBusConnectorRead connector(false);
    if (!Service::isThere(connector))
    {
        return ExitCode::notReachable;
    }
    ListReply types;
    const int code =
        Service::waitForList(connector, connector.getListOfEventTypes(language), types);
    if (code != ExitCode::success)
    {
        return code;
    }
    if (isJson)
    {
        EventPrinter(EventPrinter::jsonArray).print(types);
        return ExitCode::success;
    }
    Table table({{QStringLiteral("NUMBER"), 0, 0, true},
                 {QStringLiteral("TYPE"), 0, 0, false},
                 {QStringLiteral("NAME"), 0, 0, false}});
    for (int row = 0; row < types.size(); ++row)
    {
        const QString number = types.value(row, Names::getListColumnNameEventType());
        table.add({number, Words::type(number.toInt()),
                   types.value(row, Names::getListColumnNameDescription())});
    }
    Output::write(table.text(Output::width(), Output::isColoured()));
    return ExitCode::success;
}
