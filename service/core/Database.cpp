#include "core/Database.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <atomic>
#include <iterator>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace eventlistd
{

namespace
{
constexpr int schemaVersion = 1;
constexpr int damagedFilesKept = 3;
constexpr char asideMark[] = ".damaged-";
constexpr char asideTime[] = "yyyyMMdd'T'hhmmsszzz";
constexpr int asideTimeLength = 18;

// Names this file among all SQLite files: "EvLs".
constexpr int applicationId = 0x45764c73;

QString newConnectionName()
{
    static std::atomic<int> counter{0};
    return QStringLiteral("eventlistd-%1").arg(++counter);
}

// Rows of "event" are small and stand close together: a query without an index to help it reads a
// million of them in a fraction of a second. What is only shown lies apart, in "content".
// A file whose statements read otherwise is a damaged one: a change here is a new schemaVersion.
const char* const tables[] = {
    "CREATE TABLE meta(key TEXT PRIMARY KEY, value) WITHOUT ROWID",
    "CREATE TABLE event(id INTEGER PRIMARY KEY, type INTEGER NOT NULL, state INTEGER NOT NULL,"
    " time_ms INTEGER NOT NULL, module TEXT NOT NULL, keywords TEXT NOT NULL,"
    " event_id TEXT NOT NULL)",
    "CREATE TABLE content(id INTEGER PRIMARY KEY, timestamp TEXT, offset_s INTEGER, icon TEXT,"
    " description TEXT, user TEXT, metadata TEXT, alarm_id TEXT, source_hash_type INTEGER,"
    " source_hashes TEXT, arrival_ms INTEGER, uid INTEGER, pid INTEGER, road INTEGER)",
    "CREATE TABLE alarm(alarm_id TEXT PRIMARY KEY, event INTEGER NOT NULL, type INTEGER NOT NULL,"
    " active INTEGER NOT NULL, acknowledged INTEGER NOT NULL, acknowledged_by TEXT,"
    " acknowledged_ms INTEGER, acknowledged_offset_s INTEGER, size INTEGER NOT NULL,"
    " state INTEGER, time_ms INTEGER,"
    " module TEXT, keywords TEXT, event_id TEXT, timestamp TEXT, offset_s INTEGER, icon TEXT,"
    " description TEXT, user TEXT, metadata TEXT, source_hash_type INTEGER, source_hashes TEXT)",
    ("CREATE TABLE spool_seen(number INTEGER PRIMARY KEY, device INTEGER, inode INTEGER,"
     " mtime_ns INTEGER, sha256 BLOB, UNIQUE(device, inode, mtime_ns, sha256))"),
    "CREATE TABLE registered_hash(hash TEXT PRIMARY KEY, icon TEXT NOT NULL)",
    "CREATE TABLE source_icon(hashes TEXT PRIMARY KEY, icon TEXT NOT NULL, event INTEGER NOT NULL)",
    "CREATE INDEX source_icon_event ON source_icon(event)",
};
} // namespace

Database::Database(const QString& path) : m_path(path), m_connectionName(newConnectionName()) {}

Database::~Database()
{
    close();
    if (m_lock >= 0)
    {
        ::close(m_lock);
    }
}

Database::Opened Database::open()
{
    if (!QDir().mkpath(QFileInfo(m_path).absolutePath()) || !takeLock())
    {
        qWarning() << "Cannot use the database" << m_path;
        return Opened::failed;
    }
    const bool wasThere = QFileInfo(m_path).size() > 0;
    clearFailure();
    if (!wasThere && m_firstFreeId == 0 && !filesAside().isEmpty())
    {
        // The end came between putting one aside and beginning the next.
        m_firstFreeId = firstIdOfNewFile();
    }
    if (openFile() && prepareFile())
    {
        const bool isReplacement = std::exchange(m_firstFreeId, 0) > 0;
        return isReplacement ? Opened::inPlaceOfDamaged
               : wasThere    ? Opened::asItWas
                             : Opened::asNew;
    }
    if (m_failure != Failure::damaged)
    {
        close();
        return Opened::notNow;
    }
    return replaceDamaged();
}

void Database::close()
{
    m_statements.clear();
    if (m_database.isValid())
    {
        m_database.close();
        m_database = QSqlDatabase();
        QSqlDatabase::removeDatabase(m_connectionName);
    }
}

Database::Opened Database::replaceDamaged()
{
    m_firstFreeId = firstIdOfNewFile();
    if (isOpen())
    {
        m_firstFreeId = std::max(m_firstFreeId, metaValue(QStringLiteral("last_id")).toLongLong());
    }
    close();
    if (!putAside())
    {
        return Opened::notNow;
    }
    clearFailure();
    if (!openFile() || !prepareFile())
    {
        close();
        return Opened::notNow;
    }
    m_firstFreeId = 0;
    return Opened::inPlaceOfDamaged;
}

bool Database::isSound(const QString& path)
{
    const QString name = newConnectionName();
    bool isSound = false;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        database.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        database.setDatabaseName(path);
        QSqlQuery query(database);
        isSound = database.open() && query.exec(QStringLiteral("PRAGMA cell_size_check=ON")) &&
                  query.exec(QStringLiteral("PRAGMA quick_check(1)")) && query.next() &&
                  query.value(0).toString() == QLatin1String("ok");
    }
    QSqlDatabase::removeDatabase(name);
    return isSound;
}

