#include "core/SpoolReader.h"

#include "core/EventDecoder.h"
#include "core/MonotonicClock.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace eventlistd
{

namespace
{
constexpr char spoolEnding[] = ".event.json";
constexpr qint64 maximumFileSize = 1024 * 1024;
// Larger files wait until the others are read.
constexpr qint64 plainFileSize = 64 * 1024;
constexpr qint64 turnMs = 100;
constexpr qint64 scanIntervalMs = 200;
constexpr std::size_t candidatesKept = 50000;
// So many bad files since the folder was empty are no accident.
constexpr qint64 floodOfRejected = 16;

qint64 modifiedNs(const struct stat& status)
{
    return qint64(status.st_mtim.tv_sec) * 1000000000 + status.st_mtim.tv_nsec;
}

QString reasonOf(int error)
{
    return QString::fromLocal8Bit(std::strerror(error));
}

// Reads at most one byte more than a spool file may have, whatever the file claims to have.
bool readAll(int file, qint64 claimedSize, QByteArray& content)
{
    content.resize(int(claimedSize) + 1);
    int length = 0;
    for (;;)
    {
        const ssize_t count =
            ::read(file, content.data() + length, size_t(content.size() - length));
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        length += int(std::max<ssize_t>(count, 0));
        if (count == 0 || length > maximumFileSize)
        {
            break;
        }
        if (length == content.size())
        {
            content.resize(int(maximumFileSize) + 1);
        }
    }
    content.resize(length);
    return true;
}

using Directory = std::unique_ptr<DIR, int (*)(DIR*)>;

Directory openDirectory(int folder)
{
    // A descriptor of its own: the position of a directory belongs to all its copies.
    const int file = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* directory = file < 0 ? nullptr : ::fdopendir(file);
    if (directory == nullptr && file >= 0)
    {
        ::close(file);
    }
    return Directory(directory, [](DIR* open) { return open != nullptr ? ::closedir(open) : 0; });
}
} // namespace

// The three folders, held open for one turn: names are then looked up in these and nowhere else.
struct SpoolReader::Folders
{
    explicit Folders(const QString& path)
    {
        spool = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        claimed = below("claimed");
        rejected = below("rejected");
    }
    ~Folders()
    {
        for (const int folder : {spool, claimed, rejected})
        {
            if (folder >= 0)
            {
                ::close(folder);
            }
        }
    }
    Q_DISABLE_COPY(Folders)

    int below(const char* name) const
    {
        if (spool < 0 || (::mkdirat(spool, name, 0700) != 0 && errno != EEXIST))
        {
            return -1;
        }
        return ::openat(spool, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    }
    bool areOpen() const { return spool >= 0 && claimed >= 0 && rejected >= 0; }

    int spool = -1;
    int claimed = -1;
    int rejected = -1;
};

SpoolReader::SpoolReader(const Settings& settings, const EventDecoder& decoder, Store store,
                         QObject* parent)
    : QObject(parent), m_settings(settings), m_decoder(decoder), m_store(std::move(store))
{
    m_turnTimer.setSingleShot(true);
    m_turnTimer.setInterval(0);
    m_rescanTimer.setInterval(m_settings.rescanMs);
    QObject::connect(&m_turnTimer, &QTimer::timeout, this, &SpoolReader::turn);
    QObject::connect(&m_rescanTimer, &QTimer::timeout, this, &SpoolReader::schedule);
    QObject::connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this,
                     &SpoolReader::schedule);
}

SpoolReader::~SpoolReader() = default;

void SpoolReader::start()
{
    m_isStarted = true;
    watch();
    m_rescanTimer.start();
    schedule();
}

void SpoolReader::setPaused(bool isPaused)
{
    m_isPaused = isPaused;
    schedule();
}

void SpoolReader::drain()
{
    m_isScanWanted = true;
    m_lastScanMs = 0;
    while (!m_isPaused && work())
    {
    }
}

void SpoolReader::schedule()
{
    m_isScanWanted = true;
    if (m_isStarted && !m_isPaused && !m_turnTimer.isActive())
    {
        m_turnTimer.start();
    }
}

void SpoolReader::turn()
{
    watch();
    if (!m_isPaused && work())
    {
        m_turnTimer.start();
    }
}

// True when there is more to do at once.
bool SpoolReader::work()
{
    const Folders folders(m_settings.folder);
    if (!folders.areOpen())
    {
        warn(m_settings.folder, reasonOf(errno));
        m_plain.clear();
        m_others.clear();
        return false;
    }
    boundRejected(folders);
    return m_mayHaveClaimed ? workOnClaimed(folders) : workOnNew(folders);
}

bool SpoolReader::workOnClaimed(const Folders& folders)
{
    QVector<QByteArray> names;
    const Directory directory = openDirectory(folders.claimed);
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr)
    {
        const QByteArray name = entry->d_name;
        if (name != "." && name != ".." && names.size() < m_settings.filesPerBatch)
        {
            names.append(name);
        }
    }
    if (names.isEmpty())
    {
        m_mayHaveClaimed = false;
        return true;
    }
    // The names tell the order in which they were claimed.
    std::sort(names.begin(), names.end());
    QVector<Claimed> claimed;
    bool isAnyGone = false;
    for (const QByteArray& name : qAsConst(names))
    {
        Claimed taken;
        if (take(folders, name, taken))
        {
            claimed.append(taken);
        }
        else
        {
            isAnyGone |=
                ::faccessat(folders.claimed, name.constData(), F_OK, AT_SYMLINK_NOFOLLOW) != 0;
        }
    }
    // What can neither be read nor moved must not keep the turn going for ever.
    return storeAndRemove(folders, claimed) && (isAnyGone || !claimed.isEmpty());
}

