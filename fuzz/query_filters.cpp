// Queries of the event list: the database selects what a plain walk over the events selects, in the same order.

#include "core/Database.h"
#include "core/EventColumns.h"
#include "core/EventFilter.h"
#include "core/EventStore.h"

#include "FuzzTarget.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>

#include <algorithm>
#include <memory>

namespace fuzz_query_filters
{
using namespace eventlistd;

// As they come over the bus: without U+0000, and nothing that UTF-8 cannot hold.
const QStringList words{QStringLiteral("PumpControl"),
                        QStringLiteral("pumpcontrol"),
                        QStringLiteral("MachineWatch"),
                        QStringLiteral("Error"),
                        QStringLiteral("Firmware"),
                        QStringLiteral("Err"),
                        QStringLiteral("%"),
                        QStringLiteral("_"),
                        QStringLiteral("'"),
                        QStringLiteral("\""),
                        QStringLiteral("ü €"),
                        QStringLiteral("\x1f"),
                        QStringLiteral("Error\x1f"
                                       "Firmware"),
                        QString()};
constexpr int eventCount = 48;
constexpr qint64 firstTimeMs = 1773476800000;

QString onTheBus(const QString& text)
{
    QString arrived = QString::fromUtf8(text.toUtf8());
    const int end = arrived.indexOf(QChar(0));
    return end < 0 ? arrived : arrived.left(end);
}

// As the list has what came over the bus: without a byte order mark at the front, and with U+FFFD
// for what is no character.
QStringList inTheList(const QStringList& texts)
{
    static const QRegularExpression marks(QStringLiteral("^\\x{feff}+"));
    static const QRegularExpression odd(QStringLiteral("[\\x{fffe}\\x{ffff}]"));
    QStringList kept;
    for (const QString& text : texts)
    {
        kept.append(onTheBus(text).remove(marks).replace(odd, QStringLiteral("\ufffd")));
    }
    return kept;
}

class List
{
public:
    List() : m_database(QDir(fuzz::folder()).filePath(QStringLiteral("list.sqlite")))
    {
        fuzz::require(m_database.open() == Database::Opened::asNew, "there is a new database");
        m_store = std::make_unique<EventStore>(m_database, 1000, qint64(1) << 30);
        fuzz::require(m_store->load() && m_database.begin(), "it can be used");
        for (int i = 0; i < eventCount; ++i)
        {
            Event event;
            event.type = i % 4;
            event.timeMs = firstTimeMs + (i * 7919 % eventCount) * 1000;
            event.moduleName = words.at(i % words.size());
            event.eventId = words.at(i / 3 % words.size());
            for (int k = 0; k < i % 4; ++k)
            {
                event.keywords.append(words.at((i / 4 + k) % 11));
            }
            fuzz::require(m_store->append(event), "an event is stored");
            events.append(event);
        }
        fuzz::require(m_store->saveCounters() && m_database.commit(), "all are stored");
    }

    QStringList ids(const EventFilter& filter)
    {
        const EventColumns columns({QStringLiteral("EventlistId")});
        ListAnswer answer(columns.header());
        fuzz::require(m_store->read(filter, columns, answer), "the database answers");
        QStringList ids;
        for (const QStringList& row : answer.rows())
        {
            ids.append(row.join(QLatin1Char(';')));
        }
        return ids;
    }

    QVector<Event> events;

private:
    Database m_database;
    std::unique_ptr<EventStore> m_store;
};

// A query as its caller means it.
struct Query
{
    QStringList types;
    QStringList eventIds;
    QStringList modules;
    QStringList keywords;
    int range = 0;
    qint64 begin = 0;
    qint64 end = 0;
    QString beginText;
    QString endText;
    // What the texts say, invalid when it is no time.
    QDateTime beginTime;
    QDateTime endTime;
    int rowLimit = 0;
    bool isOldestFirst = false;

    bool selects(const Event& event) const
    {
        const QString type = event.type == 0 ? QString() : QString(QChar(event.type));
        const auto holdsOneOf = [&](const QStringList& wanted) {
            return std::any_of(event.keywords.begin(), event.keywords.end(),
                               [&](const QString& word) { return wanted.contains(word); });
        };
        return (types.isEmpty() || types.contains(type)) &&
               (eventIds.isEmpty() || eventIds.contains(event.eventId)) &&
               (modules.isEmpty() || modules.contains(event.moduleName)) &&
               (keywords.isEmpty() || holdsOneOf(keywords)) && isInRange(event);
    }

