#include "eventlist/AlarmsCommand.h"

#include "eventlist/AlarmFollower.h"
#include "eventlist/AlarmPrinter.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Language.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"

QString AlarmsCommand::name() const
{
    return QStringLiteral("alarms");
}

QString AlarmsCommand::summary() const
{
    return QStringLiteral("show the alarm list: what needs attention now");
}

QString AlarmsCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString AlarmsCommand::explanation() const
{
    return QStringLiteral(
        "Shows the alarms and faults that are there or wait for an acknowledgement. An alarm\n"
        "leaves the list when it has gone and is acknowledged.\n\n"
        "  !!  is there, and nobody has acknowledged it\n"
        "  !   is there and acknowledged, or has gone and is not acknowledged\n\n"
        "The first word of a row is the alarm's id, as far as 'eventlist ack' needs it.\n");
}

QVector<Option> AlarmsCommand::options() const
{
    return {
        {{QStringLiteral("f"), QStringLiteral("follow")},
         QString(),
         QStringLiteral("then print every change as it comes, also of the central detector")},
        {{QStringLiteral("l"), QStringLiteral("language")},
         QStringLiteral("LANGUAGE"),
         QStringLiteral("de, en, fr ... or all; without it, that of your locale,\n"
                        "and with --json all")},
        {{QStringLiteral("j"), QStringLiteral("json")},
         QString(),
         QStringLiteral("JSON, for programs: one array; with --follow an object a line")},
    };
}

QStringList AlarmsCommand::examples() const
{
    return {QStringLiteral("alarms"), QStringLiteral("alarms --follow --language de"),
            QStringLiteral("alarms --json | jq '.[] | select(.AlarmActive).AlarmID'")};
}

int AlarmsCommand::run(const Arguments& arguments)
{
    if (!arguments.words().isEmpty())
    {
        return complain(QStringLiteral("'%1' is no option").arg(arguments.words().first()));
    }
    const bool isJson = arguments.isSet(QStringLiteral("json"));
    const QString language = Language::ofArguments(arguments);
    if (arguments.isSet(QStringLiteral("follow")))
    {
        AlarmFollower follower(AlarmlistHandlerDBusConnectorRead::createAndConnect(), language,
                               isJson);
        return follower.run();
    }
    AlarmlistHandlerDBusConnectorRead connector(false);
    if (!Service::isThere(connector))
    {
        return ExitCode::notReachable;
    }
    ListReply alarms;
    const int code =
        Service::waitForList(connector, connector.getCompleteAlarmlist(language), alarms);
    if (code != ExitCode::success)
    {
        return code;
    }
    AlarmPrinter printer(isJson);
    printer.printList(alarms);
    if (isJson)
    {
        return ExitCode::success;
    }
    QVariantMap state;
    if (Service::waitForDictionary(connector, connector.getAlarmState(QString()), state) ==
        ExitCode::success)
    {
        printer.printCentralDetector(state.value(QStringLiteral("CentralDetector")).toBool());
    }
    return ExitCode::success;
}
