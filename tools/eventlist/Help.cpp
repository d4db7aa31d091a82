#include "eventlist/Help.h"

#include "eventlist/Command.h"

namespace
{
constexpr int summaryColumn = 16;

QString line(const Command& command)
{
    return QStringLiteral("  ") + command.name().leftJustified(summaryColumn) + command.summary() +
           QLatin1Char('\n');
}

bool isMember(const Command& command, const QString& group)
{
    return command.name().startsWith(group + QLatin1Char(' '));
}
} // namespace

QString Help::overview()
{
    QString text =
        QStringLiteral("Usage: eventlist COMMAND [options]\n\n"
                       "Reads and writes the central event list and alarm list of this device.\n\n"
                       "Commands:\n");
    for (const auto& command : Command::all())
    {
        text += line(*command);
    }
    return text +
           QStringLiteral(
               "\n'eventlist COMMAND --help' explains a command, with examples;\n"
               "'eventlist help --all' explains them all.\n\n"
               "Environment:\n"
               "  DBUS_SYSTEM_BUS_ADDRESS  another bus than the system bus\n"
               "  LC_ALL, LC_MESSAGES, LANG  the language in which lists are shown\n"
               "  NO_COLOR  no colours, also on a terminal\n"
               "  COLUMNS  another width than the terminal's\n\n"
               "Exit codes: 0 done, 1 failed, refused or a fault found, 2 wrong command line, "
               "3 bus or service not there\n");
}

QString Help::all()
{
    QString text = overview();
    for (const auto& command : Command::all())
    {
        text += QStringLiteral("\n\n") + command->help();
    }
    return text;
}

QStringList Help::groupMembers(const QString& group)
{
    QStringList members;
    for (const auto& command : Command::all())
    {
        if (isMember(*command, group))
        {
            members.append(command->name().mid(group.size() + 1));
        }
    }
    return members;
}

QString Help::group(const QString& group)
{
    QString text = QStringLiteral("Usage: eventlist ") + group +
                   QStringLiteral(" COMMAND [options]\n\nCommands:\n");
    for (const auto& command : Command::all())
    {
        text += isMember(*command, group) ? line(*command) : QString();
    }
    return text + QStringLiteral("\n'eventlist ") + group +
           QStringLiteral(" COMMAND --help' explains a command, with examples.\n");
}
