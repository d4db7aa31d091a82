#include "eventlist/Command.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Help.h"
#include "eventlist/MessageLog.h"
#include "eventlist/Output.h"

#include <QCoreApplication>

#include <clocale>

namespace
{
bool isHelp(const QString& word)
{
    return word == QLatin1String("--help") || word == QLatin1String("-h") ||
           word == QLatin1String("help");
}

int tell(const QString& text)
{
    Output::write(text);
    return ExitCode::success;
}

int refuse(const QString& text, const QString& help)
{
    Output::error(text + QStringLiteral("; see 'eventlist ") + help + QLatin1Char('\''));
    return ExitCode::wrongUsage;
}

// A command line that names no command: it may name a group of them.
int answerForGroup(const QStringList& words, bool asksForHelp)
{
    const QString group = words.value(0);
    const QStringList members = Help::groupMembers(group);
    if (members.isEmpty())
    {
        return refuse(group.isEmpty() ? QStringLiteral("a command is missing")
                                      : QStringLiteral("there is no command '%1'").arg(group),
                      QStringLiteral("--help"));
    }
    if (words.size() == 1 ? asksForHelp : isHelp(words.at(1)))
    {
        return tell(Help::group(group));
    }
    return refuse(words.size() == 1
                      ? QStringLiteral("'%1' needs one of its commands: %2")
                            .arg(group, members.join(QStringLiteral(", ")))
                      : QStringLiteral("there is no command '%1 %2'").arg(group, words.at(1)),
                  group + QStringLiteral(" --help"));
}

int run(QStringList words)
{
    if (words.value(0) == QLatin1String("--version"))
    {
        return tell(QStringLiteral("eventlist " EVENTLIST_VERSION "\n"));
    }
    const bool asksForHelp = !words.isEmpty() && isHelp(words.first());
    if (asksForHelp)
    {
        words.removeFirst();
        if (words.isEmpty())
        {
            return tell(Help::overview());
        }
        if (words == QStringList{QStringLiteral("--all")})
        {
            return tell(Help::all());
        }
    }
    int used = 0;
    Command* const command = Command::find(words, used);
    if (command == nullptr)
    {
        return answerForGroup(words, asksForHelp);
    }
    return asksForHelp ? tell(command->help()) : command->execute(words.mid(used));
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
    return run(words);
}
