// Metadata from anywhere: resolving it gives what plain replacement gives, with the same warnings, and never more than
// its limit.

#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "FuzzTarget.h"
#include "ReferenceResolution.h"

#include <QJsonDocument>

namespace fuzz_metadata_resolution
{
const QStringList words{QStringLiteral("DescriptionScheme"),
                        QStringLiteral("Arguments"),
                        QStringLiteral("type"),
                        QStringLiteral("value"),
                        QStringLiteral("string"),
                        QStringLiteral("text"),
                        QStringLiteral("lang_en"),
                        QStringLiteral("lang_de"),
                        QStringLiteral("%1"),
                        QStringLiteral("%2"),
                        QStringLiteral("%10"),
                        QStringLiteral("%1%1%2"),
                        QStringLiteral("%1/type"),
                        QStringLiteral("aa"),
                        QStringLiteral("a"),
                        QString()};

QJsonObject argumentObject(fuzz::Input& input)
{
    QJsonObject object = input.below(4) > 0 ? QJsonObject() : input.object(1);
    object.insert(QStringLiteral("type"), input.text());
    object.insert(QStringLiteral("value"), input.json(1));
    return object;
}

// Either a JSON text, or bytes that make an object of the right shape, more or less.
QJsonObject metaDataFrom(const uint8_t* data, size_t size)
{
    if (size > 0 && data[0] == '{')
    {
        return QJsonDocument::fromJson(QByteArray(reinterpret_cast<const char*>(data), int(size)))
            .object();
    }
    fuzz::Input input(data, size, words);
    QJsonObject metaData = input.below(4) > 0 ? QJsonObject() : input.object(2);
    QJsonObject arguments;
    for (int i = input.below(6); i > 0; --i)
    {
        const QString placeholder = input.text();
        arguments.insert(placeholder, argumentObject(input));
    }
    metaData.insert(QStringLiteral("Arguments"), arguments);
    metaData.insert(QStringLiteral("DescriptionScheme"), input.object(0));
    return metaData;
}

FUZZ_TARGET(metadata_resolution)
{
    const QJsonObject metaData = metaDataFrom(data, size);
    const QVariantMap before{{QStringLiteral("before"), 7}};
    fuzz::Log::take();

    QVariantMap texts = before;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(texts, metaData);

    const QStringList warnings = fuzz::Log::take();
    const fuzz::ReferenceResolution expected(metaData);
    if (expected.isSmall)
    {
        fuzz::require(texts == (expected.isUntouched ? before : expected.texts),
                      "the texts are those of plain replacement");
        fuzz::require(warnings == expected.warnings, "the warnings are the expected ones",
                      warnings.join(QLatin1Char('\n')));
    }
    qint64 units = 0;
    for (const QVariant& text : qAsConst(texts))
    {
        units += text.toString().size();
    }
    constexpr qint64 limit = 16 * 1024 * 1024;
    fuzz::require(units <= limit, "the texts of an event stay below the limit");
    return 0;
}
} // namespace fuzz_metadata_resolution
