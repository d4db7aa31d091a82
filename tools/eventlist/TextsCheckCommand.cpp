#include "eventlist/TextsCheckCommand.h"

#include "eventlist/ExitCode.h"
#include "eventlist/FileContent.h"
#include "eventlist/JsonText.h"
#include "eventlist/LanguageFile.h"
#include "eventlist/Output.h"
#include "eventlist/Progress.h"
#include "eventlist/SafeText.h"
#include "eventlist/SourceTexts.h"
#include "eventlist/TextCheck.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonObject>

namespace
{
constexpr qint64 largestSource = 16 * 1024 * 1024;

QStringList ruleNames()
{
    QStringList names;
    for (const auto& rule : TextCheck::rules())
    {
        names.append(rule.first);
    }
    return names;
}

// The sources of a folder, whatever a build has left in it.
void collect(const QString& folder, QStringList& files)
{
    const QDir directory(folder);
    if (directory.exists(QStringLiteral("CMakeCache.txt")))
    {
        return;
    }
    const QFileInfoList found =
        directory.entryInfoList(SourceTexts::filePatterns(), QDir::Files, QDir::Name);
    for (const QFileInfo& file : found)
    {
        files.append(file.filePath());
    }
    const QFileInfoList folders =
        directory.entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QFileInfo& below : folders)
    {
        collect(below.filePath(), files);
    }
}

QString lineOf(const TextCheck::Finding& finding, bool isColoured)
{
    const QString word = finding.isError ? QStringLiteral("error") : QStringLiteral("warning");
    const QString style = finding.isError ? QStringLiteral("1;31") : QStringLiteral("1;33");
    QString line = SafeText::escaped(finding.file);
    line += finding.line > 0 ? QStringLiteral(":%1: ").arg(finding.line) : QStringLiteral(": ");
    line += isColoured ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(style, word) : word;
    return line + QStringLiteral(": ") + SafeText::escaped(finding.text) + QStringLiteral(" [") +
           finding.rule + QStringLiteral("]\n");
}

QString sumOf(const TextCheck& check)
{
    const int errors = check.errorCount();
    QString text = QStringLiteral("%1 languages (%2), %3 urls")
                       .arg(QString::number(check.languages().size()),
                            SafeText::escaped(check.languages().join(QStringLiteral(", "))),
                            QString::number(check.urlCount()));
    text +=
        check.hasSources() ? QStringLiteral(", %1 of them used").arg(check.usedCount()) : QString();
    return text + QStringLiteral(": %1 errors, %2 warnings\n")
                      .arg(errors)
                      .arg(check.findings().size() - errors);
}

QString jsonOf(const TextCheck& check)
{
    QJsonArray findings;
    for (const TextCheck::Finding& finding : check.findings())
    {
        findings.append(
            QJsonObject{{QStringLiteral("file"), finding.file},
                        {QStringLiteral("line"), finding.line},
                        {QStringLiteral("severity"),
                         finding.isError ? QStringLiteral("error") : QStringLiteral("warning")},
                        {QStringLiteral("rule"), finding.rule},
                        {QStringLiteral("url"), finding.url},
                        {QStringLiteral("text"), finding.text}});
    }
    const int errors = check.errorCount();
    QJsonObject object{{QStringLiteral("languages"), QJsonArray::fromStringList(check.languages())},
                       {QStringLiteral("urls"), check.urlCount()},
                       {QStringLiteral("errors"), errors},
                       {QStringLiteral("warnings"), check.findings().size() - errors},
                       {QStringLiteral("findings"), findings}};
    if (check.hasSources())
    {
        object.insert(QStringLiteral("used"), check.usedCount());
    }
    return JsonText::of(object) + QLatin1Char('\n');
}
} // namespace

QString TextsCheckCommand::name() const
{
    return QStringLiteral("texts check");
}

QString TextsCheckCommand::summary() const
{
    return QStringLiteral("check the language files of a module, for translators and builds");
}

QString TextsCheckCommand::usage() const
{
    return QStringLiteral("[options] FILE|FOLDER...");
}

QString TextsCheckCommand::explanation() const
{
    QString text = QStringLiteral(
        "Compares the language files (*.ts) of a module with each other, with --source also with\n"
        "its sources, and with --compiled with the files that were made of them. A file is a\n"
        "language, its base name the language key. The bus is not needed.\n\n"
        "A source uses a url when it stands there as a whole string (C, C++, QML, JavaScript,\n"
        "JSON, Python) or as a whole word (shell and all others), outside of comments. A string\n"
        "that has the form of a url, and whose first word begins a url of the language files, is\n"
        "taken for one that should be defined. So a url that is put together while the program\n"
        "runs is seen as unused: name it with --ignore. And a url whose first word is misspelt\n"
        "is not seen at all, unless --collection names that word.\n\n"
        "Rules, for --allow:\n");
    for (const auto& rule : TextCheck::rules())
    {
        text +=
            QStringLiteral("  ") + rule.first.leftJustified(20) + rule.second + QLatin1Char('\n');
    }
    return text + QStringLiteral("unused, gone, plural and language are warnings, the others "
                                 "errors.\n");
}