QSqlQuery& Database::statement(const QString& sql)
{
    auto& query = m_statements[sql];
    if (!query)
    {
        query = std::make_shared<QSqlQuery>(m_database);
        query->setForwardOnly(true);
        if (!query->prepare(sql))
        {
            note(query->lastError(), sql);
        }
    }
    return *query;
}

QSqlQuery Database::unkept(const QString& sql)
{
    QSqlQuery query(m_database);
    query.setForwardOnly(true);
    if (!query.prepare(sql))
    {
        note(query.lastError(), sql);
    }
    return query;
}

bool Database::run(QSqlQuery& query)
{
    if (query.exec())
    {
        return true;
    }
    note(query.lastError(), query.lastQuery());
    return false;
}

bool Database::run(const QString& sql)
{
    QSqlQuery& query = statement(sql);
    const bool isDone = run(query);
    query.finish();
    return isDone;
}

bool Database::isFine(const QSqlQuery& query)
{
    if (!query.lastError().isValid())
    {
        return true;
    }
    note(query.lastError(), query.lastQuery());
    return false;
}

bool Database::begin()
{
    return run(QStringLiteral("BEGIN IMMEDIATE"));
}

bool Database::commit()
{
    return run(QStringLiteral("COMMIT"));
}

void Database::rollback()
{
    // Some failures have ended the transaction already; a second end is no further failure.
    QSqlQuery& query = statement(QStringLiteral("ROLLBACK"));
    query.exec();
    query.finish();
}

qint64 Database::usedBytes()
{
    qint64 values[3] = {0, 0, 0};
    const QString names[3] = {QStringLiteral("PRAGMA page_count"),
                              QStringLiteral("PRAGMA freelist_count"),
                              QStringLiteral("PRAGMA page_size")};
    for (int i = 0; i < 3; ++i)
    {
        QSqlQuery& query = statement(names[i]);
        if (run(query) && query.next())
        {
            values[i] = query.value(0).toLongLong();
        }
        query.finish();
    }
    return (values[0] - values[1]) * values[2];
}

QVariant Database::metaValue(const QString& key)
{
    QSqlQuery& query = statement(QStringLiteral("SELECT value FROM meta WHERE key = ?"));
    query.bindValue(0, key);
    QVariant value;
    if (run(query) && query.next())
    {
        value = query.value(0);
    }
    query.finish();
    return value;
}

bool Database::setMetaValue(const QString& key, const QVariant& value)
{
    QSqlQuery& query =
        statement(QStringLiteral("INSERT OR REPLACE INTO meta(key, value) VALUES(?, ?)"));
    query.bindValue(0, key);
    query.bindValue(1, value);
    const bool isDone = run(query);
    query.finish();
    return isDone;
}

