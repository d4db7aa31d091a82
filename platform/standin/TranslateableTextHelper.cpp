#include "Platform/TranslateableTextHelper.h"

#include "Platform/LanguageDefinitions.h"

#include <QJsonDocument>
#include <QJsonObject>

TranslateableTextHelper::TranslateableTextHelper(const QString& text, QObject* parent)
    : QObject(parent)
{
    if (!text.isEmpty())
    {
        m_textObject.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(), text);
    }
}

TranslateableTextHelper::~TranslateableTextHelper() = default;

void TranslateableTextHelper::setTranslateableTextObject(const QVariantMap& textObject)
{
    m_textObject = textObject;
}

QVariantMap TranslateableTextHelper::getTranslateableTextObject() const
{
    return m_textObject;
}

QString TranslateableTextHelper::getTranslateableTextObjectAsJsonString() const
{
    const QJsonDocument document(QJsonObject::fromVariantMap(m_textObject));
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}

QString TranslateableTextHelper::getText(const QString& languageKey) const
{
    const auto text = m_textObject.constFind(languageKey);
    if (text != m_textObject.constEnd())
    {
        return text->toString();
    }
    return m_textObject.value(LanguageDefinitions::getSecondFallbackLanguageFilename()).toString();
}
