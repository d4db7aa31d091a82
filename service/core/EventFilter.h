#pragma once

#include <QList>
#include <QStringList>

#include <limits>

namespace eventlistd
{

/// Which events a query wants, and how. An empty list restricts nothing; the restrictions of
/// different lists hold together, the elements of one list are alternatives.
struct EventFilter
{
    QString language; ///< language key of "Description"; empty: all languages as JSON text

    bool matchesNothing = false; ///< a list was given and none of its elements can ever match
    QList<int> types;
    QStringList eventIds;
    QStringList moduleNames;
    QStringList keywords; ///< an event matches when it carries one of them

    qint64 firstTimeMs = std::numeric_limits<qint64>::min(); ///< inclusive
    qint64 lastTimeMs = std::numeric_limits<qint64>::max();  ///< inclusive
    qint64 firstId = std::numeric_limits<qint64>::min();     ///< inclusive
    qint64 lastId = std::numeric_limits<qint64>::max();      ///< inclusive

    QStringList columns;  ///< columns wanted, in this order; empty: all
    qint64 rowLimit = -1; ///< -1: as many as an answer holds
    bool oldestFirst = false;
};

/// More elements than this in one list of a query are refused.
constexpr int longestFilterList = 1000;

/// Puts a filter together from the arguments of a query, as they come over the bus.
class EventFilterBuilder
{
public:
    explicit EventFilterBuilder(const QString& language);

    /// \param elements  one character each, U+0000 to U+0003, whose code is the type. The bus cuts
    ///                  U+0000 off, so that an alarm arrives as the empty string. Any other string
    ///                  is no type and selects nothing.
    EventFilterBuilder& eventTypes(const QStringList& elements);
    /// The second list of a query: event ids, that is the text urls of descriptions.
    EventFilterBuilder& eventIds(const QStringList& elements);
    EventFilterBuilder& moduleNames(const QStringList& elements);
    EventFilterBuilder& keywords(const QStringList& elements);

    /// Both ends are inclusive. A text that is empty or no time leaves its end open.
    EventFilterBuilder& timesAsText(const QString& start, const QString& end);
    /// Both ends are inclusive, zero and less leave an end open. Below 10^11 a number counts as
    /// seconds, from there on as milliseconds: seconds reach the year 5138 before the two meet.
    EventFilterBuilder& unixTimes(qint64 start, qint64 end);
    /// Both ends are inclusive, zero and less leave an end open.
    EventFilterBuilder& ids(qint64 start, qint64 end);

    /// The extra list of a query: names of the columns that the answer shall hold.
    EventFilterBuilder& columns(const QStringList& elements);
    /// The extra number of a query: above zero it limits the rows.
    EventFilterBuilder& rowLimit(int number);
    /// The extra flag of a query: the oldest rows of the range come, and come first.
    EventFilterBuilder& oldestFirst(bool isOldestFirst);

    /// False when a list was too long; the filter is then not to be used.
    bool isValid() const { return m_isValid; }
    const EventFilter& filter() const { return m_filter; }

private:
    void takeList(const QStringList& elements, QStringList& target);

    EventFilter m_filter;
    bool m_isValid = true;
};

} // namespace eventlistd
