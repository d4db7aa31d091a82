#include "core/StorableText.h"

#include "core/Event.h"

#include <algorithm>

namespace eventlistd
{

namespace
{
constexpr char16_t byteOrderMark = u'\ufeff';

// Units that are a character or part of one in any place. Of the others some are: a look at their
// neighbours tells.
bool isPlain(QChar unit)
{
    return !unit.isSurrogate() && unit.unicode() < byteOrderMark;
}

bool isWholePair(const QString& text, int position)
{
    return position + 1 < text.size() && text.at(position).isHighSurrogate() &&
           text.at(position + 1).isLowSurrogate();
}
} // namespace

QString storable(const QString& text)
{
    if (std::all_of(text.begin(), text.end(), isPlain))
    {
        return text;
    }
    const int begin = int(std::find_if(text.begin(), text.end(),
                                       [](QChar unit) { return unit != QChar(byteOrderMark); }) -
                          text.begin());
    QString result = text.mid(begin);
    for (int i = 0; i < result.size(); ++i)
    {
        const QChar unit = result.at(i);
        if (isWholePair(result, i))
        {
            ++i;
        }
        else if (unit.isSurrogate() || unit.unicode() >= 0xfffe)
        {
            result[i] = QChar(QChar::ReplacementCharacter);
        }
    }
    return result;
}

QStringList storable(const QStringList& texts)
{
    QStringList result;
    result.reserve(texts.size());
    for (const QString& text : texts)
    {
        result.append(storable(text));
    }
    return result;
}

void makeStorable(Event& event)
{
    for (QString* text :
         {&event.icon, &event.timestamp, &event.moduleName, &event.description, &event.user,
          &event.eventId, &event.metaData, &event.alarmId, &event.sourceHashes})
    {
        *text = storable(*text);
    }
    event.keywords = storable(event.keywords);
}

} // namespace eventlistd
