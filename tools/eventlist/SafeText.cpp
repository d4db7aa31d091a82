#include "eventlist/SafeText.h"

#include <QVector>

#include <cwchar>

namespace
{
constexpr uint zeroWidthNonJoiner = 0x200C;
constexpr uint zeroWidthJoiner = 0x200D;
constexpr uint softHyphen = 0x00AD;

bool isDangerous(uint code)
{
    switch (QChar::category(code))
    {
    case QChar::Other_Control:
    case QChar::Other_Surrogate:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    case QChar::Other_Format:
        // Several languages need these to be written at all.
        return code != zeroWidthNonJoiner && code != zeroWidthJoiner && code != softHyphen;
    default:
        return false;
    }
}

QString unitEscape(ushort unit)
{
    return QStringLiteral("\\u") + QString::number(unit, 16).rightJustified(4, QLatin1Char('0'));
}

QString escape(uint code)
{
    if (!QChar::requiresSurrogates(code))
    {
        return unitEscape(ushort(code));
    }
    return unitEscape(QChar::highSurrogate(code)) + unitEscape(QChar::lowSurrogate(code));
}

QString shortEscape(uint code)
{
    switch (code)
    {
    case '\n':
        return QStringLiteral("\\n");
    case '\r':
        return QStringLiteral("\\r");
    case '\t':
        return QStringLiteral("\\t");
    default:
        return escape(code);
    }
}

// A lone surrogate must come through, which QString::toUcs4 would not let.
template<typename Function>
void forEachCharacter(const QString& text, Function function)
{
    for (int i = 0; i < text.size(); ++i)
    {
        const QChar unit = text.at(i);
        if (unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate())
        {
            function(QChar::surrogateToUcs4(unit, text.at(i + 1)), i, 2);
            ++i;
        }
        else
        {
            function(unit.unicode(), i, 1);
        }
    }
}

int cellsOf(uint code)
{
    const int cells = ::wcwidth(wchar_t(code));
    // Unknown to the C library: newer than it, and most likely of one cell.
    return cells < 0 ? 1 : cells;
}

template<typename Escape>
QString replaced(const QString& text, Escape escapeOf)
{
    QString result;
    result.reserve(text.size());
    forEachCharacter(text, [&](uint code, int position, int length) {
        if (isDangerous(code))
        {
            result += escapeOf(code);
        }
        else
        {
            result += text.midRef(position, length);
        }
    });
    return result;
}
} // namespace

QString SafeText::escaped(const QString& text)
{
    return replaced(text, shortEscape);
}

QString SafeText::escapedJson(const QString& json)
{
    return replaced(json, escape);
}

int SafeText::width(const QString& text)
{
    int cells = 0;
    forEachCharacter(text, [&](uint code, int, int) { cells += cellsOf(code); });
    return cells;
}

QString SafeText::cut(const QString& text, int cells)
{
    if (width(text) <= cells)
    {
        return text;
    }
    int used = 0;
    int end = 0;
    bool isFull = false;
    forEachCharacter(text, [&](uint code, int position, int length) {
        used += cellsOf(code);
        isFull = isFull || used > cells - 1;
        end = isFull ? end : position + length;
    });
    return text.left(end) + QChar(0x2026);
}
