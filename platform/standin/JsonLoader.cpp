#include "JsonLoader.h"

#include "LimitedFile.h"

#include <QJsonDocument>
#include <QSet>

#include <algorithm>
#include <cstring>

namespace
{
constexpr int maxDepth = 64;
constexpr int shownKeyLength = 64;

// Reads a JSON text by the letter of its grammar and keeps nothing but the keys of the open
// objects.
class Scanner
{
public:
    explicit Scanner(const QByteArray& json)
        : m_begin(json.constData()), m_position(m_begin), m_end(m_begin + json.size())
    {
    }

    // The fault that was found, empty for a good text.
    QString findFault()
    {
        skipBlanks();
        if (!isNext('{'))
        {
            return QStringLiteral("no JSON object");
        }
        if (!scanValue(0))
        {
            return located(m_fault);
        }
        skipBlanks();
        return m_position == m_end ? QString() : located(QStringLiteral("text after the object"));
    }

private:
    QString located(const QString& fault) const
    {
        const auto line = std::count(m_begin, m_position, '\n') + 1;
        return QStringLiteral("%1 in line %2").arg(fault).arg(line);
    }

    bool fail(const QString& fault)
    {
        m_fault = fault;
        return false;
    }

    bool failSyntax() { return fail(QStringLiteral("no valid JSON")); }

    bool isNext(char character) const { return m_position < m_end && *m_position == character; }

    bool take(char character)
    {
        if (!isNext(character))
        {
            return false;
        }
        ++m_position;
        return true;
    }

    void skipBlanks()
    {
        while (m_position < m_end && std::strchr(" \t\r\n", *m_position) && *m_position != '\0')
        {
            ++m_position;
        }
    }

    // Recursion is bounded by maxDepth.
    bool scanValue(int depth)
    {
        skipBlanks();
        if (isNext('{') || isNext('['))
        {
            if (depth == maxDepth)
            {
                return fail(QStringLiteral("nested deeper than %1").arg(maxDepth));
            }
            return take('{') ? scanObject(depth + 1) : take('[') && scanArray(depth + 1);
        }
        if (isNext('"'))
        {
            return scanString(nullptr);
        }
        return scanWord("true") || scanWord("false") || scanWord("null") || scanNumber() ||
               failSyntax();
    }

    bool scanObject(int depth)
    {
        QSet<QString> keys;
        skipBlanks();
        if (take('}'))
        {
            return true;
        }
        do
        {
            skipBlanks();
            QString key;
            if (!isNext('"'))
            {
                return failSyntax();
            }
            if (!scanString(&key))
            {
                return false;
            }
            const int before = keys.size();
            keys.insert(key);
            if (keys.size() == before)
            {
                return fail(
                    QStringLiteral("key \"%1\" twice in one object").arg(key.left(shownKeyLength)));
            }
            skipBlanks();
            if (!take(':'))
            {
                return failSyntax();
            }
            if (!scanValue(depth))
            {
                return false;
            }
            skipBlanks();
        }
        while (take(','));
        return take('}') || failSyntax();
    }

    bool scanArray(int depth)
    {
        skipBlanks();
        if (take(']'))
        {
            return true;
        }
        do
        {
            if (!scanValue(depth))
            {
                return false;
            }
            skipBlanks();
        }
        while (take(','));
        return take(']') || failSyntax();
    }

    // Stands at the opening quote. The decoded text goes to *text: a key may be spelled in several
    // ways.
    bool scanString(QString* text)
    {
        ++m_position;
        const char* plainBegin = m_position;
        while (m_position < m_end)
        {
            const auto character = static_cast<unsigned char>(*m_position);
            if (character == '"' || character == '\\')
            {
                if (text)
                {
                    *text += QString::fromUtf8(plainBegin, int(m_position - plainBegin));
                }
                ++m_position;
                if (character == '"')
                {
                    return true;
                }
                if (!scanEscape(text))
                {
                    return failSyntax();
                }
                plainBegin = m_position;
                continue;
            }
            if (character < 0x20)
            {
                return failSyntax();
            }
            ++m_position;
        }
        return failSyntax();
    }

    // Stands after the backslash.
    bool scanEscape(QString* text)
    {
        if (m_position == m_end)
        {
            return false;
        }
        const char escape = *m_position++;
        ushort unit = 0;
        if (escape == 'u')
        {
            const QByteArray digits(m_position, int(std::min<qptrdiff>(4, m_end - m_position)));
            if (digits.size() < 4 || !std::all_of(digits.cbegin(), digits.cend(), isHexDigit))
            {
                return false;
            }
            unit = digits.toUShort(nullptr, 16);
            m_position += 4;
        }
        else
        {
            static const char names[] = "\"\\/bfnrt";
            static const char values[] = "\"\\/\b\f\n\r\t";
            const char* name = escape == '\0' ? nullptr : std::strchr(names, escape);
            if (!name)
            {
                return false;
            }
            unit = static_cast<unsigned char>(values[name - names]);
        }
        if (text)
        {
            *text += QChar(unit);
        }
        return true;
    }

    bool scanWord(const char* word)
    {
        const auto length = static_cast<qptrdiff>(std::strlen(word));
        if (m_end - m_position < length || std::memcmp(m_position, word, size_t(length)) != 0)
        {
            return false;
        }
        m_position += length;
        return true;
    }

    bool scanNumber()
    {
        take('-');
        if (!take('0') && !scanDigits())
        {
            return false;
        }
        if (take('.') && !scanDigits())
        {
            return false;
        }
        if (take('e') || take('E'))
        {
            if (!take('+'))
            {
                take('-');
            }
            return scanDigits();
        }
        return true;
    }

    bool scanDigits()
    {
        const char* begin = m_position;
        while (m_position < m_end && *m_position >= '0' && *m_position <= '9')
        {
            ++m_position;
        }
        return m_position != begin;
    }

    static bool isHexDigit(char character)
    {
        return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'f') ||
               (character >= 'A' && character <= 'F');
    }

    const char* const m_begin;
    const char* m_position;
    const char* const m_end;
    QString m_fault;
};
} // namespace

JsonLoader::Result JsonLoader::fromFile(const QString& path, qint64 maxBytes)
{
    Result result;
    QByteArray json;
    if (!LimitedFile::read(path, maxBytes, json, result.error))
    {
        return result;
    }
    return fromBytes(json, maxBytes);
}

JsonLoader::Result JsonLoader::fromBytes(const QByteArray& json, qint64 maxBytes)
{
    Result result;
    if (json.size() > maxBytes)
    {
        result.error = QStringLiteral("larger than %1 bytes").arg(maxBytes);
        return result;
    }
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    const QByteArray text = json.startsWith(mark) ? json.mid(mark.size()) : json;
    result.error = Scanner(text).findFault();
    if (!result.error.isEmpty())
    {
        return result;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(text, &parseError);
    if (parseError.error != QJsonParseError::NoError)
    {
        result.error = QStringLiteral("no valid JSON, %1").arg(parseError.errorString());
        return result;
    }
    result.object = document.object();
    return result;
}