bool SpoolReader::workOnNew(const Folders& folders)
{
    const qint64 begin = monotonicMs();
    const auto isAnyLeft = [this] { return !m_plain.empty() || !m_others.empty(); };
    if (m_isScanWanted && (!isAnyLeft() || begin - m_lastScanMs >= scanIntervalMs))
    {
        m_isScanWanted = false;
        scan(folders);
        m_lastScanMs = monotonicMs();
        if (!isAnyLeft())
        {
            m_isFlooded = false;
            m_rejectedWhenCalm = m_rejectedCount;
        }
    }
    QVector<Claimed> claimed;
    for (int turn = 0;
         isAnyLeft() && claimed.size() < m_settings.filesPerBatch && monotonicMs() - begin < turnMs;
         ++turn)
    {
        const Candidate candidate = nextCandidate(turn);
        if (isRefusedUnread(folders, candidate))
        {
            continue;
        }
        const QByteArray name = claim(folders, candidate.name);
        Claimed taken;
        if (!name.isEmpty() && take(folders, name, taken))
        {
            claimed.append(taken);
        }
    }
    m_isFlooded = m_isFlooded || m_rejectedCount - m_rejectedWhenCalm >= floodOfRejected;
    return storeAndRemove(folders, claimed) && (isAnyLeft() || m_isScanWanted);
}

// The oldest small one, as a rule. Somebody who fills the folder with bad files can give them any
// age and size, but a good one that comes later is the newest for a moment: each end has its turn.
SpoolReader::Candidate SpoolReader::nextCandidate(int turn)
{
    constexpr int turns = 4;
    const bool isTurnOfOthers = m_isFlooded && turn % turns == turns - 1 && !m_others.empty();
    std::deque<Candidate>& candidates = m_plain.empty() || isTurnOfOthers ? m_others : m_plain;
    const bool isNewest = m_isFlooded && turn % 2 == (isTurnOfOthers ? 1 : 0);
    const Candidate next = isNewest ? candidates.back() : candidates.front();
    isNewest ? candidates.pop_back() : candidates.pop_front();
    return next;
}

