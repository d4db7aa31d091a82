#pragma once

#include "TestSupport/ChildProcess.h"

#include <QString>
#include <QTemporaryDir>
#include <QVector>

/// The journal service in a process of its own, as the central service. Its journal outlives every
/// kill. It ends together with its bus.
class JournalService
{
public:
    struct Entry
    {
        qint64 timeNs = 0;
        /// -1 for the start of the service.
        int event = -1;
    };

    /// Starts the service and waits until it owns its name.
    bool start();

    /// Has a process killed just behind an event, in a moment when no event waits to be read.
    /// \param processId  the daemon of the bus, whose end is that of the service; 0 for the service itself
    /// \returns false when the service did not end in time.
    bool killBehindEvent(qint64 processId = 0);

    /// All that has arrived until now.
    /// Failure: empty when there is an entry that is neither a start nor the number of an event.
    QVector<Entry> entries() const;

private:
    const QTemporaryDir m_folder;
    ChildProcess m_process;
};
