#include "eventlist/SpoolShowCommand.h"

#include "eventlist/ExitCode.h"
#include "eventlist/Language.h"
#include "eventlist/Output.h"
#include "eventlist/SafeText.h"
#include "eventlist/SpoolOptions.h"
#include "eventlist/StoredText.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr int nameCells = 14;

QString line(const QString& name, const QString& value)
{
    return SafeText::escaped(name).leftJustified(nameCells) + QStringLiteral("  ") +
           SafeText::escaped(value) + QLatin1Char('\n');
}

// "0 (alarm)"
QString numberAndWord(int number, const QString& word)
{
    return word.isEmpty() ? QString::number(number)
                          : QStringLiteral("%1 (%2)").arg(QString::number(number), word);
}

QString argumentLines(const QJsonObject& metaData, const QString& language)
{
    const QVariantMap arguments =
        metaData.value(Names::getKeyMetaDataArguments()).toObject().toVariantMap();
    QString text;
    for (auto argument = arguments.cbegin(); argument != arguments.cend(); ++argument)
    {
        const QVariant value = argument->toMap().value(QStringLiteral("value"));
        text += line(QStringLiteral("Argument ") + argument.key(),
                     value.type() == QVariant::Map ? StoredText::inLanguage(value.toMap(), language)
                                                   : value.toString());
    }
    return text;
}

QString eventLines(const SpoolFile& file, const QString& language)
{
    QString text;
    for (const QString& member :
         {Names::getListColumnNameDateTimeMsUtc(), Names::getListColumnNameModuleName(),
          Names::getListColumnNameUser(), Names::getListColumnNameKeywords(),
          Names::getListColumnNameIconType(), Names::getListColumnNameEventId(),
          Names::getListColumnNameAlarmID(), Names::getListColumnNameSourceHashes()})
    {
        text += file.text(member).isEmpty() ? QString() : line(member, file.text(member));
    }
    const int type = file.number(Names::getListColumnNameEventType());
    const int state = file.number(Names::getListColumnNameEventState());
    text += line(Names::getListColumnNameEventType(), numberAndWord(type, Words::type(type)));
    text += line(Names::getListColumnNameEventState(), numberAndWord(state, Words::state(state)));
    const QVariantMap texts = file.description();
    if (!language.isEmpty() || texts.isEmpty())
    {
        text +=
            line(Names::getListColumnNameDescription(), SpoolOptions::description(file, language));
    }
    for (auto one = texts.cbegin(); language.isEmpty() && one != texts.cend(); ++one)
    {
        text += line(one.key(), one->toString());
    }
    return text + argumentLines(file.event().value(Names::getListColumnNameMetaData()).toObject(),
                                language);
}
} // namespace

QString SpoolShowCommand::name() const
{
    return QStringLiteral("spool show");
}

QString SpoolShowCommand::summary() const
{
    return QStringLiteral("show spool files whole");
}

QString SpoolShowCommand::usage() const
{
    return QStringLiteral("[options] FILE...");
}

QString SpoolShowCommand::explanation() const
{
    return QStringLiteral(
        "Shows all that an event in a spool file says, in every language, and what is wrong with\n"
        "it. A FILE is a path, or the beginning of a name of 'eventlist spool list'.\n"
        "For programs the file itself is JSON already.\n");
}

QVector<Option> SpoolShowCommand::options() const
{
    return {SpoolOptions::folderOption(),
            {{QStringLiteral("l"), QStringLiteral("language")},
             QStringLiteral("LANGUAGE"),
             QStringLiteral("the text in this language alone: de, en, fr ...")}};
}

QStringList SpoolShowCommand::examples() const
{
    return {QStringLiteral("spool show logEvent17"),
            QStringLiteral("spool show --language de logEvent17.event.json")};
}

QString SpoolShowCommand::exitCodes() const
{
    return QStringLiteral("0 done, 1 the service would not take one of them, 2 wrong command line");
}

int SpoolShowCommand::run(const Arguments& arguments)
{
    if (arguments.words().isEmpty())
    {
        return complain(QStringLiteral("name the files; 'eventlist spool list' lists them"));
    }
    const QString language = Language::key(arguments.isSet(QStringLiteral("language"))
                                               ? arguments.value(QStringLiteral("language"))
                                               : QStringLiteral("all"));
    ExitCode code = ExitCode::success;
    QString text;
    for (const QString& word : arguments.words())
    {
        const SpoolFile file = SpoolFile::ofWord(word, SpoolOptions::folder(arguments));
        text += text.isEmpty() ? QString() : QStringLiteral("\n");
        text += line(QStringLiteral("File"), file.path());
        if (!file.error().isEmpty())
        {
            code = ExitCode::failed;
            text += line(QStringLiteral("Error"), file.error());
            continue;
        }
        text += eventLines(file, language);
        for (const QString& warning : file.warnings())
        {
            text += line(QStringLiteral("Warning"), warning);
        }
    }
    Output::write(text, code);
    return code;
}