// True when its kind or its size is enough to put it aside.
bool SpoolReader::isRefusedUnread(const Folders& folders, const Candidate& candidate)
{
    struct stat status;
    if (::fstatat(folders.spool, candidate.name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        (S_ISREG(status.st_mode) && status.st_size <= maximumFileSize))
    {
        return false;
    }
    reject(folders, folders.spool, candidate.name,
           QStringLiteral("it is no plain file, or too large"));
    return true;
}

bool SpoolReader::storeAndRemove(const Folders& folders, QVector<Claimed>& claimed)
{
    if (claimed.isEmpty())
    {
        return true;
    }
    // The time of an event orders what came together; the name says nothing.
    std::stable_sort(claimed.begin(), claimed.end(), [](const Claimed& a, const Claimed& b) {
        return a.item.event.timeMs < b.item.event.timeMs;
    });
    QVector<Item> items;
    for (const Claimed& taken : qAsConst(claimed))
    {
        items.append(taken.item);
    }
    if (!m_store(items))
    {
        m_mayHaveClaimed = true;
        return false;
    }
    for (const Claimed& taken : qAsConst(claimed))
    {
        if (::unlinkat(folders.claimed, taken.name.constData(), 0) != 0)
        {
            // Its key is stored: it cannot come twice.
            warn(QFile::decodeName(taken.name), reasonOf(errno));
        }
    }
    return true;
}

void SpoolReader::watch()
{
    if (m_watcher.directories().isEmpty())
    {
        // The installation makes this folder with its rights; here it is only a last resort.
        if (QDir().mkpath(m_settings.folder))
        {
            m_watcher.addPath(m_settings.folder);
        }
    }
}

void SpoolReader::scan(const Folders& folders)
{
    m_plain.clear();
    m_others.clear();
    const Directory directory = openDirectory(folders.spool);
    while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr)
    {
        if (m_plain.size() + m_others.size() >= candidatesKept)
        {
            m_isScanWanted = true;
            break;
        }
        scanEntry(folders, entry->d_name);
    }
    for (std::deque<Candidate>* const candidates : {&m_plain, &m_others})
    {
        std::sort(
            candidates->begin(), candidates->end(),
            [](const Candidate& a, const Candidate& b) { return a.modifiedNs < b.modifiedNs; });
    }
}

void SpoolReader::scanEntry(const Folders& folders, const char* name)
{
    struct stat status;
    if (::fstatat(folders.spool, name, &status, AT_SYMLINK_NOFOLLOW) != 0)
    {
        return;
    }
    const QByteArray entry(name);
    const bool isSpoolName = entry.endsWith(spoolEnding);
    if (S_ISDIR(status.st_mode))
    {
        // Only an empty one can be removed in one step; the others disturb nobody.
        if (isSpoolName && ::unlinkat(folders.spool, name, AT_REMOVEDIR) != 0 &&
            m_ignoredFolders.size() < 100 && !m_ignoredFolders.contains(entry))
        {
            m_ignoredFolders.insert(entry);
            warn(QFile::decodeName(entry), QStringLiteral("it is a folder and stays"));
        }
        return;
    }
    if (isSpoolName)
    {
        const bool isPlain = S_ISREG(status.st_mode) && status.st_size <= plainFileSize;
        (isPlain ? m_plain : m_others).push_back({entry, modifiedNs(status)});
        return;
    }
    const qint64 age = QDateTime::currentMSecsSinceEpoch() - modifiedNs(status) / 1000000;
    if (S_ISREG(status.st_mode) && age > m_settings.strayAgeMs &&
        ::unlinkat(folders.spool, name, 0) == 0)
    {
        warn(QFile::decodeName(entry), QStringLiteral("it was left by a writer and is removed"));
    }
}

QByteArray SpoolReader::claim(const Folders& folders, const QByteArray& name)
{
    const QByteArray claimed = uniqueName();
    int result = ::renameat2(folders.spool, name.constData(), folders.claimed, claimed.constData(),
                             RENAME_NOREPLACE);
    if (result != 0 && errno == EINVAL)
    {
        result = ::renameat(folders.spool, name.constData(), folders.claimed, claimed.constData());
    }
    if (result == 0)
    {
        return claimed;
    }
    if (errno != ENOENT)
    {
        warn(QFile::decodeName(name), reasonOf(errno));
    }
    return QByteArray();
}

