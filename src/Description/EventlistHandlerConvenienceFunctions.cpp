#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/detail/PlaceholderReplacement.h"

#include "Platform/JsonFunctions.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDebug>
#include <QJsonObject>
#include <QMap>
#include <QStringList>
#include <QVector>

namespace
{

const QString keyArgumentType(QLatin1String("type"));
const QString keyArgumentValue(QLatin1String("value"));
const QString argumentTypeString(QLatin1String("string"));
const QString argumentTypeText(QLatin1String("text"));

// All texts of one event together. Arguments that contain placeholders multiply: without a bound a
// few hundred bytes grow into gigabytes.
constexpr qint64 maximumTextUnits = 16 * 1024 * 1024;

// Each placeholder is looked for in all texts. Without a bound, a hundred thousand placeholders in
// texts just below the limit above take minutes, and so do twenty thousand in as many empty ones;
// 10,000 in texts of 25,000 units stay below this one.
constexpr qint64 maximumSearchedUnits = 256 * 1024 * 1024;

QJsonObject argumentObject(const QString& type, const QJsonValue& value)
{
    QJsonObject object;
    object.insert(keyArgumentValue, value);
    object.insert(keyArgumentType, type);
    return object;
}

// Into a JSON object in sorted order, together with what it holds already: each insertion in the
// middle moves all that stands behind it.
void insertSorted(QJsonObject& argumentsObject, const QMap<QString, QJsonObject>& arguments)
{
    QJsonObject merged;
    auto argument = arguments.cbegin();
    const QJsonObject present = argumentsObject;
    for (auto member = present.constBegin(); member != present.constEnd(); ++member)
    {
        const QString key = member.key();
        for (; argument != arguments.cend() && argument.key() < key; ++argument)
        {
            merged.insert(argument.key(), argument.value());
        }
        merged.insert(key, member.value());
    }
    for (; argument != arguments.cend(); ++argument)
    {
        merged.insert(argument.key(), argument.value());
    }
    argumentsObject = merged;
}

QString pathOf(const QString& placeholder, const QString& member)
{
    return placeholder + QLatin1Char('/') + member;
}

QStringList textsOf(const QVariantMap& textList)
{
    QStringList texts;
    texts.reserve(textList.size());
    for (const QVariant& text : textList)
    {
        texts.append(text.toString());
    }
    return texts;
}

// The arguments are those of the languages of the list, in its order. False leaves the texts alone.
bool replaceInAll(QVariantMap& textList, const QString& placeholder, const QStringList& arguments)
{
    const PlaceholderReplacement replacement(placeholder);
    if (!replacement.staysBelow(maximumTextUnits, textsOf(textList), arguments))
    {
        return false;
    }
    auto argument = arguments.cbegin();
    for (QVariant& text : textList)
    {
        text = replacement.replaceIn(text.toString(), *argument);
        ++argument;
    }
    return true;
}

} // namespace

EventlistHandlerConvenienceFunctions::EventlistHandlerConvenienceFunctions() = default;

EventlistHandlerConvenienceFunctions::~EventlistHandlerConvenienceFunctions() = default;

void EventlistHandlerConvenienceFunctions::generateMetaData(
    QJsonObject& metaData, const QVariantMap& textObject,
    const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
    const QList<stDescriptionUrlArgument>& urlArguments, const QString& description)
{
    QJsonObject scheme = QJsonObject::fromVariantMap(textObject);
    if (textObject.isEmpty())
    {
        qWarning() << "No description data:" << description;
        scheme.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(), description);
    }
    metaData.insert(EventlistHandlerDefinitions::getKeyMetaDataDescriptionScheme(), scheme);

    QJsonObject argumentsObject;
    generateJsonObjectDescriptionArguments(argumentsObject, arguments);
    // The url arguments go in second: an equal placeholder ends as a text argument.
    generateJsonObjectDescriptionUrlArguments(argumentsObject, urlArguments);
    metaData.insert(EventlistHandlerDefinitions::getKeyMetaDataArguments(), argumentsObject);
}

void EventlistHandlerConvenienceFunctions::generateMetaData(
    QJsonObject& metaData, const QVariantMap& textObject,
    const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
    const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
    const TextManager& textManager, const QString& description)
{
    QList<stDescriptionUrlArgument> resolvedUrlArguments;
    for (const auto& urlArgument : urlArguments)
    {
        resolvedUrlArguments.append(
            {urlArgument.placeholder,
             ReadAllTextsHelper::getAllTextsAsVariantMap(textManager, urlArgument.argument)});
    }
    generateMetaData(metaData, textObject, arguments, resolvedUrlArguments, description);
}

