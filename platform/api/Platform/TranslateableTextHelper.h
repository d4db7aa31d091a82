#pragma once

#include "Platform/PlatformExport.h"

#include <QObject>
#include <QString>
#include <QVariantMap>

/// Holds one text object, a map from language key to text. Made on the stack, one for each use; not
/// shared.
class PLATFORM_EXPORT TranslateableTextHelper : public QObject
{
    Q_OBJECT
public:
    /// \param text  a text that is the same in every language, filed under the language of last
    ///              resort; empty makes an empty helper
    explicit TranslateableTextHelper(const QString& text, QObject* parent = nullptr);
    ~TranslateableTextHelper() override;

    /// Replaces the content.
    void setTranslateableTextObject(const QVariantMap& textObject);

    /// The content as it was set.
    QVariantMap getTranslateableTextObject() const;

    /// The content as compact JSON text, one member per language, keys sorted; "{}" when there is
    /// none.
    QString getTranslateableTextObjectAsJsonString() const;

    /// The text for a language. A language that is missing is answered with the text of the
    /// language of last resort, and with the empty string when that is missing too.
    QString getText(const QString& languageKey) const;

private:
    QVariantMap m_textObject;
};
