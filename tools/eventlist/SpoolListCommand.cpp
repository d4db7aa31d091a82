#include "eventlist/SpoolListCommand.h"

#include "eventlist/EventPrinter.h"
#include "eventlist/ExitCode.h"
#include "eventlist/JsonText.h"
#include "eventlist/Language.h"
#include "eventlist/Output.h"
#include "eventlist/SpoolOptions.h"
#include "eventlist/Table.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr int widestName = 24;

QString printedTable(const QVector<SpoolFile>& files, const QString& language)
{
    Table table({{QStringLiteral("FILE"), 0, widestName, false},
                 {QStringLiteral("PLACE"), 0, 0, false},
                 {QStringLiteral("TIME"), 19, 0, false},
                 {QStringLiteral("TYPE"), 5, 0, false},
                 {QStringLiteral("STATE"), 0, 0, false},
                 {QStringLiteral("MODULE"), 0, widestName, false},
                 {QStringLiteral("DESCRIPTION"), 0, 0, false}});
    for (const SpoolFile& file : files)
    {
        const bool isGood = file.error().isEmpty();
        QStringList cells = {file.name(), SpoolFile::placeWord(file.place())};
        cells += isGood
                     ? QStringList{EventPrinter::shortTime(
                                       file.text(Names::getListColumnNameDateTimeMsUtc())),
                                   Words::type(file.number(Names::getListColumnNameEventType())),
                                   Words::state(file.number(Names::getListColumnNameEventState())),
                                   file.text(Names::getListColumnNameModuleName())}
                     : QStringList{QString(), QStringLiteral("-"), QString(), QString()};
        cells.append(SpoolOptions::description(file, language));
        table.add(cells, isGood ? QString() : QStringLiteral("1;31"));
    }
    return table.text(Output::width(), Output::isColoured());
}

QString printedJson(const QVector<SpoolFile>& files, const QString& language)
{
    QJsonArray objects;
    for (const SpoolFile& file : files)
    {
        QJsonObject object = file.error().isEmpty() ? file.event() : QJsonObject();
        object.insert(QStringLiteral("File"), file.path());
        object.insert(QStringLiteral("Place"), SpoolFile::placeWord(file.place()));
        object.insert(QStringLiteral("Error"), file.error());
        if (file.error().isEmpty())
        {
            object.insert(Names::getListColumnNameDescription(),
                          language.isEmpty()
                              ? QJsonValue(QJsonObject::fromVariantMap(file.description()))
                              : QJsonValue(SpoolOptions::description(file, language)));
        }
        objects.append(object);
    }
    return JsonText::of(objects);
}
} // namespace

QString SpoolListCommand::name() const
{
    return QStringLiteral("spool list");
}

QString SpoolListCommand::summary() const
{
    return QStringLiteral("show the files of the spool folder");
}

QString SpoolListCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString SpoolListCommand::explanation() const
{
    return QStringLiteral(
        "Shows the events that lie as files in the spool folder. The central service takes them\n"
        "within seconds; what waits longer, nobody takes. Places:\n\n"
        "  waiting   for the service\n"
        "  claimed   the service is about to store it, or was when it ended\n"
        "  rejected  the service could not understand it; 'eventlist spool validate' says why\n"
        "  other     no spool file: a writer that was killed may leave one\n\n"
        "The bus is not needed.\n");
}

QVector<Option> SpoolListCommand::options() const
{
    return {SpoolOptions::folderOption(),
            {{QStringLiteral("l"), QStringLiteral("language")},
             QStringLiteral("LANGUAGE"),
             QStringLiteral("de, en, fr ...; without it, that of your locale, and with\n"
                            "--json all")},
            {{QStringLiteral("j"), QStringLiteral("json")},
             QString(),
             QStringLiteral("JSON, for programs: an array with an object for each file")}};
}

QStringList SpoolListCommand::examples() const
{
    return {QStringLiteral("spool list"),
            QStringLiteral("spool list --json | jq -r '.[] | select(.Place == \"waiting\").File'")};
}

QString SpoolListCommand::exitCodes() const
{
    return QStringLiteral("0 done, 1 the folder cannot be read, 2 wrong command line");
}

int SpoolListCommand::run(const Arguments& arguments)
{
    if (!arguments.words().isEmpty())
    {
        return complain(QStringLiteral("'%1' is no option").arg(arguments.words().first()));
    }
    bool isComplete = false;
    const QVector<SpoolFile> files = SpoolOptions::readAll(arguments, isComplete);
    const ExitCode code = isComplete ? ExitCode::success : ExitCode::failed;
    const QString language = Language::ofArguments(arguments);
    if (arguments.isSet(QStringLiteral("json")))
    {
        Output::write(printedJson(files, language), code);
    }
    else if (!files.isEmpty())
    {
        Output::write(printedTable(files, language), code);
    }
    else if (isComplete)
    {
        Output::error(QStringLiteral("no files in '%1'").arg(SpoolOptions::folder(arguments)));
    }
    return code;
}
