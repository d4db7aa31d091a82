#pragma once

#include "TestSupport/ChildProcess.h"

#include <QString>
#include <QTemporaryDir>
#include <QVector>

#include <memory>

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

    JournalService();

    /// Starts the service and waits until it owns its name.
    bool start();

    /// Starts a second one, which gets the name when the first one ends; waits until it stands by.
    bool startStandby();

    /// Waits until the one that stood by owns the name. It is the service from then on.
    bool takeOver();

    /// Waits until the service has ended.
    /// \returns false when it did not end in time.
    bool waitForEnd();

    qint64 processId() const;

    bool freeze();
    void thaw();

    /// All that has arrived until now.
    /// Failure: empty when there is an entry that is neither a start nor the number of an event.
    QVector<Entry> entries() const;

private:
    bool launch(ChildProcess& process, const QStringList& further,
                const QByteArray& firstLine) const;

    const QTemporaryDir m_folder;
    std::unique_ptr<ChildProcess> m_process;
    std::unique_ptr<ChildProcess> m_standby;
};
