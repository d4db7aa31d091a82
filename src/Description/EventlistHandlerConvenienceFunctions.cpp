#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/JsonFunctions.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDebug>
#include <QJsonObject>
#include <QMap>
#include <QStringList>

#include <cstddef>
#include <vector>

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

// What a text costs beside its units.
constexpr qint64 unitsOfEachText = 128;

qint64 searchedUnitsOf(const QVariantMap& textList)
{
    qint64 units = 0;
    for (const QVariant& text : textList)
    {
        units += text.toString().size() + unitsOfEachText;
    }
    return units;
}

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

// A placeholder that is looked for as QString::replace looks: the next place begins behind the one
// before. In linear time: QStringMatcher reads a text as often as the placeholder is long when the
// two nearly match everywhere, and both may come from anybody.
class Placeholder
{
public:
    explicit Placeholder(const QString& text) : m_text(text), m_borders(std::size_t(text.size()))
    {
        for (int i = 1, border = 0; i < m_text.size(); ++i)
        {
            border = extended(border, m_text.at(i));
            m_borders[std::size_t(i)] = border;
        }
    }

    int size() const { return m_text.size(); }

    // -1 when there is none from there on.
    int placeIn(const QString& text, int from) const
    {
        if (m_text.isEmpty())
        {
            return from <= text.size() ? from : -1;
        }
        const QChar* characters = text.constData();
        int matched = 0;
        for (int i = from; i < text.size(); ++i)
        {
            matched = extended(matched, characters[i]);
            if (matched == m_text.size())
            {
                return i + 1 - matched;
            }
        }
        return -1;
    }

    int behind(int place) const { return place + qMax(1, m_text.size()); }

private:
    // How much of the placeholder a text ends with, after one more character; before it, it was
    // less than all of it.
    int extended(int matched, QChar character) const
    {
        const QChar* characters = m_text.constData();
        while (matched > 0 && characters[matched] != character)
        {
            matched = m_borders[std::size_t(matched) - 1];
        }
        return characters[matched] == character ? matched + 1 : 0;
    }

    const QString m_text;
    // For each beginning of the text: how much of it is also its end, but not all of it.
    std::vector<int> m_borders;
};

qint64 sizeAfterReplacement(const QString& text, const Placeholder& placeholder,
                            const QString& argument)
{
    qint64 count = 0;
    for (int place = placeholder.placeIn(text, 0); place >= 0;
         place = placeholder.placeIn(text, placeholder.behind(place)))
    {
        ++count;
    }
    return text.size() + count * (qint64(argument.size()) - placeholder.size());
}

// What QString::replace gives, an empty placeholder included, but in one pass: that one moves the
// rest of the text again and again when it grows at many places.
QString replaceAll(const QString& text, const Placeholder& placeholder, const QString& argument)
{
    int place = placeholder.placeIn(text, 0);
    if (place < 0)
    {
        return text;
    }
    QString result;
    result.reserve(int(sizeAfterReplacement(text, placeholder, argument)));
    int copied = 0;
    for (; place >= 0; place = placeholder.placeIn(text, placeholder.behind(place)))
    {
        result.append(text.constData() + copied, place - copied);
        result.append(argument);
        copied = place + placeholder.size();
    }
    result.append(text.constData() + copied, text.size() - copied);
    return result;
}

// True when the texts may be replaced. The exact count is made only where the limit is in reach.
bool staysBelowLimit(const QVariantMap& textList, const Placeholder& placeholder,
                     const QStringList& arguments)
{
    qint64 before = 0;
    qint64 mostAfter = 0;
    auto argument = arguments.cbegin();
    for (const QVariant& text : textList)
    {
        const qint64 size = text.toString().size();
        before += size;
        mostAfter += size + (size / qMax(1, placeholder.size()) + 1) * argument->size();
        ++argument;
    }
    if (mostAfter <= maximumTextUnits)
    {
        return true;
    }
    qint64 after = 0;
    argument = arguments.cbegin();
    for (const QVariant& text : textList)
    {
        after += sizeAfterReplacement(text.toString(), placeholder, *argument);
        ++argument;
    }
    return after <= maximumTextUnits || after <= before;
}

// The arguments are those of the languages of the list, in its order. False leaves the texts alone.
bool replaceInAll(QVariantMap& textList, const QString& placeholderText,
                  const QStringList& arguments)
{
    const Placeholder placeholder(placeholderText);
    if (!staysBelowLimit(textList, placeholder, arguments))
    {
        return false;
    }
    auto argument = arguments.cbegin();
    for (QVariant& text : textList)
    {
        text = replaceAll(text.toString(), placeholder, *argument);
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
    if (!readJsonObjectFromJson(keyArguments, metaData, arguments))
    {
        qWarning() << "Key" << keyArguments << "not fount in metaData";
        return;
    }
    replacePlaceholder(textList, arguments);
}

void EventlistHandlerConvenienceFunctions::replacePlaceholder(QVariantMap& textList,
                                                              const QJsonObject& arguments)
{
    const QStringList placeholders = arguments.keys();
    qint64 searchedUnits = 0;
    for (const QString& placeholder : placeholders)
    {
        searchedUnits += searchedUnitsOf(textList);
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
    QStringList arguments;
    arguments.reserve(textList.size());
    for (int i = 0; i < textList.size(); ++i)
    {
        arguments.append(argument);
    }
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
