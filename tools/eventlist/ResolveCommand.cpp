#include "eventlist/ResolveCommand.h"

#include "eventlist/ExitCode.h"
#include "eventlist/FileContent.h"
#include "eventlist/MessageLog.h"
#include "eventlist/ResolvedTexts.h"

#include <QFile>

#include <cstdio>

namespace
{
constexpr qint64 largestInput = 256 * 1024 * 1024;

bool readInput(const QString& word, QByteArray& json, QString& error)
{
    if (word != QLatin1String("-"))
    {
        return FileContent::read(word, largestInput, json, error);
    }
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
    {
        error = input.errorString();
        return false;
    }
    json = input.read(largestInput);
    return true;
}
} // namespace

QString ResolveCommand::name() const
{
    return QStringLiteral("resolve");
}

QString ResolveCommand::summary() const
{
    return QStringLiteral("make texts of stored descriptions");
}

QString ResolveCommand::usage() const
{
    return QStringLiteral("[options] [FILE...]");
}

QString ResolveCommand::explanation() const
{
    return QStringLiteral(
        "Puts the arguments of a stored event into its description, as a reader of the event\n"
        "list does, without the language files of the module that wrote it. Reads the standard\n"
        "input without a FILE, or for '-'.\n\n"
        "The input is JSON: a metadata object (\"DescriptionScheme\", \"Arguments\"), or an "
        "object\n"
        "with a member \"MetaData\", such as a spool file, the additional data of a logEvent call\n"
        "or an event of 'eventlist list --json'; also an array of these, or one a line.\n");
}

QVector<Option> ResolveCommand::options() const
{
    return ResolvedTexts::options();
}

QStringList ResolveCommand::examples() const
{
    return {QStringLiteral("resolve --language de metadata.json"),
            QStringLiteral("list --json | eventlist resolve --language all")};
}

QString ResolveCommand::exitCodes() const
{
    return QStringLiteral("0 done, 1 something could not be resolved, 2 wrong command line");
}

int ResolveCommand::run(const Arguments& arguments)
{
    // What is wrong with the arguments of a description is told by the library, and belongs here.
    MessageLog::setVerbose(true);
    ResolvedTexts resolved(arguments);
    const QStringList words = arguments.words();
    for (const QString& word : words.isEmpty() ? QStringList(QStringLiteral("-")) : words)
    {
        const QString source = word == QLatin1String("-") ? QStringLiteral("standard input") : word;
        QByteArray json;
        QVector<StoredText> texts;
        QString error;
        if (!readInput(word, json, error) || !StoredText::readAll(json, texts, error))
        {
            resolved.fail(source, error);
            continue;
        }
        for (const StoredText& text : qAsConst(texts))
        {
            resolved.add(text, source);
        }
    }
    return resolved.print();
}
