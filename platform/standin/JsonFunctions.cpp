#include "Platform/JsonFunctions.h"

#include "DurableFile.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringView>

namespace
{
// Undefined when there is nothing at this path.
QJsonValue findValue(const QString& path, const QJsonObject& object)
{
    QJsonObject current = object;
    int wordBegin = 0;
    while (true)
    {
        const int slash = path.indexOf(QLatin1Char('/'), wordBegin);
        const int wordEnd = slash < 0 ? path.size() : slash;
        const QStringView word = QStringView(path).mid(wordBegin, wordEnd - wordBegin);
        // An empty placeholder would be replaced between all characters of a text.
        if (word.isEmpty())
        {
            return QJsonValue(QJsonValue::Undefined);
        }
        const QJsonValue value = current.value(word);
        if (slash < 0 || !value.isObject())
        {
            return slash < 0 ? value : QJsonValue(QJsonValue::Undefined);
        }
        current = value.toObject();
        wordBegin = slash + 1;
    }
}
} // namespace

bool readJsonValue(const QString& key, const QJsonObject& object, QJsonValue& value)
{
    const QJsonValue found = findValue(key, object);
    if (found.isUndefined())
    {
        return false;
    }
    value = found;
    return true;
}

bool readStringValueFromJson(const QString& key, const QJsonObject& object, QString& value)
{
    const QJsonValue found = findValue(key, object);
    if (!found.isString())
    {
        return false;
    }
    value = found.toString();
    return true;
}

bool readJsonObjectFromJson(const QString& key, const QJsonObject& object, QJsonObject& value)
{
    const QJsonValue found = findValue(key, object);
    if (!found.isObject())
    {
        return false;
    }
    value = found.toObject();
    return true;
}

bool writeJsonObjectToFile(const QJsonObject& object, const QString& path)
{
    return DurableFile::writeBytesToFile(QJsonDocument(object).toJson(QJsonDocument::Compact),
                                         path);
}
