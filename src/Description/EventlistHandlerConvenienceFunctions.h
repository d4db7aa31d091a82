#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "Definitions/EventlistHandlerStructs.h"

#include <QList>
#include <QString>
#include <QVariantMap>

class QJsonObject;
class TextManager;

/// Writes and reads the metadata object of an event: its description in every language with the
/// placeholders still in it, and beside it what belongs into them.
///
///     {"Arguments": {"%1": {"type": "text", "value": {"lang_de": "Pumpe 3", "lang_en": "pump 3"}},
///                    "%2": {"type": "string", "value": "97.5"}},
///      "DescriptionScheme": {"lang_de": "Übertemperatur an %1, Wert %2",
///                            "lang_en": "Overtemperature at %1, value %2"}}
///
/// Such an object can be resolved into finished texts with no language file at hand, by this class
/// or by anyone who reads it.
///
/// Threads: any; the operations work on their arguments alone.
class EVENTLISTHANDLER_EXPORT EventlistHandlerConvenienceFunctions
{
public:
    /// A url argument whose text is at hand.
    struct stDescriptionUrlArgument
    {
        QString placeholder;    ///< as it stands in the texts, such as "%1"
        QVariantMap textObject; ///< language key to text; empty when no text was found
    };

    EventlistHandlerConvenienceFunctions();
    virtual ~EventlistHandlerConvenienceFunctions();

    /// Fills the metadata object of an event. Other members of it are left alone.
    /// \param metaData      receives "DescriptionScheme" and "Arguments", always both
    /// \param textObject    the description in every language
    /// \param arguments     literal arguments, the same text in every language
    /// \param urlArguments  translated arguments; they go in second, so that of two arguments with
    ///                      one placeholder the translated one stands, and of two in one list the
    ///                      later
    /// \param description   stands for the description when no text was found, usually its url
    /// Failure: an empty textObject gives the warning "No description data:" and a description that
    ///          holds `description` itself under the language of last resort.
    static void
    generateMetaData(QJsonObject& metaData, const QVariantMap& textObject,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                     const QList<stDescriptionUrlArgument>& urlArguments,
                     const QString& description);

    /// The same for url arguments that are still text urls, to be looked up in a text manager, all
    /// languages. A url without a text gives an argument with an empty text object, without a
    /// warning.
    static void
    generateMetaData(QJsonObject& metaData, const QVariantMap& textObject,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                     const TextManager& textManager, const QString& description);

    /// Adds one argument of the type "string" for each record. A placeholder is written as it is;
    /// one with a "/" in it cannot be read back.
    static void generateJsonObjectDescriptionArguments(
        QJsonObject& argumentsObject,
        const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// Adds one argument of the type "text" for each record.
    static void
    generateJsonObjectDescriptionUrlArguments(QJsonObject& argumentsObject,
                                              const QList<stDescriptionUrlArgument>& urlArguments);

    /// Resolves a metadata object into one finished text per language.
    /// \param textList  receives the result: language key to text, in the languages of the
    ///                  description
    /// Failure: warnings only. Without "DescriptionScheme" textList stays as it came in; with an
    ///          empty one it is empty; without "Arguments", or with one of them unreadable, the
    ///          placeholders concerned stay in the texts.
    static void generateDescriptionTextlist(QVariantMap& textList, const QJsonObject& metaData);

    /// Applies all members of an "Arguments" object to the texts, in the sorted order of the
    /// placeholders: "%1", "%10", "%2". A replacement is plain and case-sensitive, and acts on what
    /// earlier ones have made of a text.
    /// Failure: when the sizes of the texts, summed up over all placeholders, pass 268,435,456
    ///          UTF-16 units, the rest of the placeholders stays, with one warning that names the
    ///          first. Each text counts 128 units more than it has.
    static void replacePlaceholder(QVariantMap& textList, const QJsonObject& arguments);

    /// Puts the same text into every language, wherever the placeholder stands.
    /// Failure: when the texts together would grow past 16,777,216 UTF-16 units, they stay as they
    ///          are, with the warning "Texts would grow too large. Placeholder not replaced:".
    static void replacePlaceholderWithArgumentString(QVariantMap& textList,
                                                     const QString& placeholder,
                                                     const QString& argument);

    /// Puts each language's own text into that language. What a missing language gets is the answer
    /// of TranslateableTextHelper::getText.
    /// Failure: as above.
    static void replacePlaceholderWithArgumentText(QVariantMap& textList,
                                                   const QString& placeholder,
                                                   QVariantMap argumentTexts);
};
