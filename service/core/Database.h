#pragma once

#include "core/LogLimiter.h"

#include <QHash>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>

#include <memory>

namespace eventlistd
{

/// The one SQLite file of the service: opened, checked, and put aside when it is damaged. All
/// statements go through here, so that a failure is judged in one place.
/// Durable: what a commit returned true for survives the loss of power.
class Database
{
public:
    enum class Failure
    {
        none,
        /// No space, an I/O error: the file is whole, the same may work later.
        passing,
        /// The file was opened without the right to write it: the same may work after it was opened
        /// anew.
        readOnly,
        /// The content cannot be trusted any more.
        damaged
    };

    enum class Opened
    {
        /// Another process has it, or its folder cannot be used.
        failed,
        /// Neither it nor a new one can be opened, on a full disk say. open() may be called again.
        notNow,
        asItWas,
        /// There was none.
        asNew,
        /// There was one that is damaged; it was put aside and a new one begun.
        inPlaceOfDamaged
    };

    /// \param path  the file; its folder is made when it is missing
    explicit Database(const QString& path);
    ~Database();
    Q_DISABLE_COPY(Database)

    /// Opens the file and makes its tables. A damaged one is renamed to
    /// "<path>.damaged-<time>"; the last few of them are kept.
    /// Blocks:  while a file of up to checkAtOnceLimit bytes is read as a whole. A larger one is
    ///          read by isSound() of a second object, beside the work.
    /// Failure: failed or notNow, with a warning.
    Opened open();
    void close();
    bool isOpen() const { return m_database.isOpen(); }

    /// Closes the file, puts it aside and begins a new one.
    /// Failure: notNow, with a warning. open() goes on with it.
    Opened replaceDamaged();

    /// True when the whole file was not checked by open(), because it is large.
    bool needsCheck() const { return m_needsCheck; }

    /// Reads the whole file through a connection of its own and looks for damage.
    /// Threads: any.
    static bool isSound(const QString& path);

    /// Files up to this size are checked before anything else is done with them.
    static constexpr qint64 checkAtOnceLimit = 64 * 1024 * 1024;

    /// A statement, prepared once. The reference is valid until the database is closed.
    QSqlQuery& statement(const QString& sql);

    /// A statement of its own, for a text that seldom comes twice.
    QSqlQuery unkept(const QString& sql);

    /// Runs a statement that was prepared and bound.
    /// Failure: false, with a warning; failure() tells what to do about it.
    bool run(QSqlQuery& query);
    /// Runs a statement without arguments.
    bool run(const QString& sql);

    /// Looks at a query after its last row: false when reading ended by a failure.
    bool isFine(const QSqlQuery& query);

    bool begin();
    bool commit();
    void rollback();

    /// What the last failing operation met; none after clearFailure().
    Failure failure() const { return m_failure; }
    void clearFailure() { m_failure = Failure::none; }

    /// Bytes of the file that hold something.
    qint64 usedBytes();

    /// A named number or text that lives in the file; not there: invalid.
    QVariant metaValue(const QString& key);
    bool setMetaValue(const QString& key, const QVariant& value);

    const QString& path() const { return m_path; }

private:
    bool takeLock();
    bool isMarkedReadOnly() const;
    bool openFile();
    bool prepareFile();
    bool makeTables();
    bool hasTables();
    QStringList filesAside() const;
    qint64 firstIdOfNewFile() const;
    bool putAside();
    void note(const QSqlError& error, const QString& what);

    // Fixed at construction.
    const QString m_path;
    const QString m_connectionName;
    // The open file.
    QSqlDatabase m_database;
    QHash<QString, std::shared_ptr<QSqlQuery>> m_statements;
    int m_lock = -1;
    bool m_isPrepared = false;
    bool m_needsCheck = false;
    Failure m_failure = Failure::none;
    LogLimiter m_limiter{5, 10000};
    // The number from which a new file has to count while an old one is put aside; otherwise 0.
    qint64 m_firstFreeId = 0;
};

} // namespace eventlistd
