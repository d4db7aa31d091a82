#include "core/EventFilter.h"

#include "core/Event.h"
#include "core/StorableText.h"

#include <QDateTime>

namespace eventlistd
{

namespace
{
constexpr qint64 smallestMilliseconds = 100000000000;
constexpr int longestTimeText = 64;

qint64 timeFromText(const QString& text, qint64 openEnd)
{
    if (text.isEmpty() || text.size() > longestTimeText)
    {
        return openEnd;
    }
    const QDateTime time = QDateTime::fromString(text, Qt::ISODateWithMs);
    return time.isValid() ? time.toMSecsSinceEpoch() : openEnd;
}
} // namespace

EventFilterBuilder::EventFilterBuilder(const QString& language)
{
    m_filter.language = language;
}

EventFilterBuilder& EventFilterBuilder::eventTypes(const QStringList& elements)
{
    QStringList checked;
    takeList(elements, checked);
    for (const QString& element : checked)
    {
        const int type = element.isEmpty() ? 0 : element.at(0).unicode();
        if (element.size() <= 1 && type <= otherEvents && !m_filter.types.contains(type))
        {
            m_filter.types.append(type);
        }
    }
    m_filter.matchesNothing |= !checked.isEmpty() && m_filter.types.isEmpty();
    return *this;
}

EventFilterBuilder& EventFilterBuilder::eventIds(const QStringList& elements)
{
    takeList(storable(elements), m_filter.eventIds);
    return *this;
}

EventFilterBuilder& EventFilterBuilder::moduleNames(const QStringList& elements)
{
    takeList(storable(elements), m_filter.moduleNames);
    return *this;
}

EventFilterBuilder& EventFilterBuilder::keywords(const QStringList& elements)
{
    takeList(storable(elements), m_filter.keywords);
    return *this;
}

EventFilterBuilder& EventFilterBuilder::timesAsText(const QString& start, const QString& end)
{
    m_filter.firstTimeMs = timeFromText(start, m_filter.firstTimeMs);
    m_filter.lastTimeMs = timeFromText(end, m_filter.lastTimeMs);
    return *this;
}

EventFilterBuilder& EventFilterBuilder::unixTimes(qint64 start, qint64 end)
{
    if (start > 0)
    {
        m_filter.firstTimeMs = start < smallestMilliseconds ? start * 1000 : start;
    }
    if (end > 0)
    {
        // The last second is meant as a whole.
        m_filter.lastTimeMs = end < smallestMilliseconds ? end * 1000 + 999 : end;
    }
    return *this;
}

EventFilterBuilder& EventFilterBuilder::ids(qint64 start, qint64 end)
{
    if (start > 0)
    {
        m_filter.firstId = start;
    }
    if (end > 0)
    {
        m_filter.lastId = end;
    }
    return *this;
}

EventFilterBuilder& EventFilterBuilder::columns(const QStringList& elements)
{
    takeList(elements, m_filter.columns);
    return *this;
}

EventFilterBuilder& EventFilterBuilder::rowLimit(int number)
{
    m_filter.rowLimit = number > 0 ? number : -1;
    return *this;
}

EventFilterBuilder& EventFilterBuilder::oldestFirst(bool isOldestFirst)
{
    m_filter.oldestFirst = isOldestFirst;
    return *this;
}

void EventFilterBuilder::takeList(const QStringList& elements, QStringList& target)
{
    if (elements.size() > longestFilterList)
    {
        m_isValid = false;
        return;
    }
    target = elements;
}

} // namespace eventlistd