QVector<Option> TextsCheckCommand::options() const
{
    return {
        {{QStringLiteral("s"), QStringLiteral("source")},
         QStringLiteral("PATH"),
         QStringLiteral("a source, or a folder with sources; may be repeated")},
        {{QStringLiteral("compiled")},
         QStringLiteral("FOLDER"),
         QStringLiteral("the compiled files (*.qm) have the same texts")},
        {{QStringLiteral("i"), QStringLiteral("ignore")},
         QStringLiteral("URL"),
         QStringLiteral("neither unused nor undefined; with * for anything; may be\nrepeated")},
        {{QStringLiteral("collection")},
         QStringLiteral("WORD"),
         QStringLiteral("one more first word of the module's urls; may be repeated")},
        {{QStringLiteral("a"), QStringLiteral("allow")},
         QStringLiteral("RULE"),
         QStringLiteral("do not report this; may be repeated, or joined by commas")},
        {{QStringLiteral("strict")}, QString(), QStringLiteral("warnings count as errors")},
        {{QStringLiteral("j"), QStringLiteral("json")},
         QString(),
         QStringLiteral("JSON, for programs: one object, with an array of findings")},
    };
}

QStringList TextsCheckCommand::examples() const
{
    return {QStringLiteral("texts check texts"),
            QStringLiteral("texts check texts --source src --strict"),
            QStringLiteral("texts check texts --source src --ignore 'PumpControl/Pump*'"),
            QStringLiteral("texts check lang_de.ts lang_en.ts --compiled build/texts --json")};
}

QString TextsCheckCommand::exitCodes() const
{
    return QStringLiteral("0 no errors, 1 errors were found, 2 wrong command line");
}

int TextsCheckCommand::readLanguageFiles(const Arguments& arguments, TextCheck& check) const
{
    QStringList files;
    for (const QString& word : arguments.words())
    {
        const QDir folder(word);
        if (word.endsWith(QLatin1String(".qm")))
        {
            return complain(
                QStringLiteral(
                    "'%1' is compiled: name its language file (*.ts), and its folder with "
                    "--compiled")
                    .arg(word));
        }
        if (!folder.exists())
        {
            files.append(word);
            continue;
        }
        const QFileInfoList found =
            folder.entryInfoList({QStringLiteral("*.ts")}, QDir::Files, QDir::Name);
        for (const QFileInfo& file : found)
        {
            files.append(file.filePath());
        }
        if (found.isEmpty())
        {
            return complain(QStringLiteral("there is no language file (*.ts) in '%1'").arg(word));
        }
    }
    if (files.isEmpty())
    {
        return complain(QStringLiteral("name the language files, or the folder that holds them"));
    }
    for (const QString& file : qAsConst(files))
    {
        check.addLanguageFile(LanguageFile(file));
    }
    return ExitCode::success;
}

int TextsCheckCommand::readSources(const Arguments& arguments, TextCheck& check) const
{
    QStringList files;
    for (const QString& path : arguments.values(QStringLiteral("source")))
    {
        if (!QFileInfo::exists(path))
        {
            return complain(QStringLiteral("there is no source '%1'").arg(path));
        }
        const int before = files.size();
        if (QFileInfo(path).isDir())
        {
            collect(path, files);
            if (files.size() == before)
            {
                return complain(QStringLiteral("there is no source in '%1'").arg(path));
            }
        }
        else
        {
            files.append(path);
        }
    }
    Progress progress(QStringLiteral("reading sources"));
    for (int i = 0; i < files.size(); ++i)
    {
        progress.tell(QStringLiteral("%1 of %2").arg(i).arg(files.size()));
        QByteArray content;
        QString error;
        if (FileContent::read(files.at(i), largestSource, content, error))
        {
            check.addSource(files.at(i), SourceTexts::of(files.at(i), QString::fromUtf8(content)));
        }
        else
        {
            check.addUnreadable(files.at(i), error);
        }
    }
    return ExitCode::success;
}

int TextsCheckCommand::run(const Arguments& arguments)
{
    const QStringList allowed = arguments.list(QStringLiteral("allow"));
    const QString compiled = arguments.value(QStringLiteral("compiled"));
    for (const QString& rule : allowed)
    {
        if (!ruleNames().contains(rule))
        {
            return complain(QStringLiteral("there is no rule '%1'").arg(rule));
        }
    }
    if (arguments.isSet(QStringLiteral("compiled")) && !QFileInfo(compiled).isDir())
    {
        return complain(QStringLiteral("there is no folder '%1'").arg(compiled));
    }
    TextCheck check;
    check.setAllowed(allowed);
    check.setIgnored(arguments.values(QStringLiteral("ignore")));
    check.addCollections(arguments.list(QStringLiteral("collection")));
    int code = readLanguageFiles(arguments, check);
    if (code != ExitCode::success || (code = readSources(arguments, check)) != ExitCode::success)
    {
        return code;
    }
    check.run(compiled);

    const bool isStrict = arguments.isSet(QStringLiteral("strict"));
    const bool isGood = isStrict ? check.findings().isEmpty() : check.errorCount() == 0;
    const ExitCode result = isGood ? ExitCode::success : ExitCode::failed;
    if (arguments.isSet(QStringLiteral("json")))
    {
        Output::write(jsonOf(check), result);
        return result;
    }
    QString text;
    for (const TextCheck::Finding& finding : check.findings())
    {
        text += lineOf(finding, Output::isColoured());
    }
    Output::write(text + sumOf(check), result);
    return result;
}