bool Database::takeLock()
{
    if (m_lock >= 0)
    {
        return true;
    }
    // Not on the database itself: SQLite loses its own locks when anybody closes that file.
    const QByteArray name = QFile::encodeName(m_path + QStringLiteral(".lock"));
    m_lock = ::open(name.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0640);
    if (m_lock < 0)
    {
        return false;
    }
    if (::flock(m_lock, LOCK_EX | LOCK_NB) != 0)
    {
        qWarning() << "Another process works on the database" << m_path;
        ::close(m_lock);
        m_lock = -1;
        return false;
    }
    return true;
}

bool Database::openFile()
{
    m_isPrepared = false;
    if (isMarkedReadOnly())
    {
        qWarning() << "The database is damaged:" << m_path;
        m_failure = Failure::damaged;
        return false;
    }
    m_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    m_database.setDatabaseName(m_path);
    m_database.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=1000"));
    if (!m_database.open())
    {
        note(m_database.lastError(), QStringLiteral("open"));
        return false;
    }
    return true;
}

bool Database::prepareFile()
{
    // trusted_schema and cell_size_check: the file may have been damaged or changed on purpose.
    for (const char* pragma :
         {"PRAGMA trusted_schema=OFF", "PRAGMA cell_size_check=ON", "PRAGMA journal_mode=WAL",
          "PRAGMA synchronous=FULL", "PRAGMA temp_store=MEMORY", "PRAGMA wal_autocheckpoint=1000"})
    {
        if (!run(QLatin1String(pragma)))
        {
            return false;
        }
    }
    int version = 0;
    int application = 0;
    for (const auto& [pragma, value] :
         {std::pair<const char*, int*>{"PRAGMA user_version", &version},
          std::pair<const char*, int*>{"PRAGMA application_id", &application}})
    {
        QSqlQuery& query = statement(QLatin1String(pragma));
        if (!run(query) || !query.next())
        {
            return false;
        }
        *value = query.value(0).toInt();
        query.finish();
    }
    if (version == 0 && application == 0)
    {
        m_isPrepared = makeTables();
        return m_isPrepared;
    }
    m_needsCheck = QFileInfo(m_path).size() > checkAtOnceLimit;
    if (version != schemaVersion || application != applicationId || !hasTables() ||
        (!m_needsCheck && !isSound(m_path)))
    {
        qWarning() << "The database is damaged:" << m_path;
        m_failure = Failure::damaged;
        return false;
    }
    m_isPrepared = true;
    return true;
}

// SQLite opens a file of a kind that is newer than all there are, and refuses to write it only when
// it comes to that. To be asked before SQLite has the file open: closing it here would take its
// locks.
bool Database::isMarkedReadOnly() const
{
    constexpr qint64 headerSize = 100;
    constexpr int writeVersionAt = 18;
    constexpr char newestWriteVersion = 2;
    QFile file(m_path);
    const QByteArray header = file.open(QFile::ReadOnly) ? file.read(headerSize) : QByteArray();
    return header.size() == headerSize && header.startsWith("SQLite format 3") &&
           (header.at(writeVersionAt) < 1 || header.at(writeVersionAt) > newestWriteVersion);
}

bool Database::makeTables()
{
    if (!begin())
    {
        return false;
    }
    for (const char* table : tables)
    {
        if (!run(QString::fromLatin1(table)))
        {
            rollback();
            return false;
        }
    }
    // Together with the tables: a new file that was begun counts on from the old one in any case.
    return (m_firstFreeId == 0 || setMetaValue(QStringLiteral("last_id"), m_firstFreeId)) &&
           run(QStringLiteral("PRAGMA application_id=%1").arg(applicationId)) &&
           run(QStringLiteral("PRAGMA user_version=%1").arg(schemaVersion)) && commit();
}

