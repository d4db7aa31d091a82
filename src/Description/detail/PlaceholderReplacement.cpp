#include "Description/detail/PlaceholderReplacement.h"

#include <QStringView>

#include <cstddef>
#include <numeric>

namespace
{

// What a text costs beside its units.
constexpr qint64 unitsOfEachText = 128;

} // namespace

// The places of the placeholder in a text, one after the other, as QString::replace finds them: the
// next one begins behind the one before. QString::count would count those that overlap too.
//
// In linear time: Qt's own search reads a text as often as the placeholder is long when the two
// nearly match everywhere, and both may come from anybody.
class PlaceholderReplacement::Places
{
public:
    Places(const QString& text, const PlaceholderReplacement& replacement)
        : m_text(text), m_replacement(replacement)
    {
    }

    // -1 when there is none any more, also when asked again.
    int next()
    {
        const QString& placeholder = m_replacement.m_placeholder;
        if (placeholder.isEmpty())
        {
            return m_from <= m_text.size() ? int(m_from++) : -1;
        }
        const QChar first = placeholder.front();
        const QChar* const end = m_text.end();
        const QChar* unread = m_text.begin() + m_from;
        int matched = 0;
        while (matched < placeholder.size() && unread != end)
        {
            // A placeholder's first character is rare in most texts, and Qt looks for a single one
            // many times faster than we read.
            if (matched == 0 && *unread != first)
            {
                const qsizetype place = m_text.indexOf(first, unread - m_text.begin());
                unread = place == -1 ? end : m_text.begin() + place;
                continue;
            }
            matched = m_replacement.extended(matched, *unread);
            ++unread;
        }
        m_from = unread - m_text.begin();
        return matched == placeholder.size() ? int(m_from) - matched : -1;
    }

private:
    const QStringView m_text;
    const PlaceholderReplacement& m_replacement;
    qsizetype m_from = 0;
};

// How much of the placeholder a text ends with, after one more character; before it, it was less
// than all of it. This is asked for each character of a text: by pointers, without the checks of
// their containers.
inline int PlaceholderReplacement::extended(int matched, QChar character) const
{
    const QChar* const placeholder = m_placeholder.constData();
    const int* const borders = m_borders.data();
    while (matched > 0 && placeholder[matched] != character)
    {
        matched = borders[matched - 1];
    }
    return placeholder[matched] == character ? matched + 1 : 0;
}

PlaceholderReplacement::PlaceholderReplacement(const QString& placeholder)
    : m_placeholder(placeholder), m_borders(std::size_t(placeholder.size()))
{
    int border = 0;
    for (int i = 1; i < m_placeholder.size(); ++i)
    {
        border = extended(border, m_placeholder.at(i));
        m_borders[std::size_t(i)] = border;
    }
}

qint64 PlaceholderReplacement::searchedUnits(const QStringList& texts)
{
    return std::accumulate(
        texts.cbegin(), texts.cend(), qint64(0),
        [](qint64 units, const QString& text) { return units + text.size() + unitsOfEachText; });
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
    Places places(text, *this);
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
    Places places(text, *this);
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
