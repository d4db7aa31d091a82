#pragma once

#include "core/Event.h"
#include "core/EventFilter.h"
#include "core/ListAnswer.h"
#include "core/SpoolKey.h"

class QSqlQuery;

namespace eventlistd
{

class Database;

/// The event list in the database: appending, reading, bounding. Changes are made inside a
/// transaction of the caller.
/// After a failure, and after a transaction that was rolled back, load() brings the counters back.
class EventStore
{
public:
    /// \param maximumRows   more rows than this are not kept; the oldest go
    /// \param maximumBytes  the same for the bytes of the file that are in use
    EventStore(Database& database, qint64 maximumRows, qint64 maximumBytes);

    /// Reads the counters.
    bool load();

    /// Stores an event at the end of the list and gives it its number.
    bool append(Event& event);

    /// Removes the oldest events until the bounds hold.
    bool prune();

    /// Removes all events. Numbers go on counting. The rows of a large list are only hidden at once;
    /// purge() takes them away piece by piece, because that reads them all.
    bool removeAll();

    /// True while hidden rows are there.
    bool hasLeftovers() const { return m_hasLeftovers; }

    /// Takes away so many of the hidden rows.
    bool purge(int rows);

    /// Makes the numbers given out durable. The last step of a transaction that appended.
    bool saveCounters();

    /// The events that the filter selects.
    /// Failure: false; the answer then holds what was read until then.
    bool read(const EventFilter& filter, const class EventColumns& columns, ListAnswer& answer);

    /// Remembers that the event of a spool file is stored. In the transaction that stores it.
    /// \param isRepeated  is set: it was stored before, and is not to be stored again
    bool rememberSpoolFile(const SpoolKey& key, bool& isRepeated);

    qint64 rowCount() const { return m_rowCount; }
    qint64 lastId() const { return m_lastId; }

private:
    bool removeOldest(qint64 rows);
    bool removeBetween(qint64 firstId, qint64 lastId);

    Database& m_database;
    // Fixed at construction.
    const qint64 m_maximumRows;
    const qint64 m_maximumBytes;
    // As the open transaction will leave the file.
    qint64 m_lastId = 0;
    qint64 m_rowCount = 0;
    qint64 m_firstId = 0; ///< what lies before was deleted
    bool m_hasLeftovers = false;
};

} // namespace eventlistd
