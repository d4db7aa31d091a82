#pragma once

#include "FuzzTarget.h"

#include <QJsonObject>
#include <QStringList>
#include <QVariantMap>

namespace fuzz
{

/// Resolves a metadata object as its format is written down, with nothing but QString::replace. Only
/// for small texts: it has no limits.
class ReferenceResolution
{
public:
    explicit ReferenceResolution(const QJsonObject& metaData)
    {
        if (!metaData.contains(QStringLiteral("DescriptionScheme")))
        {
            warnings.append(QStringLiteral("Key \"DescriptionScheme\" not fount in metaData"));
            isUntouched = true;
            return;
        }
        texts = metaData.value(QStringLiteral("DescriptionScheme")).toVariant().toMap();
        if (texts.isEmpty())
        {
            warnings.append(
                QStringLiteral("DescriptionsScheme without data. The QVariantMap is empty"));
            return;
        }
        if (!metaData.value(QStringLiteral("Arguments")).isObject())
        {
            warnings.append(QStringLiteral("Key \"Arguments\" not fount in metaData"));
            return;
        }
        const QJsonObject arguments = metaData.value(QStringLiteral("Arguments")).toObject();
        // Looked up by their keys, as a path does: Qt's parser makes some that it does not find
        // again, with U+FEFF at their front and with U+0000 in them.
        const QStringList placeholders = arguments.keys();
        for (auto it = placeholders.begin(); it != placeholders.end() && isSmall; ++it)
        {
            apply(*it, arguments.value(*it));
        }
    }

    QVariantMap texts;
    QStringList warnings;
    bool isUntouched = false;
    /// False when the texts became too large for a comparison.
    bool isSmall = true;

private:
    void apply(const QString& placeholder, const QJsonValue& argument)
    {
        // A placeholder is a step of a path, in which these cannot stand.
        const bool isStep = !placeholder.isEmpty() && !placeholder.contains(QLatin1Char('/'));
        const QJsonObject object = isStep ? argument.toObject() : QJsonObject();
        const QString tail = QStringLiteral(" from placeholder ") + quoted(placeholder);
        if (!object.value(QStringLiteral("type")).isString())
        {
            warnings.append(QStringLiteral("No key \"type\"") + tail);
            return;
        }
        const QString type = object.value(QStringLiteral("type")).toString();
        const bool isText = type == QLatin1String("text");
        if (!isText && type != QLatin1String("string"))
        {
            warnings.append(QStringLiteral("Unknown type ") + quoted(type) + tail);
            return;
        }
        const QJsonValue value = object.value(QStringLiteral("value"));
        if (isText ? value.isUndefined() : !value.isString())
        {
            warnings.append(QStringLiteral("Unknown key value \"value\"") + tail);
            return;
        }
        replace(placeholder, isText, value);
    }

    void replace(const QString& placeholder, bool isText, const QJsonValue& value)
    {
        constexpr int comparedUnits = 200000;
        const QVariantMap languages = value.toVariant().toMap();
        qint64 units = 0;
        for (auto it = texts.begin(); it != texts.end(); ++it)
        {
            const QString missing = languages.value(QStringLiteral("lang_en")).toString();
            const QString argument = !isText ? value.toString()
                                     : languages.contains(it.key())
                                         ? languages.value(it.key()).toString()
                                         : missing;
            QString text = it.value().toString();
            units += text.size() + qint64(text.count(placeholder)) * argument.size();
            isSmall = isSmall && units < comparedUnits;
            if (!isSmall)
            {
                return;
            }
            it.value() = text.replace(placeholder, argument);
        }
    }
};

} // namespace fuzz
