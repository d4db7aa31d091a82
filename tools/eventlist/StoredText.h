#pragma once

#include <QJsonObject>
#include <QString>
#include <QVariantMap>
#include <QVector>

/// The description of an event as it is stored: with placeholders, and what belongs into them. It
/// is resolved without the module that wrote it.
class StoredText
{
public:
    StoredText() = default;
    StoredText(const QJsonObject& metaData, const QString& eventId)
        : m_metaData(metaData), m_eventId(eventId)
    {
    }

    /// The event of one JSON object: a metadata object itself, or anything with a member
    /// "MetaData", which is an object or JSON text: a spool file, the additional data of a call, a
    /// row of "eventlist list --json".
    static StoredText ofObject(const QJsonObject& object);

    /// All events of a text: an object, an array of objects, or an object a line.
    /// Failure: false, and error says why.
    static bool readAll(const QByteArray& json, QVector<StoredText>& texts, QString& error);

    const QString& eventId() const { return m_eventId; }

    /// True for the emergency event, which has arguments and leaves the sentence to whoever shows
    /// it.
    bool isEmergency() const;

    /// The finished text of each language.
    /// \param textFolder  language files with the sentence of the emergency event
    /// Failure: false, and error says why.
    bool resolve(const QString& textFolder, QVariantMap& texts, QString& error) const;

    /// The text for a language, or what the event list would show in its place.
    static QString inLanguage(const QVariantMap& texts, const QString& language);

private:
    bool resolveEmergency(const QString& textFolder, QVariantMap& texts, QString& error) const;

    QJsonObject m_metaData;
    QString m_eventId;
};
