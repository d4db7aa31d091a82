#include "Description/EventTextWriter.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/detail/JsonText.h"
#include "Description/detail/PlaceholderReplacement.h"

#include "Platform/TranslateableTextHelper.h"

#include <algorithm>
#include <iterator>
#include <numeric>

using Definitions = EventlistHandlerDefinitions;

namespace
{

// Far below the bounds of the exported steps, which alone know what happens there; and so small that
// what was done here in vain does not count.
constexpr qint64 ordinaryTextUnits = 1024 * 1024;
constexpr qint64 ordinarySearchedUnits = 16 * ordinaryTextUnits;

// Room for what stands beside the texts in each language: keys, quotes, short arguments.
constexpr int unitsOfLanguage = 64;

// False when a value is no string, or a key is there twice.
bool readTexts(const QVariantMap& textObject, QStringList& texts)
{
    texts.reserve(textObject.size());
    const QString* keyBefore = nullptr;
    for (auto text = textObject.cbegin(); text != textObject.cend(); ++text)
    {
        if (text->userType() != QMetaType::QString ||
            (keyBefore != nullptr && *keyBefore == text.key()))
        {
            return false;
        }
        keyBefore = &text.key();
        texts.append(text->toString());
    }
    return true;
}

qint64 unitsOf(const QStringList& texts)
{
    return std::accumulate(texts.cbegin(), texts.cend(), qint64(0),
                           [](qint64 units, const QString& text) { return units + text.size(); });
}

int expectedUnits(const QStringList& texts)
{
    return int(unitsOf(texts)) + (texts.size() + 1) * unitsOfLanguage;
}

void appendTextObject(JsonText& json, const QVariantMap& textObject, const QStringList& texts)
{
    json.beginObject();
    auto text = texts.cbegin();
    for (auto language = textObject.cbegin(); language != textObject.cend(); ++language)
    {
        json.appendKey(language.key());
        json.appendString(*text);
        ++text;
    }
    json.endObject();
}

QString textObjectJson(const QVariantMap& textObject, const QStringList& texts)
{
    JsonText json(expectedUnits(texts));
    appendTextObject(json, textObject, texts);
    return json.text();
}

// The form in which a producer's description is written belongs to the platform, and another one
// may be linked than that which comes with this library.
bool writesPlatformTheSame()
{
    const QString oddText = QStringLiteral("\"\\/\b\f\n\r\t\u0001\u007f\u00e4\u2028") +
                            QChar(0xD83D) + QChar(0xDE00) + QChar(0xDC00);
    const QVariantMap sample{{QStringLiteral("a"), oddText}, {oddText, QString()}};
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(sample);
    const QStringList textsInOrderOfKeys{QString(), oddText};
    return helper.getTranslateableTextObjectAsJsonString() ==
           textObjectJson(sample, textsInOrderOfKeys);
}

} // namespace

EventTextWriter::EventTextWriter(
    const QVariantMap& textObject,
    const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
    const QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>& urlArguments)
    : m_textObject(textObject)
{
    static const bool isPlatformTheSame = writesPlatformTheSame();
    if (!isPlatformTheSame || textObject.isEmpty() || !readTexts(textObject, m_scheme))
    {
        return;
    }
    for (const auto& argument : arguments)
    {
        if (!insertArgument(argument.placeholder, {&argument.argument, nullptr, {}}))
        {
            return;
        }
    }
    // The url arguments go in second: an equal placeholder ends as a text argument.
    for (const auto& urlArgument : urlArguments)
    {
        Argument argument{nullptr, &urlArgument.textObject, {}};
        if (!readTexts(urlArgument.textObject, argument.texts) ||
            !insertArgument(urlArgument.placeholder, argument))
        {
            return;
        }
    }
    m_isOrdinary = resolve();
}

bool EventTextWriter::insertArgument(const QString& placeholder, const Argument& argument)
{
    // These cannot be read back from the metadata, which the exported steps tell.
    if (placeholder.isEmpty() || placeholder.contains(QLatin1Char('/')))
    {
        return false;
    }
    m_arguments.insert(placeholder, argument);
    return true;
}

bool EventTextWriter::resolve()
{
    if (unitsOf(m_scheme) > ordinaryTextUnits)
    {
        return false;
    }
    m_texts = m_scheme;
    qint64 searchedUnits = 0;
    for (auto argument = m_arguments.cbegin(); argument != m_arguments.cend(); ++argument)
    {
        const PlaceholderReplacement replacement(argument.key());
        const QStringList texts = argumentTexts(argument.value());
        searchedUnits += PlaceholderReplacement::searchedUnits(m_texts);
        if (searchedUnits > ordinarySearchedUnits ||
            !replacement.staysBelow(ordinaryTextUnits, m_texts, texts))
        {
            return false;
        }
        auto text = texts.cbegin();
        for (QString& place : m_texts)
        {
            place = replacement.replaceIn(place, *text);
            ++text;
        }
    }
    return true;
}

// One for each language of the description.
QStringList EventTextWriter::argumentTexts(const Argument& argument) const
{
    QStringList texts;
    texts.reserve(m_textObject.size());
    if (argument.textObject == nullptr)
    {
        std::fill_n(std::back_inserter(texts), m_textObject.size(), *argument.text);
        return texts;
    }
    // Which text stands in for a language that is missing is the platform's business.
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(*argument.textObject);
    for (auto language = m_textObject.cbegin(); language != m_textObject.cend(); ++language)
    {
        texts.append(helper.getText(language.key()));
    }
    return texts;
}

QString EventTextWriter::description() const
{
    return textObjectJson(m_textObject, m_texts);
}

void EventTextWriter::appendMetaData(JsonText& json) const
{
    json.beginObject();
    json.appendKey(Definitions::getKeyMetaDataArguments());
    json.beginObject();
    for (auto argument = m_arguments.cbegin(); argument != m_arguments.cend(); ++argument)
    {
        const bool isText = argument->textObject != nullptr;
        json.appendKey(argument.key());
        json.beginObject();
        json.appendKey(u"type");
        json.appendString(isText ? u"text" : u"string");
        json.appendKey(u"value");
        if (isText)
        {
            appendTextObject(json, *argument->textObject, argument->texts);
        }
        else
        {
            json.appendString(*argument->text);
        }
        json.endObject();
    }
    json.endObject();
    json.appendKey(Definitions::getKeyMetaDataDescriptionScheme());
    appendTextObject(json, m_textObject, m_scheme);
    json.endObject();
}

QString EventTextWriter::additionalData(const QString& eventId, const QString& sourceHashes,
                                        EventlistHandlerEnums::SourceHashType sourceHashType) const
{
    JsonText json(expectedUnits(m_scheme));
    json.beginObject();
    json.appendKey(Definitions::getListColumnNameEventId());
    json.appendString(eventId);
    json.appendKey(Definitions::getListColumnNameMetaData());
    json.beginText();
    appendMetaData(json);
    json.endText();
    json.appendKey(Definitions::getListColumnNameSourceHashType());
    json.appendNumber(int(sourceHashType));
    json.appendKey(Definitions::getListColumnNameSourceHashes());
    json.appendString(sourceHashes);
    json.endObject();
    return json.text();
}
