#include "core/AlarmList.h"

#include "core/Database.h"
#include "core/EventColumns.h"
#include "core/KeywordText.h"
#include "core/Names.h"

#include "Platform/IsoDateConverter.h"

#include <QDateTime>
#include <QDebug>
#include <QVariant>

namespace eventlistd
{

namespace
{

QString detectorKey()
{
    return QStringLiteral("central_detector");
}

QString refusedKey()
{
    return QStringLiteral("refused_acknowledgements");
}

QString columnsOfEvent()
{
    return QStringLiteral("event, type, state, time_ms, module, keywords, event_id, timestamp,"
                          " offset_s, icon, description, user, metadata, source_hash_type,"
                          " source_hashes, alarm_id");
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
    const QString keywords = query.value(column++).toString();
    event.keywords = keywords.isEmpty() ? QStringList() : splitKeywords(keywords);
    event.eventId = query.value(column++).toString();
    event.timestamp = query.value(column++).toString();
    event.offsetSeconds = query.value(column++).toInt();
    event.icon = query.value(column++).toString();
    event.description = query.value(column++).toString();
    event.user = query.value(column++).toString();
    event.metaData = query.value(column++).toString();
    event.sourceHashType = query.value(column++).toInt();
    event.sourceHashes = query.value(column++).toString();
    event.alarmId = query.value(column++).toString();
    return event;
}

QString digit(bool isOn)
{
    return isOn ? QStringLiteral("1") : QStringLiteral("0");
}

QString timeText(qint64 unixTimeMs, int offsetSeconds)
{
    return IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(
        QDateTime::fromMSecsSinceEpoch(unixTimeMs, Qt::OffsetFromUTC, offsetSeconds));
}
} // namespace

bool operator==(const AlarmList::States& a, const AlarmList::States& b)
{
    return a.hasAlarm == b.hasAlarm && a.hasActiveAlarm == b.hasActiveAlarm &&
           a.hasFault == b.hasFault && a.hasActiveFault == b.hasActiveFault &&
           a.isCentralDetectorActive == b.isCentralDetectorActive;
}

AlarmList::AlarmList(Database& database, int maximumRows, qint64 maximumSize)
    : m_database(database), m_maximumRows(maximumRows), m_maximumSize(maximumSize)
{
}

bool AlarmList::load()
{
    m_rows.clear();
    m_sizes[0] = m_sizes[1] = 0;
    for (auto& byActivity : m_counts)
    {
        byActivity[0] = byActivity[1] = 0;
    }
    QSqlQuery& query = m_database.statement(
        QStringLiteral("SELECT alarm_id, event, type, active, acknowledged, size FROM alarm"));
    if (!m_database.run(query))
    {
        return false;
    }
    while (query.next())
    {
        const Row row{query.value(1).toLongLong(), query.value(2).toInt(), query.value(3).toBool(),
                      query.value(4).toBool(), query.value(5).toLongLong()};
        m_rows.insert(query.value(0).toString(), row);
        count(row, 1);
    }
    const bool isFine = m_database.isFine(query);
    query.finish();
    m_isCentralDetectorActive = m_database.metaValue(detectorKey()).toBool();
    m_refused = m_database.metaValue(refusedKey()).toLongLong();
    updateStates();
    return isFine;
}

AlarmList::Effect AlarmList::apply(const Event& event)
{
    if ((event.type != alarm && event.type != fault) ||
        (event.state != active && event.state != inactive))
    {
        return Effect::none;
    }
    const QString id = idOf(event);
    const Effect effect = event.state == active ? applyActive(event, id) : applyInactive(id);
    updateStates();
    return effect;
}

AlarmList::Effect AlarmList::acknowledge(const QString& alarmId, const QString& user,
                                         qint64 unixTimeMs, Event& alarm)
{
    const auto found = m_rows.find(alarmId);
    if (found == m_rows.end())
    {
        return Effect::unknown;
    }
    if (found->isAcknowledged)
    {
        return Effect::none;
    }
    if (!readAlarm(alarmId, alarm))
    {
        return Effect::failed;
    }
    if (!found->isActive)
    {
        const bool isRemoved = remove(alarmId);
        updateStates();
        return isRemoved ? Effect::changed : Effect::failed;
    }
    QSqlQuery& query = m_database.statement(
        QStringLiteral("UPDATE alarm SET acknowledged = 1, acknowledged_by = ?,"
                       " acknowledged_ms = ?, acknowledged_offset_s = ? WHERE alarm_id = ?"));
    query.bindValue(0, user);
    query.bindValue(1, unixTimeMs);
    query.bindValue(2, QDateTime::fromMSecsSinceEpoch(unixTimeMs).offsetFromUtc());
    query.bindValue(3, alarmId);
    if (!m_database.run(query))
    {
        return Effect::failed;
    }
    found->isAcknowledged = true;
    return Effect::changed;
}

AlarmList::Effect AlarmList::endAll()
{
    if (!m_states.hasActiveAlarm && !m_states.hasActiveFault)
    {
        return Effect::none;
    }
    const bool isDone =
        m_database.run(QStringLiteral("DELETE FROM alarm WHERE active = 1 AND acknowledged = 1")) &&
        m_database.run(QStringLiteral("UPDATE alarm SET active = 0 WHERE active = 1")) && load();
    return isDone ? Effect::changed : Effect::failed;
}

AlarmList::Effect AlarmList::setCentralDetector(bool isActive)
{
    if (m_isCentralDetectorActive == isActive)
    {
        return Effect::none;
    }
    if (!m_database.setMetaValue(detectorKey(), int(isActive)))
    {
        return Effect::failed;
    }
    m_isCentralDetectorActive = isActive;
    updateStates();
    return Effect::changed;
}

bool AlarmList::countRefused()
{
    ++m_refused;
    return m_database.setMetaValue(refusedKey(), m_refused);
}

QStringList AlarmList::header()
{
    return EventColumns().header() + QStringList{names::alarmActive(), names::alarmAcknowledgment(),
                                                 names::acknowledgedBy(), names::acknowledgedAt()};
}

bool AlarmList::read(const QString& language, ListAnswer& answer)
{
    const EventColumns columns;
    QSqlQuery& query = m_database.statement(
        QStringLiteral("SELECT ") + columnsOfEvent() +
        QStringLiteral(", active, acknowledged, acknowledged_by, acknowledged_ms,"
                       " acknowledged_offset_s FROM alarm ORDER BY event DESC"));
    if (!m_database.run(query))
    {
        return false;
    }
    constexpr int firstOwn = 16;
    bool isRoom = true;
    while (isRoom && query.next())
    {
        const bool isAcknowledged = query.value(firstOwn + 1).toBool();
        QStringList row = columns.row(readEvent(query), language);
        row << digit(query.value(firstOwn).toBool()) << digit(isAcknowledged)
            << query.value(firstOwn + 2).toString()
            << (isAcknowledged ? timeText(query.value(firstOwn + 3).toLongLong(),
                                          query.value(firstOwn + 4).toInt())
                               : QString());
        isRoom = answer.add(row);
    }
    const bool isFine = m_database.isFine(query);
    query.finish();
    return isFine;
}

QString AlarmList::idOf(const Event& event)
{
    return event.alarmId.isEmpty()
               ? QLatin1Char('-') + event.moduleName + QLatin1Char('/') + event.eventId
               : event.alarmId;
}

AlarmList::Effect AlarmList::applyActive(const Event& event, const QString& id)
{
    const auto found = m_rows.find(id);
    if (found != m_rows.end() && found->isActive)
    {
        // It was told twice, by a sender that keeps its alarm ids: the same occurrence. What it
        // says now is shown, and an acknowledgement stays.
        Event before;
        if (!readAlarm(id, before))
        {
            return Effect::failed;
        }
        if (before.description == event.description && before.type == event.type &&
            before.icon == event.icon)
        {
            return Effect::none;
        }
        QSqlQuery& query = m_database.statement(
            QStringLiteral("UPDATE alarm SET type = ?, icon = ?, description = ?, metadata = ?,"
                           " size = ? WHERE alarm_id = ?"));
        query.bindValue(0, event.type);
        query.bindValue(1, event.icon);
        query.bindValue(2, event.description);
        query.bindValue(3, event.metaData);
        query.bindValue(4, event.size());
        query.bindValue(5, id);
        count(*found, -1);
        found->type = event.type;
        found->size = event.size();
        count(*found, 1);
        return m_database.run(query) ? Effect::changed : Effect::failed;
    }
    if (!canFit(event.size()))
    {
        return Effect::overflow;
    }
    if (found != m_rows.end() && !remove(id))
    {
        return Effect::failed;
    }
    Effect effect = Effect::occurred;
    while (!isRoom(event.size()))
    {
        if (!removeOldestGone())
        {
            return Effect::failed;
        }
        effect = Effect::displaced;
    }
    return write(event, id) ? effect : Effect::failed;
}

AlarmList::Effect AlarmList::applyInactive(const QString& id)
{
    const auto found = m_rows.find(id);
    if (found == m_rows.end() || !found->isActive)
    {
        return Effect::none;
    }
    if (found->isAcknowledged)
    {
        return remove(id) ? Effect::changed : Effect::failed;
    }
    QSqlQuery& query =
        m_database.statement(QStringLiteral("UPDATE alarm SET active = 0 WHERE alarm_id = ?"));
    query.bindValue(0, id);
    if (!m_database.run(query))
    {
        return Effect::failed;
    }
    count(*found, -1);
    found->isActive = false;
    count(*found, 1);
    return Effect::changed;
}

// What is gone gives way, all of it if need be; one that comes again replaces its own row.
bool AlarmList::canFit(qint64 size) const
{
    return m_counts[0][1] + m_counts[1][1] < m_maximumRows && m_sizes[1] + size <= m_maximumSize;
}

bool AlarmList::isRoom(qint64 size) const
{
    return m_rows.size() < m_maximumRows && m_sizes[0] + m_sizes[1] + size <= m_maximumSize;
}

bool AlarmList::removeOldestGone()
{
    QString oldest;
    qint64 oldestEvent = 0;
    for (auto it = m_rows.constBegin(); it != m_rows.constEnd(); ++it)
    {
        if (!it->isActive && (oldest.isNull() || it->eventId < oldestEvent))
        {
            oldest = it.key();
            oldestEvent = it->eventId;
        }
    }
    if (m_limiter.allows())
    {
        qWarning() << "The alarm list is full:" << shortened(oldest)
                   << "gives way without having been acknowledged";
    }
    return remove(oldest);
}

bool AlarmList::write(const Event& event, const QString& id)
{
    QSqlQuery& query = m_database.statement(
        QStringLiteral("INSERT INTO alarm(") + columnsOfEvent() +
        QStringLiteral(", active, acknowledged, size)"
                       " VALUES(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, 1, 0, ?)"));
    int column = 0;
    for (const QVariant& value :
         QVariantList{event.id, event.type, event.state, event.timeMs, event.moduleName,
                      joinedKeywords(event.keywords), event.eventId, event.timestamp,
                      event.offsetSeconds, event.icon, event.description, event.user,
                      event.metaData, event.sourceHashType, event.sourceHashes, id, event.size()})
    {
        query.bindValue(column++, value);
    }
    if (!m_database.run(query))
    {
        return false;
    }
    const Row row{event.id, event.type, true, false, event.size()};
    m_rows.insert(id, row);
    count(row, 1);
    return true;
}

bool AlarmList::remove(const QString& id)
{
    QSqlQuery& query = m_database.statement(QStringLiteral("DELETE FROM alarm WHERE alarm_id = ?"));
    query.bindValue(0, id);
    if (!m_database.run(query))
    {
        return false;
    }
    count(m_rows.take(id), -1);
    return true;
}

bool AlarmList::readAlarm(const QString& id, Event& alarm)
{
    QSqlQuery& query = m_database.statement(QStringLiteral("SELECT ") + columnsOfEvent() +
                                            QStringLiteral(" FROM alarm WHERE alarm_id = ?"));
    query.bindValue(0, id);
    const bool isThere = m_database.run(query) && query.next();
    if (isThere)
    {
        alarm = readEvent(query);
    }
    query.finish();
    return isThere;
}

void AlarmList::count(const Row& row, int direction)
{
    m_counts[row.type == fault][row.isActive] += direction;
    m_sizes[row.isActive] += direction * row.size;
}

void AlarmList::updateStates()
{
    m_states = {m_counts[0][0] + m_counts[0][1] > 0, m_counts[0][1] > 0,
                m_counts[1][0] + m_counts[1][1] > 0, m_counts[1][1] > 0, m_isCentralDetectorActive};
}

QVariantMap AlarmList::stateAnswer() const
{
    return {{QStringLiteral("AlarmInAlarmlist"), m_states.hasAlarm},
            {QStringLiteral("ActiveAlarmInAlarmlist"), m_states.hasActiveAlarm},
            {QStringLiteral("FaultInAlarmlist"), m_states.hasFault},
            {QStringLiteral("ActiveFaultInAlarmlist"), m_states.hasActiveFault},
            {QStringLiteral("CentralDetector"), m_states.isCentralDetectorActive},
            {QStringLiteral("RefusedAcknowledgements"), m_refused}};
}

} // namespace eventlistd