void EventlistHandlerConvenienceFunctions::generateJsonObjectDescriptionArguments(
    QJsonObject& argumentsObject,
    const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments)
{
    QMap<QString, QJsonObject> objects;
    for (const auto& argument : arguments)
    {
        objects.insert(argument.placeholder, argumentObject(argumentTypeString, argument.argument));
    }
    insertSorted(argumentsObject, objects);
}

void EventlistHandlerConvenienceFunctions::generateJsonObjectDescriptionUrlArguments(
    QJsonObject& argumentsObject, const QList<stDescriptionUrlArgument>& urlArguments)
{
    QMap<QString, QJsonObject> objects;
    for (const auto& argument : urlArguments)
    {
        objects.insert(
            argument.placeholder,
            argumentObject(argumentTypeText, QJsonObject::fromVariantMap(argument.textObject)));
    }
    insertSorted(argumentsObject, objects);
}

void EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(QVariantMap& textList,
                                                                       const QJsonObject& metaData)
{
    const QString& keyScheme = EventlistHandlerDefinitions::getKeyMetaDataDescriptionScheme();
    QJsonValue scheme;
    if (!readJsonValue(keyScheme, metaData, scheme))
    {
        qWarning() << "Key" << keyScheme << "not fount in metaData";
        return;
    }
    textList = scheme.toVariant().toMap();
    if (textList.isEmpty())
    {
        qWarning() << "DescriptionsScheme without data. The QVariantMap is empty";
        return;
    }
    const QString& keyArguments = EventlistHandlerDefinitions::getKeyMetaDataArguments();
    QJsonObject arguments;
    if (readJsonObjectFromJson(keyArguments, metaData, arguments))
    {
        replacePlaceholder(textList, arguments);
    }
    else
    {
        qWarning() << "Key" << keyArguments << "not fount in metaData";
    }
}

void EventlistHandlerConvenienceFunctions::replacePlaceholder(QVariantMap& textList,
                                                              const QJsonObject& arguments)
{
    const QStringList placeholders = arguments.keys();
    qint64 searchedUnits = 0;
    for (const QString& placeholder : placeholders)
    {
        searchedUnits += PlaceholderReplacement::searchedUnits(textsOf(textList));
        if (searchedUnits > maximumSearchedUnits)
        {
            qWarning() << "Too many placeholders for texts of this size. Not replaced from"
                       << placeholder << "on";
            return;
        }
        QString type;
        if (!readStringValueFromJson(pathOf(placeholder, keyArgumentType), arguments, type))
        {
            qWarning() << "No key" << keyArgumentType << "from placeholder" << placeholder;
            continue;
        }
        const bool isText = type == argumentTypeText;
        if (!isText && type != argumentTypeString)
        {
            qWarning() << "Unknown type" << type << "from placeholder" << placeholder;
            continue;
        }
        const QString valuePath = pathOf(placeholder, keyArgumentValue);
        QJsonValue texts;
        QString text;
        if (isText ? !readJsonValue(valuePath, arguments, texts)
                   : !readStringValueFromJson(valuePath, arguments, text))
        {
            qWarning() << "Unknown key value" << keyArgumentValue << "from placeholder"
                       << placeholder;
            continue;
        }
        if (isText)
        {
            replacePlaceholderWithArgumentText(textList, placeholder, texts.toVariant().toMap());
        }
        else
        {
            replacePlaceholderWithArgumentString(textList, placeholder, text);
        }
    }
}

void EventlistHandlerConvenienceFunctions::replacePlaceholderWithArgumentString(
    QVariantMap& textList, const QString& placeholder, const QString& argument)
{
    const QStringList arguments = QVector<QString>(textList.size(), argument).toList();
    if (!replaceInAll(textList, placeholder, arguments))
    {
        qWarning() << "Texts would grow too large. Placeholder not replaced:" << placeholder;
    }
}

void EventlistHandlerConvenienceFunctions::replacePlaceholderWithArgumentText(
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the interface takes the map by value.
    QVariantMap& textList, const QString& placeholder, QVariantMap argumentTexts)
{
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(argumentTexts);
    QStringList arguments;
    arguments.reserve(textList.size());
    for (auto text = textList.cbegin(); text != textList.cend(); ++text)
    {
        arguments.append(helper.getText(text.key()));
    }
    if (!replaceInAll(textList, placeholder, arguments))
    {
        qWarning() << "Texts would grow too large. Placeholder not replaced:" << placeholder;
    }
}
