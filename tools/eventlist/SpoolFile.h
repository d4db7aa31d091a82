#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/// One file of the spool folder, read as the central service would read it.
class SpoolFile
{
public:
    enum class Place : int
    {
        waiting,  ///< for the service
        claimed,  ///< the service is about to store it
        rejected, ///< the service could not understand it
        other     ///< has the name of no spool file
    };

    /// Reads and checks a file.
    SpoolFile(const QString& path, Place place);

    /// All files of a spool folder, waiting ones first, each by time.
    /// \param tell   is called before each file with the number of those that are read
    /// \param error  why the folder, or a part of it, cannot be read; empty when nothing is wrong
    template<typename Tell>
    static QVector<SpoolFile> ofFolder(const QString& folder, Tell tell, QString& error);

    /// The file that a user means: a path, or the beginning of a name in the spool folder.
    /// Failure: a file whose error() says that there is none, or more than one.
    static SpoolFile ofWord(const QString& word, const QString& folder);

    const QString& path() const { return m_path; }
    QString name() const;
    Place place() const { return m_place; }
    static QString placeWord(Place place);
    const QDateTime& written() const { return m_written; }

    /// Why the service would not take it; empty when it would.
    const QString& error() const { return m_error; }
    /// What is wrong with an event that it would take.
    const QStringList& warnings() const { return m_warnings; }

    /// The members of the file; empty when it is no JSON object.
    const QJsonObject& event() const { return m_event; }
    QString text(const QString& member) const { return m_event.value(member).toString(); }
    int number(const QString& member) const { return m_event.value(member).toInt(-1); }

    /// The finished texts that it carries.
    QVariantMap description() const;

private:
    struct Found
    {
        QString path;
        Place place;
    };
    static QVector<Found> find(const QString& folder, QString& error);

    SpoolFile(const QString& path, const QString& error)
        : m_path(path), m_place(Place::other), m_error(error)
    {
    }
    void read();
    QString findWrongMember() const;
    void findOddities();

    QString m_path;
    Place m_place;
    QDateTime m_written;
    QJsonObject m_event;
    QString m_error;
    QStringList m_warnings;
};

template<typename Tell>
QVector<SpoolFile> SpoolFile::ofFolder(const QString& folder, Tell tell, QString& error)
{
    QVector<SpoolFile> files;
    const QVector<Found> found = find(folder, error);
    for (const Found& one : found)
    {
        tell(files.size());
        files.append(SpoolFile(one.path, one.place));
    }
    return files;
}