    bool isInRange(const Event& event) const
    {
        if (range == 0)
        {
            return (begin <= 0 || event.id >= begin) && (end <= 0 || event.id <= end);
        }
        if (range == 1)
        {
            // A number of seconds has eleven digits until the year 5138.
            const auto inSeconds = [](qint64 time) { return time > 0 && time < 100000000000; };
            const qint64 first = inSeconds(begin) ? begin * 1000 : begin;
            const qint64 last = inSeconds(end) ? end * 1000 + 999 : end;
            return (begin <= 0 || event.timeMs >= first) && (end <= 0 || event.timeMs <= last);
        }
        return (!beginTime.isValid() || event.timeMs >= beginTime.toMSecsSinceEpoch()) &&
               (!endTime.isValid() || event.timeMs <= endTime.toMSecsSinceEpoch());
    }

    QStringList idsIn(const QVector<Event>& events) const
    {
        QStringList ids;
        for (const Event& event : events)
        {
            if (selects(event))
            {
                isOldestFirst ? ids.append(QString::number(event.id))
                              : ids.prepend(QString::number(event.id));
            }
        }
        return rowLimit > 0 ? QStringList(ids.mid(0, rowLimit)) : ids;
    }

    EventFilterBuilder builder() const
    {
        EventFilterBuilder filter(QStringLiteral("lang_en"));
        filter.eventTypes(types).eventIds(eventIds).moduleNames(modules).keywords(keywords);
        filter.rowLimit(rowLimit).oldestFirst(isOldestFirst);
        switch (range)
        {
        case 0:
            return filter.ids(begin, end);
        case 1:
            return filter.unixTimes(begin, end);
        default:
            return filter.timesAsText(beginText, endText);
        }
    }
};

// Near the events, or anywhere.
qint64 time(fuzz::Input& input)
{
    switch (input.below(3))
    {
    case 0:
        return firstTimeMs / 1000 + input.below(64);
    case 1:
        return firstTimeMs + input.below(64) * 500;
    default:
        return input.number();
    }
}

QString timeText(fuzz::Input& input)
{
    const qint64 number = time(input);
    return input.below(4) == 0
               ? onTheBus(input.text())
               : QDateTime::fromMSecsSinceEpoch(number, Qt::UTC).toString(Qt::ISODateWithMs);
}

Query queryFrom(fuzz::Input& input)
{
    Query query;
    for (int i = input.below(4); i > 0; --i)
    {
        const int type = input.below(6);
        query.types.append(type == 5 ? onTheBus(input.text()) : onTheBus(QString(QChar(type))));
    }
    query.eventIds = inTheList(input.texts(3));
    query.modules = inTheList(input.texts(3));
    query.keywords = inTheList(input.texts(3));
    query.range = input.below(3);
    query.begin = query.range == 0 && input.below(2) == 0 ? input.below(64) : time(input);
    query.end = query.range == 0 && input.below(2) == 0 ? input.below(64) : time(input);
    query.beginText = timeText(input);
    query.endText = timeText(input);
    query.beginTime = QDateTime::fromString(query.beginText, Qt::ISODateWithMs);
    query.endTime = QDateTime::fromString(query.endText, Qt::ISODateWithMs);
    query.rowLimit = int(input.number());
    query.isOldestFirst = input.below(2) == 1;
    return query;
}

FUZZ_TARGET(query_filters)
{
    fuzz::haveApplication();
    static List list;
    fuzz::Log::take();

    fuzz::Input input(data, size, words);
    const Query query = queryFrom(input);
    const EventFilterBuilder builder = query.builder();
    fuzz::require(builder.isValid(), "short lists are good");
    const QStringList ids = list.ids(builder.filter());
    const QStringList expected = query.idsIn(list.events);
    fuzz::require(ids == expected, "the database selects what a walk over the events selects",
                  ids.join(QLatin1Char(',')) + QStringLiteral(" instead of ") +
                      expected.join(QLatin1Char(',')));
    fuzz::require(fuzz::Log::take().isEmpty(), "there is no warning");
    return 0;
}
} // namespace fuzz_query_filters
