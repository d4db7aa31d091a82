#include "eventlist/Command.h"

#include "eventlist/AckCommand.h"
#include "eventlist/AlarmsCommand.h"
#include "eventlist/DeleteCommand.h"
#include "eventlist/DoctorCommand.h"
#include "eventlist/EmergencyCommand.h"
#include "eventlist/ExitCode.h"
#include "eventlist/FollowCommand.h"
#include "eventlist/ListCommand.h"
#include "eventlist/LogCommand.h"
#include "eventlist/MessageLog.h"
#include "eventlist/Output.h"
#include "eventlist/ResolveCommand.h"
#include "eventlist/SpoolListCommand.h"
#include "eventlist/SpoolResolveCommand.h"
#include "eventlist/SpoolShowCommand.h"
#include "eventlist/SpoolValidateCommand.h"
#include "eventlist/TextsCheckCommand.h"
#include "eventlist/TypesCommand.h"

namespace
{
constexpr int descriptionColumn = 26;

QVector<Option> commonOptions()
{
    return {
        {{QStringLiteral("verbose")},
         QString(),
         QStringLiteral("show the library's own warnings too")},
        {{QStringLiteral("h"), QStringLiteral("help")}, QString(), QStringLiteral("this text")}};
}

QString optionLine(const Option& option)
{
    QStringList names;
    for (const QString& name : option.names)
    {
        names += (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
    }
    QString head = QStringLiteral("  ") +
                   (option.names.first().size() == 1 ? QString() : QStringLiteral("    "));
    head += names.join(QStringLiteral(", "));
    head += option.valueName.isEmpty() ? QString() : QLatin1Char(' ') + option.valueName;
    if (head.size() > descriptionColumn - 2)
    {
        head += QLatin1Char('\n');
    }
    const QString indent = QLatin1Char('\n') + QString(descriptionColumn, QLatin1Char(' '));
    const int used = head.endsWith(QLatin1Char('\n')) ? 0 : head.size();
    QString description = option.description;
    return head + QString(descriptionColumn - used, QLatin1Char(' ')) +
           description.replace(QLatin1Char('\n'), indent) + QLatin1Char('\n');
}
} // namespace

Command::~Command() = default;

QString Command::help() const
{
    QString text = QStringLiteral("Usage: eventlist ") + name() + QLatin1Char(' ') + usage() +
                   QStringLiteral("\n\n") + explanation();
    if (!aliases().isEmpty())
    {
        text += QStringLiteral("\nAlso called: ") + aliases().join(QStringLiteral(", ")) +
                QLatin1Char('\n');
    }
    text += QStringLiteral("\nOptions:\n");
    for (const Option& option : options() + commonOptions())
    {
        text += optionLine(option);
    }
    text += QStringLiteral("\nExamples:\n");
    for (const QString& example : examples())
    {
        text += QStringLiteral("  eventlist ") + example + QLatin1Char('\n');
    }
    return text + QStringLiteral("\nExit codes: ") + exitCodes() + QLatin1Char('\n');
}

QString Command::exitCodes() const
{
    return QStringLiteral("0 done, 1 failed or refused, 2 wrong command line, "
                          "3 bus or service not there");
}

int Command::complain(const QString& text) const
{
    Output::error(text + QStringLiteral("; see 'eventlist ") + name() + QStringLiteral(" --help'"));
    return ExitCode::wrongUsage;
}

int Command::execute(const QStringList& words)
{
    Arguments arguments(options() + commonOptions());
    if (!arguments.parse(words))
    {
        return complain(arguments.errorText());
    }
    if (arguments.isSet(QStringLiteral("help")))
    {
        Output::write(help());
        return ExitCode::success;
    }
    MessageLog::setVerbose(arguments.isSet(QStringLiteral("verbose")));
    return run(arguments);
}

const std::vector<std::unique_ptr<Command>>& Command::all()
{
    static const auto commands = [] {
        std::vector<std::unique_ptr<Command>> made;
        made.push_back(std::make_unique<ListCommand>());
        made.push_back(std::make_unique<FollowCommand>());
        made.push_back(std::make_unique<AlarmsCommand>());
        made.push_back(std::make_unique<AckCommand>());
        made.push_back(std::make_unique<LogCommand>());
        made.push_back(std::make_unique<EmergencyCommand>());
        made.push_back(std::make_unique<TypesCommand>());
        made.push_back(std::make_unique<DeleteCommand>());
        made.push_back(std::make_unique<ResolveCommand>());
        made.push_back(std::make_unique<SpoolListCommand>());
        made.push_back(std::make_unique<SpoolShowCommand>());
        made.push_back(std::make_unique<SpoolValidateCommand>());
        made.push_back(std::make_unique<SpoolResolveCommand>());
        made.push_back(std::make_unique<TextsCheckCommand>());
        made.push_back(std::make_unique<DoctorCommand>());
        return made;
    }();
    return commands;
}

Command* Command::find(const QStringList& words, int& used)
{
    Command* found = nullptr;
    used = 0;
    for (const auto& command : all())
    {
        for (const QString& name : QStringList{command->name()} + command->aliases())
        {
            const QStringList parts = name.split(QLatin1Char(' '));
            if (parts.size() > used && words.mid(0, parts.size()) == parts)
            {
                found = command.get();
                used = parts.size();
            }
        }
    }
    return found;
}
