#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerStructs.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class JsonText;

/// The inner road of the producers and the provider: writes the JSON texts of an event straight from
/// its texts and arguments.
///
/// The exported steps do the same by way of JSON objects (generateMetaData,
/// generateDescriptionTextlist, and the logEvent of the write road): every text goes into an object
/// and out again four times and is written as JSON three times, and all that costs several times as
/// much as the call on the bus. They stay, for whoever calls them and for every event that is out of
/// the ordinary; this class makes the same bytes for the others, or says that it cannot.
///
/// It refers to the texts and arguments that it was given; they outlive it.
class EventTextWriter
{
public:
    EventTextWriter(
        const QVariantMap& textObject,
        const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
        const QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>& urlArguments);

    /// Whether the exported steps would make the same bytes without a warning. When it is false, the
    /// event has to take them: it has no text, a value that is no string, a placeholder that cannot
    /// be read back, more text than is usual, or a platform that writes texts in another form.
    bool isOrdinary() const { return m_isOrdinary; }

    /// The finished texts as JSON text, language key to text.
    QString description() const;

    /// The additional data of an event on the bus, with the metadata in them as text inside the
    /// text.
    QString additionalData(const QString& eventId, const QString& sourceHashes,
                           EventlistHandlerEnums::SourceHashType sourceHashType) const;

private:
    // What fills a placeholder: one text for all languages, or a text object and its texts.
    struct Argument
    {
        const QString* text = nullptr;
        const QVariantMap* textObject = nullptr;
        QStringList texts;
    };

    bool insertArgument(const QString& placeholder, const Argument& argument);
    bool resolve();
    QStringList argumentTexts(const Argument& argument) const;
    void appendMetaData(JsonText& json) const;

    const QVariantMap& m_textObject;
    // The texts of the description in the order of its languages, with placeholders and without.
    QStringList m_scheme;
    QStringList m_texts;
    // Sorted, as JSON objects are.
    QMap<QString, Argument> m_arguments;
    bool m_isOrdinary = false;
};