bool SpoolReader::take(const Folders& folders, const QByteArray& name, Claimed& claimed)
{
    const int file =
        ::openat(folders.claimed, name.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    struct stat status;
    std::memset(&status, 0, sizeof(status));
    QByteArray content;
    QString error;
    if (file < 0 || ::fstat(file, &status) != 0)
    {
        error = reasonOf(errno);
    }
    else if (!S_ISREG(status.st_mode) || status.st_nlink != 1)
    {
        error = QStringLiteral("it is no plain file, or has further names");
    }
    else if (status.st_size > maximumFileSize || !readAll(file, status.st_size, content) ||
             content.size() > maximumFileSize)
    {
        error = QStringLiteral("it is too large or cannot be read");
    }
    if (file >= 0)
    {
        ::close(file);
    }
    DecodedEvent decoded;
    if (error.isEmpty())
    {
        decoded = m_decoder.fromSpoolFile(content);
        error = decoded.error;
    }
    if (!error.isEmpty())
    {
        reject(folders, folders.claimed, name, error);
        return false;
    }
    claimed.name = name;
    claimed.item.event = decoded.event;
    claimed.item.event.road = Road::spool;
    claimed.item.event.senderUid = status.st_uid;
    claimed.item.event.setArrival(QDateTime::currentMSecsSinceEpoch());
    claimed.item.key = {status.st_dev, status.st_ino, modifiedNs(status),
                        QCryptographicHash::hash(content, QCryptographicHash::Sha256)};
    return true;
}

void SpoolReader::reject(const Folders& folders, int folder, const QByteArray& name,
                         const QString& reason)
{
    ++m_rejectedCount;
    warn(QFile::decodeName(name), reason);
    struct stat status;
    const QByteArray target = uniqueName();
    if (::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
        ::renameat(folder, name.constData(), folders.rejected, target.constData()) != 0)
    {
        ::unlinkat(folder, name.constData(), 0);
        return;
    }
    // What a file takes, not what it claims: a sparse one may claim anything.
    const qint64 bytes = qint64(status.st_blocks) * 512;
    m_rejected.push_back({target, bytes});
    m_rejectedBytes += bytes;
    boundRejected(folders);
}

void SpoolReader::boundRejected(const Folders& folders)
{
    if (!m_isRejectedKnown)
    {
        m_isRejectedKnown = true;
        const Directory directory = openDirectory(folders.rejected);
        while (const dirent* entry = directory ? ::readdir(directory.get()) : nullptr)
        {
            struct stat status;
            if (::fstatat(folders.rejected, entry->d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
                !S_ISDIR(status.st_mode))
            {
                m_rejected.push_back({entry->d_name, qint64(status.st_blocks) * 512});
                m_rejectedBytes += m_rejected.back().bytes;
            }
        }
        std::sort(m_rejected.begin(), m_rejected.end(),
                  [](const Rejected& a, const Rejected& b) { return a.name < b.name; });
    }
    while (!m_rejected.empty() && (int(m_rejected.size()) > m_settings.rejectedFiles ||
                                   m_rejectedBytes > m_settings.rejectedBytes))
    {
        const QByteArray name = m_rejected.front().name;
        if (::unlinkat(folders.rejected, name.constData(), 0) != 0)
        {
            ::unlinkat(folders.rejected, name.constData(), AT_REMOVEDIR);
        }
        m_rejectedBytes -= m_rejected.front().bytes;
        m_rejected.pop_front();
    }
}

// Sorts by the time at which it was made.
QByteArray SpoolReader::uniqueName()
{
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    return QByteArray::number(nowMs).rightJustified(15, '0') + '-' +
           QByteArray::number(::getpid()) + '-' +
           QByteArray::number(m_nameCounter++).rightJustified(10, '0') + spoolEnding;
}

void SpoolReader::warn(const QString& name, const QString& reason)
{
    if (m_limiter.allows())
    {
        const int suppressed = m_limiter.takeSuppressed();
        if (suppressed > 0)
        {
            qWarning() << "Spool:" << suppressed << "more warnings were left out";
        }
        qWarning() << "Spool:" << shortened(name) << shortened(reason);
    }
}

} // namespace eventlistd
