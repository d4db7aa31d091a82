#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace fuzz
{

/// What Qt's parser makes of a JSON text, and what can be counted in the text without a grammar.
class ReferenceJson
{
public:
    static constexpr int deepest = 64;

    explicit ReferenceJson(const QByteArray& json)
    {
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(json, &error);
        isObject = error.error == QJsonParseError::NoError && document.isObject();
        object = document.object();
        count(json);
        // A key that stands twice is written as often, but kept once.
        isAcceptable = isObject && m_depth <= deepest && m_colons == members(object);
        hasMarks = json.lastIndexOf("\xEF\xBB\xBF") > 0 || json.toLower().contains("\\ufeff");
    }

    QJsonObject object;
    bool isObject = false;
    /// No key twice in one object, and not nested too deep.
    bool isAcceptable = false;
    /// Qt drops a U+FEFF at the beginning of a key or a text at some times and not at others: what it writes of such an
    /// object is another one, in which two keys may have become one.
    bool hasMarks = false;

private:
    // Brackets and colons outside of texts.
    void count(const QByteArray& json)
    {
        bool isInText = false;
        int depth = 0;
        for (int i = 0; i < json.size(); ++i)
        {
            const char letter = json.at(i);
            if (isInText && letter == '\\')
            {
                ++i;
                continue;
            }
            isInText = isInText != (letter == '"');
            if (!isInText)
            {
                depth += letter == '{' || letter == '[' ? 1 : 0;
                depth -= letter == '}' || letter == ']' ? 1 : 0;
                m_depth = qMax(m_depth, depth);
                m_colons += letter == ':' ? 1 : 0;
            }
        }
    }

    static int members(const QJsonValue& value)
    {
        int count = 0;
        const QJsonArray array = value.toArray();
        for (const QJsonValue& element : array)
        {
            count += members(element);
        }
        const QJsonObject object = value.toObject();
        for (const QJsonValue& member : object)
        {
            count += 1 + members(member);
        }
        return count;
    }

    int m_depth = 0;
    int m_colons = 0;
};

} // namespace fuzz
