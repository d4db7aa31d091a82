// Metadata as a producer makes it: it holds what went in, survives its way as JSON text, and can be resolved without a
// warning but for placeholders that no path can name.

#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "FuzzTarget.h"
#include "ReferenceResolution.h"

#include <QJsonDocument>

namespace fuzz_metadata_round_trip
{
using Functions = EventlistHandlerConvenienceFunctions;
using Argument = EventlistHandlerStructs::stDescriptionArgument;

const QStringList words{QStringLiteral("%1"),      QStringLiteral("%2"),
                        QStringLiteral("%10"),     QStringLiteral("%1%2"),
                        QStringLiteral("lang_en"), QStringLiteral("lang_de"),
                        QStringLiteral("a"),       QStringLiteral("aa"),
                        QStringLiteral("/"),       QString(),
                        QStringLiteral("ü €"),     QStringLiteral("value %1 of %2")};

// Qt's parser drops a U+FEFF at the beginning of a text, whoever wrote it.
QString text(fuzz::Input& input)
{
    return input.text().replace(QChar(QChar::ByteOrderMark), QChar(QChar::ReplacementCharacter));
}

QVariantMap textObject(fuzz::Input& input)
{
    QVariantMap texts;
    for (int i = input.below(4); i > 0; --i)
    {
        const QString language = text(input);
        texts.insert(language, text(input));
    }
    return texts;
}

QJsonObject argumentObject(const char* type, const QJsonValue& value)
{
    return {{QStringLiteral("type"), QLatin1String(type)}, {QStringLiteral("value"), value}};
}

FUZZ_TARGET(metadata_round_trip)
{
    fuzz::Input input(data, size, words);
    const QVariantMap texts = textObject(input);
    const QString description = text(input);
    QList<Argument> arguments;
    QList<Functions::stDescriptionUrlArgument> urlArguments;
    QJsonObject expectedArguments;
    for (int i = input.below(5); i > 0; --i)
    {
        const QString placeholder = text(input);
        arguments.append({placeholder, text(input)});
        expectedArguments.insert(placeholder, argumentObject("string", arguments.last().argument));
    }
    for (int i = input.below(5); i > 0; --i)
    {
        const QString placeholder = text(input);
        urlArguments.append({placeholder, textObject(input)});
        expectedArguments.insert(
            placeholder,
            argumentObject("text", QJsonObject::fromVariantMap(urlArguments.last().textObject)));
    }
    const QJsonObject scheme = texts.isEmpty()
                                   ? QJsonObject{{QStringLiteral("lang_en"), description}}
                                   : QJsonObject::fromVariantMap(texts);
    fuzz::Log::take();

    QJsonObject metaData{{QStringLiteral("left alone"), 7},
                         {QStringLiteral("Arguments"), QJsonObject{{description, 1}}}};
    Functions::generateMetaData(metaData, texts, arguments, urlArguments, description);

    const QStringList warnings = fuzz::Log::take();
    fuzz::require(metaData == QJsonObject{{QStringLiteral("left alone"), 7},
                                          {QStringLiteral("Arguments"), expectedArguments},
                                          {QStringLiteral("DescriptionScheme"), scheme}},
                  "the metadata hold what went in");
    const QStringList expected{QStringLiteral("No description data: ") + fuzz::quoted(description)};
    fuzz::require(warnings == (texts.isEmpty() ? expected : QStringList()),
                  "a warning tells of a missing description, and of nothing else",
                  warnings.join(QLatin1Char('\n')));

    const QByteArray json = QJsonDocument(metaData).toJson(QJsonDocument::Compact);
    const QJsonObject read = QJsonDocument::fromJson(json).object();
    fuzz::require(read == metaData, "the metadata survive their way as text",
                  QString::fromUtf8(json));

    QVariantMap resolved;
    Functions::generateDescriptionTextlist(resolved, read);
    const fuzz::ReferenceResolution reference(metaData);
    const QStringList complaints = fuzz::Log::take();
    if (reference.isSmall)
    {
        fuzz::require(resolved == reference.texts, "the texts are those of plain replacement");
        fuzz::require(complaints == reference.warnings, "the warnings are the expected ones");
        fuzz::Log::requireOnly(complaints, {QStringLiteral("No key \"type\" from placeholder ")});
    }
    return 0;
}
} // namespace fuzz_metadata_round_trip
