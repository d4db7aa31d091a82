#include "core/HashRegister.h"

#include "core/Database.h"
#include "core/Names.h"

#include <QVariant>

#include <algorithm>

namespace eventlistd
{

namespace
{
constexpr int longestHash = 200;
constexpr int longestSourceHashes = 64 * 1024;
constexpr int sourcesKept = 5000;
constexpr int prunedEvery = 500;

bool isInPath(QChar character)
{
    const ushort code = character.unicode();
    return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') ||
           (code >= '0' && code <= '9') || code == '_';
}

bool carries(const QString& sourceHashes, const QString& hash)
{
    if (hash.isEmpty() || sourceHashes.size() % hash.size() != 0)
    {
        return hash.isEmpty();
    }
    for (int position = 0; position < sourceHashes.size(); position += hash.size())
    {
        if (sourceHashes.midRef(position, hash.size()) == hash)
        {
            return true;
        }
    }
    return false;
}
} // namespace

HashRegister::HashRegister(Database& database, int maximumHashes)
    : m_database(database), m_maximumHashes(maximumHashes)
{
}

bool HashRegister::load()
{
    m_icons.clear();
    m_lengths.clear();
    QSqlQuery& query =
        m_database.statement(QStringLiteral("SELECT hash, icon FROM registered_hash"));
    if (!m_database.run(query))
    {
        return false;
    }
    while (query.next())
    {
        const QString hash = query.value(0).toString();
        m_icons.insert(hash, query.value(1).toString());
        m_lengths.insert(hash.size());
    }
    const bool isFine = m_database.isFine(query);
    query.finish();
    return isFine;
}

HashRegister::Result HashRegister::registerHash(const QString& hash, QString& icon)
{
    if (hash.size() > longestHash || !std::all_of(hash.begin(), hash.end(), isInPath))
    {
        return Result::invalid;
    }
    const auto known = m_icons.constFind(hash);
    if (known != m_icons.constEnd())
    {
        icon = *known;
        return Result::registered;
    }
    if (m_icons.size() >= m_maximumHashes)
    {
        return Result::full;
    }
    if (!findIcon(hash, icon))
    {
        return Result::failed;
    }
    QMap<QString, QString> ignored;
    return setIcon(hash, icon, ignored) ? Result::registered : Result::failed;
}

bool HashRegister::apply(const Event& event, QMap<QString, QString>& announcements)
{
    if (m_icons.contains(QString()) && !setIcon(QString(), event.icon, announcements))
    {
        return false;
    }
    if (event.sourceHashes.isEmpty())
    {
        return true;
    }
    for (const int length : qAsConst(m_lengths))
    {
        if (length == 0 || event.sourceHashes.size() % length != 0)
        {
            continue;
        }
        for (int position = 0; position < event.sourceHashes.size(); position += length)
        {
            const QString hash = event.sourceHashes.mid(position, length);
            if (m_icons.contains(hash) && !setIcon(hash, event.icon, announcements))
            {
                return false;
            }
        }
    }
    return rememberSource(event);
}

QString HashRegister::pathOf(const QString& hash)
{
    return names::hashPathPrefix() + (hash.isEmpty() ? names::globalHash() : hash);
}

bool HashRegister::setIcon(const QString& hash, const QString& icon,
                           QMap<QString, QString>& announcements)
{
    announcements.insert(hash, icon);
    const auto known = m_icons.constFind(hash);
    if (known != m_icons.constEnd() && *known == icon)
    {
        return true;
    }
    QSqlQuery& query = m_database.statement(
        QStringLiteral("INSERT OR REPLACE INTO registered_hash(hash, icon) VALUES(?, ?)"));
    query.bindValue(0, hash.isNull() ? QStringLiteral("") : hash);
    query.bindValue(1, icon.isNull() ? QStringLiteral("") : icon);
    m_icons.insert(hash, icon);
    m_lengths.insert(hash.size());
    return m_database.run(query);
}

// A module may register a hash after the events that carry it: their icon is to be known then.
bool HashRegister::rememberSource(const Event& event)
{
    if (event.sourceHashes.size() > longestSourceHashes)
    {
        return true;
    }
    QSqlQuery& query = m_database.statement(
        QStringLiteral("INSERT OR REPLACE INTO source_icon(hashes, icon, event) VALUES(?, ?, ?)"));
    query.bindValue(0, event.sourceHashes);
    query.bindValue(1, event.icon.isNull() ? QStringLiteral("") : event.icon);
    query.bindValue(2, event.id);
    if (!m_database.run(query) || ++m_sourcesSincePrune < prunedEvery)
    {
        return m_database.failure() == Database::Failure::none;
    }
    m_sourcesSincePrune = 0;
    QSqlQuery& removal = m_database.statement(
        QStringLiteral("DELETE FROM source_icon WHERE event <= (SELECT event FROM source_icon"
                       " ORDER BY event DESC LIMIT 1 OFFSET ?)"));
    removal.bindValue(0, sourcesKept);
    return m_database.run(removal);
}

bool HashRegister::findIcon(const QString& hash, QString& icon)
{
    QSqlQuery& query = m_database.statement(
        QStringLiteral("SELECT hashes, icon FROM source_icon ORDER BY event DESC"));
    if (!m_database.run(query))
    {
        return false;
    }
    bool isFound = false;
    while (!isFound && query.next())
    {
        isFound = carries(query.value(0).toString(), hash);
        icon = isFound ? query.value(1).toString() : QString();
    }
    const bool isFine = m_database.isFine(query);
    query.finish();
    return isFine;
}

} // namespace eventlistd
