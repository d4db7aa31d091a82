#include "core/EventStore.h"

#include "core/Database.h"
#include "core/EventColumns.h"
#include "core/KeywordText.h"
#include "core/Names.h"

#include <QSqlQuery>
#include <QVariant>

#include <algorithm>

namespace eventlistd
{

namespace
{
constexpr int spoolKeysKept = 10000;

QString lastIdKey()
{
    return QStringLiteral("last_id");
}

QString firstIdKey()
{
    return QStringLiteral("first_id");
}

// The mark also stands before and behind them, so that one keyword can be searched for as a whole.
QString storedKeywords(const QStringList& keywords)
{
    const QString mark{QChar(keywordMark)};
    return keywords.isEmpty() ? QStringLiteral("")
                              : QString(mark + joinedKeywords(keywords) + mark);
}

QStringList readKeywords(const QString& stored)
{
    return stored.isEmpty() ? QStringList() : splitKeywords(stored.mid(1, stored.size() - 2));
}

// A null string would become NULL, and the two are one to everybody outside.
QVariant text(const QString& value)
{
    return value.isNull() ? QStringLiteral("") : value;
}

QString alternatives(const QString& column, int count)
{
    QStringList marks;
    for (int i = 0; i < count; ++i)
    {
        marks.append(QStringLiteral("?"));
    }
    return column + QStringLiteral(" IN (") + marks.join(QLatin1Char(',')) + QLatin1Char(')');
}

// The statement of a query, with what is to be bound in the order of its question marks.
struct Selection
{
    QString sql;
    QVariantList values;
};

Selection selection(const EventFilter& filter, const EventColumns& columns)
{
    QStringList conditions{QStringLiteral("e.id BETWEEN ? AND ?")};
    QVariantList values{filter.firstId, filter.lastId};
    if (filter.firstTimeMs > std::numeric_limits<qint64>::min() ||
        filter.lastTimeMs < std::numeric_limits<qint64>::max())
    {
        conditions.append(QStringLiteral("e.time_ms BETWEEN ? AND ?"));
        values << filter.firstTimeMs << filter.lastTimeMs;
    }
    if (!filter.types.isEmpty())
    {
        conditions.append(alternatives(QStringLiteral("e.type"), filter.types.size()));
        for (const int type : filter.types)
        {
            values.append(type);
        }
    }
    const auto addTexts = [&](const QString& column, const QStringList& texts) {
        if (!texts.isEmpty())
        {
            conditions.append(alternatives(column, texts.size()));
            for (const QString& value : texts)
            {
                values.append(text(value));
            }
        }
    };
    addTexts(QStringLiteral("e.module"), filter.moduleNames);
    addTexts(QStringLiteral("e.event_id"), filter.eventIds);
    if (!filter.keywords.isEmpty())
    {
        QStringList searches;
        for (const QString& keyword : filter.keywords)
        {
            searches.append(QStringLiteral("instr(e.keywords, ?) > 0"));
            values.append(storedKeywords({keyword}));
        }
        conditions.append(QLatin1Char('(') + searches.join(QStringLiteral(" OR ")) +
                          QLatin1Char(')'));
    }
    values.append(filter.rowLimit);
    const auto wide = [&](const QString& column, const QString& name) {
        return columns.contains(name) ? column : QStringLiteral("NULL");
    };
    // CROSS keeps the order of the loops: the small rows decide, the large ones are only fetched.
    return {QStringLiteral("SELECT e.id, e.type, e.state, e.time_ms, e.module, e.keywords,"
                           " e.event_id, c.timestamp, c.offset_s, c.icon, c.user, c.alarm_id,"
                           " c.source_hash_type, c.source_hashes, c.uid, c.pid, ") +
                wide(QStringLiteral("c.description"), names::description()) + QStringLiteral(", ") +
                wide(QStringLiteral("c.metadata"), names::metaData()) +
                QStringLiteral(" FROM event e CROSS JOIN content c ON c.id = e.id WHERE ") +
                conditions.join(QStringLiteral(" AND ")) + QStringLiteral(" ORDER BY e.id ") +
                (filter.oldestFirst ? QStringLiteral("ASC") : QStringLiteral("DESC")) +
                QStringLiteral(" LIMIT ?"),
            values};
}

// What is not known is NULL in the file.
QVariant known(qint64 number)
{
    return number < 0 ? QVariant(QVariant::LongLong) : QVariant(number);
}

qint64 knownNumber(const QVariant& stored)
{
    return stored.isNull() ? -1 : stored.toLongLong();
}

Event readEvent(const QSqlQuery& query)
{
    Event event;
    int column = 0;
    event.id = query.value(column++).toLongLong();
    event.type = query.value(column++).toInt();
    event.state = query.value(column++).toInt();
    event.timeMs = query.value(column++).toLongLong();
    event.moduleName = query.value(column++).toString();
    event.keywords = readKeywords(query.value(column++).toString());
    event.eventId = query.value(column++).toString();
    event.timestamp = query.value(column++).toString();
    event.offsetSeconds = query.value(column++).toInt();
    event.icon = query.value(column++).toString();
    event.user = query.value(column++).toString();
    event.alarmId = query.value(column++).toString();
    event.sourceHashType = query.value(column++).toInt();
    event.sourceHashes = query.value(column++).toString();
    event.senderUid = knownNumber(query.value(column++));
    event.senderPid = knownNumber(query.value(column++));
    event.description = query.value(column++).toString();
    event.metaData = query.value(column++).toString();
    return event;
}

template<typename... Values>
void bindAll(QSqlQuery& query, const Values&... values)
{
    int position = 0;
    (query.bindValue(position++, values), ...);
}
} // namespace

EventStore::EventStore(Database& database, qint64 maximumRows, qint64 maximumBytes)
    : m_database(database), m_maximumRows(maximumRows), m_maximumBytes(maximumBytes)
{
}

bool EventStore::load()
{
    m_firstId = m_database.metaValue(firstIdKey()).toLongLong();
    QSqlQuery& query = m_database.statement(
        QStringLiteral("SELECT (SELECT count(*) FROM event WHERE id >= ?),"
                       " coalesce(max(id), 0), coalesce(min(id), 0) FROM event"));
    query.bindValue(0, m_firstId);
    if (!m_database.run(query) || !query.next())
    {
        return false;
    }
    m_rowCount = query.value(0).toLongLong();
    m_lastId =
        std::max(query.value(1).toLongLong(), m_database.metaValue(lastIdKey()).toLongLong());
    m_hasLeftovers = query.value(1).toLongLong() > 0 && query.value(2).toLongLong() < m_firstId;
    query.finish();
    return true;
}

bool EventStore::append(Event& event)
{
    event.id = m_lastId + 1;
    QSqlQuery& row = m_database.statement(
        QStringLiteral("INSERT INTO event(id, type, state, time_ms, module, keywords, event_id)"
                       " VALUES(?, ?, ?, ?, ?, ?, ?)"));
    bindAll(row, event.id, event.type, event.state, event.timeMs, text(event.moduleName),
            storedKeywords(event.keywords), text(event.eventId));
    QSqlQuery& content = m_database.statement(QStringLiteral(
        "INSERT INTO content(id, timestamp, offset_s, icon, description, user, metadata, alarm_id,"
        " source_hash_type, source_hashes, arrival_ms, uid, pid, road)"
        " VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    bindAll(content, event.id, text(event.timestamp), event.offsetSeconds, text(event.icon),
            text(event.description), text(event.user), text(event.metaData), text(event.alarmId),
            event.sourceHashType, text(event.sourceHashes), event.arrivalMs, known(event.senderUid),
            known(event.senderPid), int(event.road));
    if (!m_database.run(row) || !m_database.run(content))
    {
        return false;
    }
    m_lastId = event.id;
    ++m_rowCount;
    return true;
}

bool EventStore::prune()
{
    if (m_rowCount > m_maximumRows && !removeOldest(m_rowCount - m_maximumRows))
    {
        return false;
    }
    for (qint64 used = m_database.usedBytes();
         used > m_maximumBytes && m_rowCount > 1 && !m_hasLeftovers; used = m_database.usedBytes())
    {
        // A hundredth more than needed: the next event shall not find the file full again.
        const double share = double(used - m_maximumBytes) / double(used) + 0.01;
        const qint64 rows = qint64(double(m_rowCount) * share) + 1;
        if (!removeOldest(std::min(rows, m_rowCount - 1)))
        {
            return false;
        }
    }
    return m_database.failure() == Database::Failure::none;
}

bool EventStore::removeAll()
{
    m_hasLeftovers = m_hasLeftovers || m_rowCount > 0;
    m_rowCount = 0;
    m_firstId = m_lastId + 1;
    return m_database.setMetaValue(firstIdKey(), m_firstId) && saveCounters();
}

bool EventStore::purge(int rows)
{
    QSqlQuery& bound = m_database.statement(
        QStringLiteral("SELECT id FROM event WHERE id < ? ORDER BY id LIMIT 1 OFFSET ?"));
    bound.bindValue(0, m_firstId);
    bound.bindValue(1, rows);
    if (!m_database.run(bound))
    {
        return false;
    }
    const bool isMoreLeft = bound.next();
    const qint64 end = isMoreLeft ? bound.value(0).toLongLong() : m_firstId;
    bound.finish();
    m_hasLeftovers = isMoreLeft;
    return removeBetween(0, end - 1);
}

bool EventStore::saveCounters()
{
    return m_database.setMetaValue(lastIdKey(), m_lastId);
}

bool EventStore::read(const EventFilter& filter, const EventColumns& columns, ListAnswer& answer)
{
    if (filter.matchesNothing)
    {
        return true;
    }
    EventFilter visible = filter;
    visible.firstId = std::max(filter.firstId, m_firstId);
    const Selection selected = selection(visible, columns);
    // Not among the kept statements: the text depends on the lengths of the lists.
    QSqlQuery query = m_database.unkept(selected.sql);
    for (int i = 0; i < selected.values.size(); ++i)
    {
        query.bindValue(i, selected.values.at(i));
    }
    if (!m_database.run(query))
    {
        return false;
    }
    while (query.next())
    {
        if (!answer.add(columns.row(readEvent(query), filter.language)))
        {
            return true;
        }
    }
    return m_database.isFine(query);
}

bool EventStore::rememberSpoolFile(const SpoolKey& key, bool& isRepeated)
{
    QSqlQuery& insertion = m_database.statement(QStringLiteral(
        "INSERT OR IGNORE INTO spool_seen(device, inode, mtime_ns, sha256) VALUES(?, ?, ?, ?)"));
    bindAll(insertion, qint64(key.device), qint64(key.inode), key.modifiedNs, key.sha256);
    if (!m_database.run(insertion))
    {
        return false;
    }
    isRepeated = insertion.numRowsAffected() == 0;
    if (isRepeated)
    {
        return true;
    }
    QSqlQuery& removal = m_database.statement(QStringLiteral(
        "DELETE FROM spool_seen WHERE number <= (SELECT max(number) FROM spool_seen) - ?"));
    removal.bindValue(0, spoolKeysKept);
    return m_database.run(removal);
}

bool EventStore::removeOldest(qint64 rows)
{
    // Numbers have gaps where a file was put aside, so that the bound is searched for.
    QSqlQuery& bound = m_database.statement(
        QStringLiteral("SELECT id FROM event WHERE id >= ? ORDER BY id LIMIT 1 OFFSET ?"));
    bound.bindValue(0, m_firstId);
    bound.bindValue(1, rows - 1);
    if (!m_database.run(bound) || !bound.next())
    {
        return false;
    }
    const qint64 last = bound.value(0).toLongLong();
    bound.finish();
    m_rowCount -= rows;
    return removeBetween(m_firstId, last);
}

bool EventStore::removeBetween(qint64 firstId, qint64 lastId)
{
    for (const char* sql : {"DELETE FROM event WHERE id BETWEEN ? AND ?",
                            "DELETE FROM content WHERE id BETWEEN ? AND ?"})
    {
        QSqlQuery& query = m_database.statement(QLatin1String(sql));
        query.bindValue(0, firstId);
        query.bindValue(1, lastId);
        if (!m_database.run(query))
        {
            return false;
        }
    }
    return true;
}

} // namespace eventlistd
