#pragma once

#include "core/Event.h"
#include "core/ListAnswer.h"
#include "core/LogLimiter.h"

#include <QHash>
#include <QVariantMap>

namespace eventlistd
{

class Database;

/// The alarm list: what needs somebody's attention now.
///
/// An alarm or fault enters when it becomes active and leaves when it is both inactive and
/// acknowledged. One alarm id is one row, however often it comes and goes; when it comes again
/// after it has gone, it needs a new acknowledgement. A neutral event is none of this. An alarm
/// without an id is known under "-<module>/<event id>", so that it can be acknowledged too.
///
/// Changes are made inside a transaction of the caller; after one that was rolled back, load()
/// brings the memory back to the file.
class AlarmList
{
public:
    /// What the signals report.
    struct States
    {
        bool hasAlarm = false;
        bool hasActiveAlarm = false;
        bool hasFault = false;
        bool hasActiveFault = false;
        bool isCentralDetectorActive = false;
    };

    enum class Effect
    {
        none,
        changed,
        /// A new alarm or fault, or one that has come again.
        occurred,
        /// The same; others that were gone, but not acknowledged, have given way to it.
        displaced,
        /// There was no room, and nothing was changed; the alarm stands in the event list only.
        overflow,
        /// Nobody knows the alarm that was named.
        unknown,
        failed
    };

    /// \param maximumRows   no more than this; the oldest that are gone give way first, and an
    ///                      active one never does
    /// \param maximumSize   the same for their texts, in UTF-16 units
    AlarmList(Database& database, int maximumRows, qint64 maximumSize);

    bool load();

    /// Takes an event that stands in the event list.
    Effect apply(const Event& event);

    /// Acknowledges exactly the named alarm. One that is acknowledged already stays with the first
    /// who did.
    /// \param alarm  is filled with the alarm when it changed
    Effect acknowledge(const QString& alarmId, const QString& user, qint64 unixTimeMs,
                       Event& alarm);

    /// Counts every alarm as gone: whoever could have said so lives no more. What is acknowledged
    /// leaves, the other rows stay until they are.
    Effect endAll();

    /// \return changed, none when it was so already, or failed
    Effect setCentralDetector(bool isActive);

    /// Counts an acknowledgement of something that is not in the list.
    bool countRefused();

    const States& states() const { return m_states; }
    qint64 refusedCount() const { return m_refused; }
    /// States and count as they are answered on the bus.
    QVariantMap stateAnswer() const;
    int rowCount() const { return m_rows.size(); }

    /// The columns of the event list, and what is known of the alarm beside.
    static QStringList header();

    /// All rows, the newest occurrence first.
    bool read(const QString& language, ListAnswer& answer);

    /// The id under which an alarm or fault is known here.
    static QString idOf(const Event& event);

private:
    struct Row
    {
        qint64 eventId; ///< of the event with which it came
        int type;
        bool isActive;
        bool isAcknowledged;
        qint64 size;
    };

    Effect applyActive(const Event& event, const QString& id);
    Effect applyInactive(const QString& id);
    bool canFit(qint64 size) const;
    bool isRoom(qint64 size) const;
    bool removeOldestGone();
    bool write(const Event& event, const QString& id);
    bool remove(const QString& id);
    bool readAlarm(const QString& id, Event& alarm);
    void count(const Row& row, int direction);
    void updateStates();

    Database& m_database;
    // Fixed at construction.
    const int m_maximumRows;
    const qint64 m_maximumSize;
    // As the open transaction will leave the file.
    QHash<QString, Row> m_rows;
    qint64 m_sizes[2] = {0, 0};            ///< by active or not
    int m_counts[2][2] = {{0, 0}, {0, 0}}; ///< by fault or not, by active or not
    bool m_isCentralDetectorActive = false;
    qint64 m_refused = 0;
    States m_states;
    LogLimiter m_limiter;
};

bool operator==(const AlarmList::States& a, const AlarmList::States& b);

} // namespace eventlistd
