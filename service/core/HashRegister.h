#pragma once

#include "core/Event.h"

#include <QHash>
#include <QMap>
#include <QSet>

namespace eventlistd
{

class Database;

/// The hashes that modules have registered, and the icon that each has last.
///
/// An event carries the hashes of its sources one behind the other, all of one length. A hash is
/// found in it where it stands as a whole. The empty hash stands for every event.
/// Changes are made inside a transaction of the caller; after one that was rolled back, load()
/// brings the memory back to the file.
class HashRegister
{
public:
    /// \param maximumHashes  no more than this are remembered
    HashRegister(Database& database, int maximumHashes);

    bool load();

    enum class Result
    {
        registered,
        /// It cannot be part of an object path, or it is too long.
        invalid,
        full,
        failed
    };

    /// Remembers a hash.
    /// \param icon  the last icon known for it; empty when there is none
    Result registerHash(const QString& hash, QString& icon);

    /// Takes an event that stands in the event list.
    /// \param announcements  hash to icon: is filled with the registered hashes that it carries
    bool apply(const Event& event, QMap<QString, QString>& announcements);

    /// The object path on which the icon of a hash is announced.
    static QString pathOf(const QString& hash);

private:
    bool setIcon(const QString& hash, const QString& icon, QMap<QString, QString>& announcements);
    bool rememberSource(const Event& event);
    bool findIcon(const QString& hash, QString& icon);

    Database& m_database;
    // Fixed at construction.
    const int m_maximumHashes;
    // As the open transaction will leave the file.
    QHash<QString, QString> m_icons;
    QSet<int> m_lengths;
    int m_sourcesSincePrune = 0;
};

} // namespace eventlistd
