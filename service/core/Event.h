#pragma once

#include <QString>
#include <QStringList>

namespace eventlistd
{

/// The kinds of events, as the numbers in which they travel.
enum EventType : int
{
    alarm = 0,
    auditTrail = 1,
    fault = 2,
    otherEvents = 3
};

/// Whether an event begins or ends something; neutral does neither.
enum EventState : int
{
    neutral = 0,
    active = 1,
    inactive = 2
};

/// On which road an event came.
enum class Road : int
{
    bus = 0,
    spool = 1,
    own = 2
};

/// One event on its way into the list. A plain value.
struct Event
{
    /// Number in the list; 0 as long as the event is not stored. Never given twice.
    qint64 id = 0;

    // What the sender claims.
    int type = otherEvents;
    int state = neutral;
    QString icon;
    QString timestamp; ///< as it came, or made from the arrival when it came unreadable
    QString moduleName;
    QString description; ///< JSON text of the text object: language key to sentence
    QStringList keywords;
    QString user;
    QString eventId;
    QString metaData; ///< JSON text
    QString alarmId;
    int sourceHashType = 0;
    QString sourceHashes;

    // What the service makes of it.
    qint64 timeMs = 0;     ///< timestamp as Unix time
    int offsetSeconds = 0; ///< offset of the timestamp from UTC

    // What the service knows.
    qint64 arrivalMs = 0;
    qint64 senderUid = -1; ///< user of the sending process, or owner of the spool file; -1: unknown
    qint64 senderPid = -1; ///< -1: unknown
    Road road = Road::bus;

    /// Size that counts for the limits, in UTF-16 units.
    qint64 size() const;

    /// Sets the arrival and reads the time stamp. A stamp that is empty, unreadable or longer than
    /// any time stamp is replaced by the arrival in local time: the event counts, not its clock.
    void setArrival(qint64 unixTimeMs);
};

/// An event larger than this is refused, in UTF-16 units: it would not fit beside others into an
/// answer, and no sentence is that long.
constexpr qint64 maximumEventSize = 1024 * 1024;

} // namespace eventlistd
