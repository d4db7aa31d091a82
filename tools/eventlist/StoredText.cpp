#include "eventlist/StoredText.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"
#include "Platform/TranslateableTextHelper.h"

#include <QJsonArray>
#include <QJsonDocument>

using Names = EventlistHandlerDefinitions;

namespace
{
// "MetaData" is an object in a spool file and JSON text on the bus.
QJsonObject objectOf(const QJsonValue& value)
{
    return value.isString() ? QJsonDocument::fromJson(value.toString().toUtf8()).object()
                            : value.toObject();
}

bool append(const QJsonArray& elements, QVector<StoredText>& texts, QString& error)
{
    for (const QJsonValue& element : elements)
    {
        if (!element.isObject())
        {
            error = QStringLiteral("an element of the array is no object");
            return false;
        }
        texts.append(StoredText::ofObject(element.toObject()));
    }
    return true;
}
} // namespace

StoredText StoredText::ofObject(const QJsonObject& object)
{
    const QJsonValue metaData = object.value(Names::getListColumnNameMetaData());
    return StoredText(metaData.isUndefined() ? object : objectOf(metaData),
                      object.value(Names::getListColumnNameEventId()).toString());
}

bool StoredText::readAll(const QByteArray& json, QVector<StoredText>& texts, QString& error)
{
    QJsonParseError problem;
    const QJsonDocument document = QJsonDocument::fromJson(json, &problem);
    if (problem.error == QJsonParseError::NoError)
    {
        return append(document.isArray() ? document.array() : QJsonArray{document.object()}, texts,
                      error);
    }
    const QList<QByteArray> lines = json.split('\n');
    for (int i = 0; i < lines.size(); ++i)
    {
        if (lines.at(i).trimmed().isEmpty())
        {
            continue;
        }
        const QJsonDocument line = QJsonDocument::fromJson(lines.at(i));
        if (!line.isObject())
        {
            // A text that is meant as a whole has its first line alone rarely right.
            error = i > 0 && !texts.isEmpty()
                        ? QStringLiteral("line %1 is no JSON object").arg(i + 1)
                        : QStringLiteral("no JSON: %1 at byte %2")
                              .arg(problem.errorString(), QString::number(problem.offset));
            return false;
        }
        texts.append(ofObject(line.object()));
    }
    if (texts.isEmpty())
    {
        error = QStringLiteral("it is empty");
    }
    return !texts.isEmpty();
}

bool StoredText::isEmergency() const
{
    return !m_metaData.contains(Names::getKeyMetaDataDescriptionScheme()) &&
           m_metaData.value(Names::getKeyMetaDataArguments()).isArray();
}

bool StoredText::resolveEmergency(const QString& textFolder, QVariantMap& texts,
                                  QString& error) const
{
    const QVariantMap sentences =
        ReadAllTextsHelper::getAllTextsAsVariantMap(TextManager(textFolder), m_eventId);
    if (sentences.isEmpty())
    {
        error = QStringLiteral("no language file in '%1' has a text '%2'; name another folder with "
                               "--texts")
                    .arg(textFolder, m_eventId);
        return false;
    }
    QList<EventlistHandlerStructs::stDescriptionArgument> arguments;
    const QJsonArray elements = m_metaData.value(Names::getKeyMetaDataArguments()).toArray();
    for (const QJsonValue& element : elements)
    {
        const QVariantMap pairs = element.toObject().toVariantMap();
        for (auto pair = pairs.cbegin(); pair != pairs.cend(); ++pair)
        {
            arguments.append({pair.key(), pair.value().toString()});
        }
    }
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(
        metaData, sentences, arguments,
        QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>(), m_eventId);
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(texts, metaData);
    return true;
}

bool StoredText::resolve(const QString& textFolder, QVariantMap& texts, QString& error) const
{
    texts.clear();
    if (isEmergency())
    {
        return resolveEmergency(textFolder, texts, error);
    }
    if (!m_metaData.value(Names::getKeyMetaDataDescriptionScheme()).isObject())
    {
        error = QStringLiteral("there is no stored description (\"%1\")")
                    .arg(Names::getKeyMetaDataDescriptionScheme());
        return false;
    }
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(texts, m_metaData);
    return true;
}

QString StoredText::inLanguage(const QVariantMap& texts, const QString& language)
{
    TranslateableTextHelper helper{QString()};
    helper.setTranslateableTextObject(texts);
    const QString text = helper.getText(language);
    return text.isEmpty() && !texts.isEmpty() ? texts.first().toString() : text;
}
