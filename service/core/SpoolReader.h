#pragma once

#include "core/Event.h"
#include "core/LogLimiter.h"
#include "core/SpoolKey.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QSet>
#include <QTimer>
#include <QVector>

#include <deque>
#include <functional>

namespace eventlistd
{

class EventDecoder;

/// Brings the events of the spool folder into the list, each exactly once.
///
/// A file is first renamed into "claimed/": from then on nobody replaces it. It is read, stored
/// together with a key that tells it from every other file, and only then removed. Whatever a crash
/// leaves in "claimed/" is gone through again at the next start, where the key tells what is stored
/// already. A file that cannot be understood goes to "rejected/", of which the newest are kept.
///
/// Anybody who may write into the folder is expected to try everything: links, pipes, files that
/// claim to be endless. Small plain files come first, and among many bad ones the newest file takes
/// turns with the oldest, so that nothing of this delays a good one.
class SpoolReader : public QObject
{
    Q_OBJECT
public:
    struct Item
    {
        Event event;
        SpoolKey key;
    };
    /// Stores events with their keys, all or none.
    /// \return false when they are not stored; their files are offered again later
    using Store = std::function<bool(QVector<Item>& items)>;

    struct Settings
    {
        QString folder;
        int filesPerBatch = 64;
        int rejectedFiles = 100;
        qint64 rejectedBytes = 16 * 1024 * 1024;
        /// The folder is looked through this often, whatever the kernel tells or does not tell.
        int rescanMs = 2000;
        /// What does not end like a spool file is what a killed writer left; after this time it
        /// goes.
        qint64 strayAgeMs = 3600 * 1000;
    };

    /// \param decoder  must outlive this
    SpoolReader(const Settings& settings, const EventDecoder& decoder, Store store,
                QObject* parent = nullptr);
    ~SpoolReader() override;

    /// Begins to work, from the event loop.
    void start();

    /// While it is paused every file stays where it is.
    void setPaused(bool isPaused);

    /// Works until nothing is left to do at this moment: for an orderly start, and for tests.
    void drain();

    /// Files that were rejected since the start.
    qint64 rejectedCount() const { return m_rejectedCount; }

private:
    struct Folders;
    struct Candidate
    {
        QByteArray name;
        qint64 modifiedNs;
    };
    struct Claimed
    {
        QByteArray name;
        Item item;
    };
    struct Rejected
    {
        QByteArray name;
        qint64 bytes;
    };

    void schedule();
    void turn();
    bool work();
    bool workOnClaimed(const Folders& folders);
    bool workOnNew(const Folders& folders);
    bool storeAndRemove(const Folders& folders, QVector<Claimed>& claimed);
    void watch();
    void scan(const Folders& folders);
    void scanEntry(const Folders& folders, const char* name);
    Candidate nextCandidate(int turn);
    bool isRefusedUnread(const Folders& folders, const Candidate& candidate);
    QByteArray claim(const Folders& folders, const QByteArray& name);
    bool take(const Folders& folders, const QByteArray& name, Claimed& claimed);
    void reject(const Folders& folders, int folder, const QByteArray& name, const QString& reason);
    void boundRejected(const Folders& folders);
    QByteArray uniqueName();
    void warn(const QString& name, const QString& reason);

    // Fixed at construction.
    const Settings m_settings;
    const EventDecoder& m_decoder;
    const Store m_store;
    // What drives it.
    QFileSystemWatcher m_watcher;
    QTimer m_rescanTimer;
    QTimer m_turnTimer;
    bool m_isStarted = false;
    bool m_isPaused = false;
    // What is known of the folders.
    bool m_mayHaveClaimed = true;
    bool m_isScanWanted = true;
    qint64 m_lastScanMs = 0;
    // The oldest first: small plain files, and everything else.
    std::deque<Candidate> m_plain;
    std::deque<Candidate> m_others;
    bool m_isFlooded = false;
    qint64 m_rejectedWhenCalm = 0;
    std::deque<Rejected> m_rejected;
    qint64 m_rejectedBytes = 0;
    bool m_isRejectedKnown = false;
    // Log and counts.
    LogLimiter m_limiter;
    QSet<QByteArray> m_ignoredFolders;
    qint64 m_rejectedCount = 0;
    quint64 m_nameCounter = 0;
};

} // namespace eventlistd
