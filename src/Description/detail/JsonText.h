#pragma once

#include <QString>
#include <QStringView>

/// Compact JSON text, byte for byte as QJsonDocument writes it, but straight into a string. Members
/// are written in the order in which they are to stand.
class JsonText
{
public:
    /// \param units  expected size of the text; a guess saves copying
    explicit JsonText(int units);

    void beginObject();
    void endObject();

    /// Begins a member of the object. Its value is what is written next.
    void appendKey(QStringView key);

    void appendString(QStringView text);
    void appendNumber(int number);

    /// Begins and ends a string that holds JSON text itself. What is written between them is escaped
    /// once more.
    void beginText();
    void endText();

    /// The text so far.
    const QString& text() const { return m_text; }

private:
    void appendQuote();
    void appendEscaped(char16_t unit);

    QString m_text;
    bool m_isInText = false;
};
