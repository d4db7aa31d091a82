#pragma once

#include "core/Event.h"

#include <QString>
#include <QStringList>

#include <deque>

namespace eventlistd
{

/// Something that changes the lists, from its call to the end of its transaction.
struct Work
{
    enum class Kind
    {
        event,
        /// The first start after the device was switched on.
        powerOn,
        deletion,
        acknowledgement,
        detectorAcknowledgement
    };
    Kind kind = Kind::event;
    Event event;
    QStringList alarmIds;
    QString user;
    QString sender;
    qint64 arrivalMs = 0; ///< of an acknowledgement
    qint64 size = 0;      ///< in bytes, about
};

/// What waits to be written, the oldest first. It knows how much that is, and bounds nothing by
/// itself.
class WorkQueue
{
public:
    bool isEmpty() const { return m_works.empty(); }
    int count() const { return int(m_works.size()); }

    /// All sizes together.
    qint64 size() const { return m_size; }

    /// When the queue was last filled from empty, by the clock of monotonicMs().
    qint64 filledSinceMs() const { return m_filledSinceMs; }

    /// The one at a place, 0 being the oldest.
    Work& at(int place) { return m_works[std::size_t(place)]; }

    void append(Work work);

    /// Before all others.
    void prepend(Work work);

    /// Forgets the oldest ones.
    void removeFirst(int count);

private:
    std::deque<Work> m_works;
    qint64 m_size = 0;
    qint64 m_filledSinceMs = 0;
};

} // namespace eventlistd
