#include "eventlist/SpoolResolveCommand.h"

#include "eventlist/MessageLog.h"
#include "eventlist/ResolvedTexts.h"
#include "eventlist/SpoolOptions.h"

QString SpoolResolveCommand::name() const
{
    return QStringLiteral("spool resolve");
}

QString SpoolResolveCommand::summary() const
{
    return QStringLiteral("make texts of the descriptions in spool files");
}

QString SpoolResolveCommand::usage() const
{
    return QStringLiteral("[options] FILE...");
}

QString SpoolResolveCommand::explanation() const
{
    return QStringLiteral(
        "Puts the arguments of an event in a spool file into its description, as a reader of the\n"
        "event list does: from the metadata, not from the finished texts beside them. A FILE is\n"
        "a path, or the beginning of a name of 'eventlist spool list'. The bus is not needed.\n");
}

QVector<Option> SpoolResolveCommand::options() const
{
    return QVector<Option>{SpoolOptions::folderOption()} + ResolvedTexts::options();
}

QStringList SpoolResolveCommand::examples() const
{
    return {QStringLiteral("spool resolve --language de logEvent17")};
}

QString SpoolResolveCommand::exitCodes() const
{
    return QStringLiteral("0 done, 1 something could not be resolved, 2 wrong command line");
}

int SpoolResolveCommand::run(const Arguments& arguments)
{
    if (arguments.words().isEmpty())
    {
        return complain(QStringLiteral("name the files; 'eventlist spool list' lists them"));
    }
    ResolvedTexts resolved(arguments);
    for (const QString& word : arguments.words())
    {
        const SpoolFile file = SpoolFile::ofWord(word, SpoolOptions::folder(arguments));
        if (!file.error().isEmpty())
        {
            resolved.fail(file.path(), file.error());
            continue;
        }
        // What is wrong with the arguments is told by the library, and belongs here.
        MessageLog::setVerbose(true);
        resolved.add(StoredText::ofObject(file.event()), file.path());
        MessageLog::setVerbose(arguments.isSet(QStringLiteral("verbose")));
    }
    return resolved.print();
}
