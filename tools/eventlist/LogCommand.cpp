#include "eventlist/LogCommand.h"

#include "eventlist/EventFromShell.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Output.h"

QString LogCommand::name() const
{
    return QStringLiteral("log");
}

QString LogCommand::summary() const
{
    return QStringLiteral("send an event");
}

QString LogCommand::usage() const
{
    return QStringLiteral("[options] TEXT\n"
                          "       eventlist log [options] --text LANGUAGE=TEXT...\n"
                          "       eventlist log [options] --texts FOLDER --url URL");
}

QString LogCommand::explanation() const
{
    return QStringLiteral(
        "Sends one event into the event list. Its text is one TEXT for every language, a --text\n"
        "for each language, or the text of a module's language files. With exit code 0 the\n"
        "service has the event, or with --file the spool folder.\n\n"
        "An alarm and a fault come (--state on, the default for them) and go (--state off). What\n"
        "belongs together has the same alarm id; without --alarm-id it is made of the module and\n"
        "the text url, or of the module and the text, so that the same command with another\n"
        "--state ends what it began.\n");
}

QVector<Option> LogCommand::options() const
{
    return EventFromShell::options();
}

QStringList LogCommand::examples() const
{
    return {QStringLiteral("log --module backup \"Backup finished\""),
            QStringLiteral("log --type alarm --module cellar \"Water in the cellar\""),
            QStringLiteral("log --type alarm --module cellar --state off \"Water in the cellar\""),
            QStringLiteral("log --text de=\"Tür %1 offen\" --text en=\"Door %1 open\" --arg %1=7"),
            QStringLiteral("log --type audit --user anna --keyword User \"Recipe 12 changed\""),
            QStringLiteral("log --texts texts --url PumpControl/Started --module PumpControl")};
}

int LogCommand::run(const Arguments& arguments)
{
    EventFromShell event;
    if (!event.read(arguments))
    {
        return complain(event.errorText());
    }
    return arguments.isSet(QStringLiteral("file")) ? event.writeFile() : event.send();
}
