#include "Description/detail/JsonText.h"

#include <QChar>

namespace
{

constexpr char16_t firstPrintable = 0x20;
constexpr int hexadecimal = 16;
constexpr int escapeDigits = 4;

// Whether a unit stands in JSON text as it is. Half a surrogate pair does so beside the other half.
constexpr bool isPlain(char16_t unit)
{
    return unit >= firstPrintable && unit != u'"' && unit != u'\\' && (unit & 0xF800) != 0xD800;
}

// The number of plain units at the beginning. Nearly all units of nearly all texts are plain, so
// they are looked at by the block, which the compiler does in a few instructions.
qsizetype plainUnits(QStringView text)
{
    constexpr qsizetype block = 16;
    const char16_t* const begin = text.utf16();
    qsizetype count = 0;
    for (; text.size() - count >= block; count += block)
    {
        ushort isOdd = 0;
        for (qsizetype i = 0; i < block; ++i)
        {
            isOdd = ushort(isOdd | ushort(!isPlain(begin[count + i])));
        }
        if (isOdd != 0)
        {
            break;
        }
    }
    while (count < text.size() && isPlain(begin[count]))
    {
        ++count;
    }
    return count;
}

// Of a unit that is not plain.
QString escapeOf(char16_t unit)
{
    switch (unit)
    {
    case u'"':
        return QStringLiteral("\\\"");
    case u'\\':
        return QStringLiteral("\\\\");
    case u'\b':
        return QStringLiteral("\\b");
    case u'\f':
        return QStringLiteral("\\f");
    case u'\n':
        return QStringLiteral("\\n");
    case u'\r':
        return QStringLiteral("\\r");
    case u'\t':
        return QStringLiteral("\\t");
    default:
        // Control characters, and surrogates without their other half.
        return QLatin1String("\\u") +
               QString::number(unit, hexadecimal).rightJustified(escapeDigits, QLatin1Char('0'));
    }
}

} // namespace

JsonText::JsonText(int units)
{
    m_text.reserve(units);
}

void JsonText::beginObject()
{
    m_text.append(QLatin1Char('{'));
}

void JsonText::endObject()
{
    m_text.append(QLatin1Char('}'));
}

void JsonText::appendKey(QStringView key)
{
    if (!m_text.endsWith(QLatin1Char('{')))
    {
        m_text.append(QLatin1Char(','));
    }
    appendString(key);
    m_text.append(QLatin1Char(':'));
}

void JsonText::appendNumber(int number)
{
    m_text.append(QString::number(number));
}

void JsonText::beginText()
{
    appendQuote();
    m_isInText = true;
}

void JsonText::endText()
{
    m_isInText = false;
    appendQuote();
}

void JsonText::appendQuote()
{
    if (m_isInText)
    {
        m_text.append(QLatin1Char('\\'));
    }
    m_text.append(QLatin1Char('"'));
}

void JsonText::appendString(QStringView text)
{
    appendQuote();
    while (true)
    {
        const qsizetype plain = plainUnits(text);
        m_text.append(text.data(), int(plain));
        text = text.mid(plain);
        if (text.isEmpty())
        {
            break;
        }
        if (text.size() > 1 && text[0].isHighSurrogate() && text[1].isLowSurrogate())
        {
            m_text.append(text.data(), 2);
            text = text.mid(2);
            continue;
        }
        appendEscaped(text[0].unicode());
        text = text.mid(1);
    }
    appendQuote();
}

void JsonText::appendEscaped(char16_t unit)
{
    const QString escape = escapeOf(unit);
    for (const QChar character : escape)
    {
        if (m_isInText && !isPlain(character.unicode()))
        {
            m_text.append(QLatin1Char('\\'));
        }
        m_text.append(character);
    }
}
