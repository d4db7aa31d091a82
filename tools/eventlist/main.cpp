#include "eventlist/Command.h"
#include "eventlist/ExitCode.h"
#include "eventlist/MessageLog.h"
#include "eventlist/Output.h"

#include <QCoreApplication>

#include <clocale>

namespace
{
QString help()
{
    QString text =
        QStringLiteral("Usage: eventlist COMMAND [options]\n\n"
                       "Reads and writes the central event list and alarm list of this device.\n\n"
                       "Commands:\n");
    for (const auto& command : Command::all())
    {
        text += QStringLiteral("  ") + command->name().leftJustified(10) + command->summary() +
                QLatin1Char('\n');
    }
    return text +
           QStringLiteral("\n'eventlist COMMAND --help' explains a command, with examples.\n\n"
                          "Environment:\n"
                          "  DBUS_SYSTEM_BUS_ADDRESS  another bus than the system bus\n"
                          "  LC_ALL, LC_MESSAGES, LANG  the language in which lists are shown\n"
                          "  NO_COLOR  no colours, also on a terminal\n"
                          "  COLUMNS  another width than the terminal's\n\n"
                          "Exit codes: 0 done, 1 failed or refused, 2 wrong command line, "
                          "3 bus or service not there\n");
}
} // namespace

int main(int argc, char** argv)
{
    Output::prepare();
    MessageLog::take();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("eventlist"));
    // Texts are written in UTF-8 wherever this runs, so their width is measured so too.
    std::setlocale(LC_CTYPE, "C.UTF-8");

    // As Qt would only do in a locale of UTF-8.
    QStringList words;
    for (int i = 1; i < argc; ++i)
    {
        words.append(QString::fromUtf8(argv[i]));
    }
    const QString name = words.value(0);
    if (name == QLatin1String("--version"))
    {
        Output::write(QStringLiteral("eventlist " EVENTLIST_VERSION "\n"));
        return ExitCode::success;
    }
    const bool asksForHelp = name == QLatin1String("--help") || name == QLatin1String("-h") ||
                             name == QLatin1String("help");
    for (const auto& command : Command::all())
    {
        if (command->name() == (asksForHelp ? words.value(1) : name))
        {
            return asksForHelp ? command->execute({QStringLiteral("--help")})
                               : command->execute(words.mid(1));
        }
    }
    if (asksForHelp)
    {
        Output::write(help());
        return ExitCode::success;
    }
    Output::error(
        name.isEmpty()
            ? QStringLiteral("a command is missing; see 'eventlist --help'")
            : QStringLiteral("there is no command '%1'; see 'eventlist --help'").arg(name));
    return ExitCode::wrongUsage;
}
