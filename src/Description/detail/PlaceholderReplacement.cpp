#include "Description/detail/PlaceholderReplacement.h"

#include <QStringView>

// The places of the placeholder in a text, one after the other, as QString::replace finds them: the
// next one begins behind the one before. QString::count would count those that overlap too.
//
// A placeholder's first character is rare in most texts, and Qt looks for a single one many times
// faster than for a string.
class PlaceholderReplacement::Places
{
public:
    Places(const QString& text, const QString& placeholder)
        : m_text(text), m_placeholder(placeholder)
    {
    }

    // -1 when there is none any more, also when asked again.
    int next()
    {
        if (m_placeholder.isEmpty())
        {
            return m_from <= m_text.size() ? int(m_from++) : -1;
        }
        qsizetype place = m_text.indexOf(m_placeholder.front(), m_from);
        while (place >= 0 && !m_text.mid(place).startsWith(m_placeholder))
        {
            place = m_text.indexOf(m_placeholder.front(), place + 1);
        }
        m_from = place < 0 ? m_text.size() : place + m_placeholder.size();
        return int(place);
    }

private:
    const QStringView m_text;
    const QStringView m_placeholder;
    qsizetype m_from = 0;
};

PlaceholderReplacement::PlaceholderReplacement(const QString& placeholder)
    : m_placeholder(placeholder)
{
}

// The exact count is made only where the limit is in reach.
bool PlaceholderReplacement::staysBelow(qint64 maximumUnits, const QStringList& texts,
                                        const QStringList& arguments) const
{
    qint64 before = 0;
    qint64 mostAfter = 0;
    auto argument = arguments.cbegin();
    for (const QString& text : texts)
    {
        before += text.size();
        mostAfter += text.size() +
                     (qint64(text.size()) / qMax(1, m_placeholder.size()) + 1) * argument->size();
        ++argument;
    }
    if (mostAfter <= maximumUnits)
    {
        return true;
    }
    qint64 after = 0;
    argument = arguments.cbegin();
    for (const QString& text : texts)
    {
        after += sizeAfterReplacement(text, *argument);
        ++argument;
    }
    return after <= maximumUnits || after <= before;
}

qint64 PlaceholderReplacement::sizeAfterReplacement(const QString& text,
                                                    const QString& argument) const
{
    Places places(text, m_placeholder);
    qint64 count = 0;
    while (places.next() >= 0)
    {
        ++count;
    }
    return text.size() + count * (qint64(argument.size()) - m_placeholder.size());
}

// In one pass: QString::replace moves the rest of the text again and again when it grows at many
// places.
QString PlaceholderReplacement::replaceIn(const QString& text, const QString& argument) const
{
    Places places(text, m_placeholder);
    int place = places.next();
    if (place < 0)
    {
        return text;
    }
    // Mostly there is one place, and nothing left to count.
    int nextPlace = places.next();
    QString result;
    result.reserve(nextPlace < 0 ? text.size() - m_placeholder.size() + argument.size()
                                 : int(sizeAfterReplacement(text, argument)));
    int copied = 0;
    while (place >= 0)
    {
        result.append(text.constData() + copied, place - copied);
        result.append(argument);
        copied = place + m_placeholder.size();
        place = nextPlace;
        nextPlace = places.next();
    }
    result.append(text.constData() + copied, text.size() - copied);
    return result;
}
