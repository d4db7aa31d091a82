#include "eventlist/SpoolValidateCommand.h"

#include "eventlist/ExitCode.h"
#include "eventlist/JsonText.h"
#include "eventlist/Output.h"
#include "eventlist/SafeText.h"
#include "eventlist/SpoolOptions.h"

#include <algorithm>

namespace
{
QString painted(const QString& word, const QString& style)
{
    return Output::isColoured() ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(style, word) : word;
}

QString lines(const SpoolFile& file)
{
    const QString path = SafeText::escaped(file.path());
    QString text;
    if (!file.error().isEmpty())
    {
        text += path + QStringLiteral(": ") +
                painted(QStringLiteral("error"), QStringLiteral("1;31")) + QStringLiteral(": ") +
                SafeText::escaped(file.error()) + QLatin1Char('\n');
    }
    for (const QString& warning : file.warnings())
    {
        text += path + QStringLiteral(": ") +
                painted(QStringLiteral("warning"), QStringLiteral("1;33")) + QStringLiteral(": ") +
                SafeText::escaped(warning) + QLatin1Char('\n');
    }
    return text;
}
} // namespace

QString SpoolValidateCommand::name() const
{
    return QStringLiteral("spool validate");
}

QString SpoolValidateCommand::summary() const
{
    return QStringLiteral("tell whether the central service would take spool files");
}

QString SpoolValidateCommand::usage() const
{
    return QStringLiteral("[options] [FILE...]");
}

QString SpoolValidateCommand::explanation() const
{
    return QStringLiteral(
        "Checks spool files as the central service does before it takes them, and warns of what\n"
        "it would store although something is wrong with it. A FILE is a path, or the\n"
        "beginning of a name of 'eventlist spool list'; without one, all files of the spool\n"
        "folder that wait or were rejected are checked. The bus is not needed.\n");
}

QVector<Option> SpoolValidateCommand::options() const
{
    return {SpoolOptions::folderOption(),
            {{QStringLiteral("strict")}, QString(), QStringLiteral("warnings count as errors")},
            {{QStringLiteral("j"), QStringLiteral("json")},
             QString(),
             QStringLiteral("JSON, for programs: an array with an object for each file")}};
}

QStringList SpoolValidateCommand::examples() const
{
    return {QStringLiteral("spool validate"),
            QStringLiteral("spool validate --strict mymodule.event.json")};
}

QString SpoolValidateCommand::exitCodes() const
{
    return QStringLiteral("0 no errors, 1 errors were found, 2 wrong command line");
}

int SpoolValidateCommand::run(const Arguments& arguments)
{
    bool isComplete = true;
    QVector<SpoolFile> files;
    for (const QString& word : arguments.words())
    {
        files.append(SpoolFile::ofWord(word, SpoolOptions::folder(arguments)));
    }
    if (arguments.words().isEmpty())
    {
        files = SpoolOptions::readAll(arguments, isComplete);
        const auto isNobodysTurn = [](const SpoolFile& file) {
            return file.place() == SpoolFile::Place::claimed ||
                   file.place() == SpoolFile::Place::other;
        };
        files.erase(std::remove_if(files.begin(), files.end(), isNobodysTurn), files.end());
    }
    int errors = isComplete ? 0 : 1;
    int warnings = 0;
    QString text;
    QJsonArray objects;
    for (const SpoolFile& file : qAsConst(files))
    {
        errors += file.error().isEmpty() ? 0 : 1;
        warnings += file.warnings().size();
        text += lines(file);
        objects.append(
            QJsonObject{{QStringLiteral("File"), file.path()},
                        {QStringLiteral("Error"), file.error()},
                        {QStringLiteral("Warnings"), QJsonArray::fromStringList(file.warnings())}});
    }
    const bool isGood =
        errors == 0 && (warnings == 0 || !arguments.isSet(QStringLiteral("strict")));
    const ExitCode code = isGood ? ExitCode::success : ExitCode::failed;
    if (arguments.isSet(QStringLiteral("json")))
    {
        Output::write(JsonText::of(objects), code);
    }
    else if (isComplete)
    {
        Output::write(text + QStringLiteral("%1 files: %2 errors, %3 warnings\n")
                                 .arg(files.size())
                                 .arg(errors)
                                 .arg(warnings),
                      code);
    }
    return code;
}