// SQLite keeps the statements and reads them anew each time: a letter that was damaged there makes
// another column, and nothing that SQLite itself would call damage.
bool Database::hasTables()
{
    QSqlQuery& query = statement(QStringLiteral("SELECT sql FROM sqlite_schema"));
    QStringList found;
    for (bool isThere = run(query) && query.next(); isThere; isThere = query.next())
    {
        found.append(query.value(0).toString());
    }
    query.finish();
    return std::all_of(std::begin(tables), std::end(tables), [&](const char* table) {
        return found.contains(QString::fromLatin1(table));
    });
}

// The names of the files that were put aside, the oldest first.
QStringList Database::filesAside() const
{
    const QFileInfo file(m_path);
    return file.dir().entryList(
        {file.fileName() + QLatin1String(asideMark) + QString(asideTimeLength, QLatin1Char('?'))},
        QDir::Files, QDir::Name);
}

// A number that an old file has given out must not come back. The time in milliseconds is above
// anything that one event after the other can have reached; where the clock was set back since the
// last file was put aside, the time in its name is, with room for what came after it.
qint64 Database::firstIdOfNewFile() const
{
    constexpr qint64 idsOfOneFile = 10000000000;
    const qint64 nowMs = QDateTime::currentMSecsSinceEpoch();
    const QStringList aside = filesAside();
    if (aside.isEmpty())
    {
        return nowMs;
    }
    QDateTime last =
        QDateTime::fromString(aside.constLast().right(asideTimeLength), QLatin1String(asideTime));
    last.setTimeSpec(Qt::UTC);
    const qint64 lastMs = last.isValid() ? last.toMSecsSinceEpoch() : 0;
    return nowMs > lastMs ? nowMs : lastMs + idsOfOneFile;
}

bool Database::putAside()
{
    // The name tells the first number of the next file, which is the time as a rule.
    const QString target =
        m_path + QLatin1String(asideMark) +
        QDateTime::fromMSecsSinceEpoch(m_firstFreeId, Qt::UTC).toString(QLatin1String(asideTime));
    if (::rename(QFile::encodeName(m_path).constData(), QFile::encodeName(target).constData()) != 0)
    {
        qWarning() << "Cannot put the damaged database aside:" << m_path;
        return false;
    }
    // The log belongs to the damaged file: a new file must not meet it.
    for (const QString& suffix : {QStringLiteral("-wal"), QStringLiteral("-shm")})
    {
        if (QFile::exists(m_path + suffix) && !QFile::rename(m_path + suffix, target + suffix) &&
            !QFile::remove(m_path + suffix))
        {
            qWarning() << "Cannot put aside" << m_path + suffix;
            return false;
        }
    }
    qWarning() << "The damaged database was put aside as" << target;

    QStringList names = filesAside();
    while (names.size() > damagedFilesKept)
    {
        const QString name = QFileInfo(m_path).dir().filePath(names.takeFirst());
        QFile::remove(name);
        QFile::remove(name + QStringLiteral("-wal"));
        QFile::remove(name + QStringLiteral("-shm"));
    }
    return true;
}

void Database::note(const QSqlError& error, const QString& what)
{
    // The lower eight bits are the primary result code. A number that is given out exists already:
    // then the file contradicts itself as well. And what prepares a file is good for any that is
    // ours, so that a statement which makes no sense there tells of the file.
    constexpr int sqliteError = 1;
    constexpr int sqliteReadOnly = 8;
    constexpr int sqliteCorrupt = 11;
    constexpr int sqliteConstraint = 19;
    constexpr int sqliteNotADatabase = 26;
    const int code = error.nativeErrorCode().toInt() & 0xff;
    const bool isDamaged = code == sqliteCorrupt || code == sqliteNotADatabase ||
                           code == sqliteConstraint || (code == sqliteError && !m_isPrepared);
    const bool isFirst = m_failure == Failure::none;
    if (m_failure != Failure::damaged)
    {
        m_failure = isDamaged                ? Failure::damaged
                    : code == sqliteReadOnly ? Failure::readOnly
                                             : Failure::passing;
    }
    // What fails after it is the same trouble.
    if (isFirst && m_limiter.allows())
    {
        qWarning() << "Database:" << error.text().trimmed() << "in" << shortened(what);
    }
}

} // namespace eventlistd
