#include "core/Descriptions.h"

#include "core/Names.h"

#include "JsonLoader.h"

#include "Platform/LanguageDefinitions.h"
#include "Platform/TranslateableTextHelper.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace eventlistd
{

namespace
{
QString compactText(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

// To look for one placeholder in a sentence may take as long as reading it once for each character
// of the placeholder. Beyond this sum the placeholders stay.
constexpr qint64 maximumSearchedUnits = 64 * 1024 * 1024;
// What a search costs beside that.
constexpr qint64 unitsOfEachSearch = 64;

// A placeholder that would blow the sentence up stays in it: arguments come from anybody.
void replaceWithin(QString& sentence, const QString& placeholder, const QString& argument)
{
    if (placeholder.isEmpty())
    {
        return;
    }
    const qint64 growth =
        qint64(sentence.count(placeholder)) * (qint64(argument.size()) - placeholder.size());
    if (sentence.size() + growth <= maximumEventSize)
    {
        sentence = sentence.split(placeholder).join(argument);
    }
}
} // namespace

QString inLanguage(const QString& description, const QString& language)
{
    if (language.isEmpty() || !description.startsWith(QLatin1Char('{')))
    {
        return description;
    }
    const auto loaded = JsonLoader::fromBytes(description.toUtf8(), 4 * maximumEventSize);
    if (!loaded.isLoaded() || loaded.object.isEmpty())
    {
        return description;
    }
    const QVariantMap textObject = loaded.object.toVariantMap();
    TranslateableTextHelper helper{QString()};
    helper.setTranslateableTextObject(textObject);
    const QString text = helper.getText(language);
    return text.isEmpty() ? textObject.first().toString() : text;
}

bool isEmergencyForm(const QJsonObject& metaData)
{
    return !metaData.contains(names::descriptionScheme()) &&
           metaData.value(names::arguments()).isArray();
}

void resolveEmergency(Event& event, const QVariantMap& texts, const QJsonObject& metaData)
{
    QMap<QString, QString> arguments;
    const QJsonArray elements = metaData.value(names::arguments()).toArray();
    for (const QJsonValue& element : elements)
    {
        const QJsonObject object = element.toObject();
        for (auto it = object.begin(); it != object.end(); ++it)
        {
            arguments.insert(it.key(), it.value().toVariant().toString());
        }
    }
    QVariantMap scheme = texts;
    if (scheme.isEmpty())
    {
        scheme.insert(
            LanguageDefinitions::getSecondFallbackLanguageFilename(),
            QStringList(QStringList(event.eventId) + arguments.keys()).join(QLatin1Char(' ')));
    }
    describe(event, scheme, arguments);
}

void describe(Event& event, const QVariantMap& scheme, const QMap<QString, QString>& arguments)
{
    QJsonObject argumentObjects;
    QVariantMap sentences = scheme;
    qint64 searchedUnits = 0;
    for (auto it = arguments.begin(); it != arguments.end(); ++it)
    {
        argumentObjects.insert(it.key(),
                               QJsonObject{{names::argumentType(), names::argumentTypeString()},
                                           {names::argumentValue(), it.value()}});
        for (QVariant& sentence : sentences)
        {
            QString text = sentence.toString();
            searchedUnits += (text.size() + unitsOfEachSearch) * qint64(it.key().size());
            if (searchedUnits <= maximumSearchedUnits)
            {
                replaceWithin(text, it.key(), it.value());
            }
            sentence = text;
        }
    }
    event.metaData =
        compactText({{names::arguments(), argumentObjects},
                     {names::descriptionScheme(), QJsonObject::fromVariantMap(scheme)}});
    event.description = compactText(QJsonObject::fromVariantMap(sentences));
}

} // namespace eventlistd
