#include "eventlist/EmergencyCommand.h"

#include "eventlist/EventFromShell.h"
#include "eventlist/ExitCode.h"

QString EmergencyCommand::name() const
{
    return QStringLiteral("emergency");
}

QString EmergencyCommand::summary() const
{
    return QStringLiteral("leave the emergency event of a watchdog");
}

QString EmergencyCommand::usage() const
{
    return QStringLiteral("[options] NAME");
}

QString EmergencyCommand::explanation() const
{
    return QStringLiteral(
        "Leaves the event 'System watchdog triggered: NAME' in the spool folder, where it is safe\n"
        "when this ends: for the last step of a script before the device is switched off or\n"
        "started anew. It needs no bus, no service and no language files; the central service\n"
        "makes the sentence when it takes the event.\n");
}

QVector<Option> EmergencyCommand::options() const
{
    return {{{QStringLiteral("m"), QStringLiteral("module")},
             QStringLiteral("NAME"),
             QStringLiteral("module that reports; eventlist without this")}};
}

QStringList EmergencyCommand::examples() const
{
    return {QStringLiteral("emergency --module supervisor PumpControl")};
}

QString EmergencyCommand::exitCodes() const
{
    return QStringLiteral("0 done, 1 the spool folder cannot be written, 2 wrong command line");
}

int EmergencyCommand::run(const Arguments& arguments)
{
    if (arguments.words().size() != 1)
    {
        return complain(QStringLiteral("give one NAME: what the watchdog acted on"));
    }
    const QString module = arguments.isSet(QStringLiteral("module"))
                               ? arguments.value(QStringLiteral("module"))
                               : QStringLiteral("eventlist");
    return EventFromShell::writeEmergency(module, arguments.words().first());
}
