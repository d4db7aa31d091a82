#pragma once

#include "TestSupport/RecordedEvent.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVector>

/// The spool folder for the time of a test: empty at the beginning, empty again at the end.
///
/// Everything in the folder is deleted, whatever it is. The folder is compiled into the library, so
/// all tests of one build share it: register such a test with SPOOL.
class SpoolFolder
{
public:
    /// The spool folder of the library.
    SpoolFolder();
    /// Another folder, which is made when it is missing. What it holds is deleted.
    explicit SpoolFolder(const QString& path);
    ~SpoolFolder();
    Q_DISABLE_COPY(SpoolFolder)

    /// The spool folder of the library, with its closing slash.
    static QString compiledInPath();

    /// This folder, with its closing slash.
    QString path() const;

    /// The path of an entry.
    QString filePath(const QString& entry) const;

    /// Names of everything in the folder, hidden and special files too, sorted.
    QStringList entries() const;

    /// The JSON object of an entry.
    /// Failure: an empty object, also when the file holds anything but one JSON object.
    QJsonObject read(const QString& entry) const;

    /// The events that wait in the folder, in the order of their times; equal times in that of the
    /// files' names. A file that is no event is among them, with its problem.
    QVector<RecordedEvent> events() const;

    /// The bytes of an entry. Null when it cannot be read.
    QByteArray readBytes(const QString& entry) const;

    /// Deletes everything in the folder.
    void clear();

    /// Deletes the folder itself. The next clear() makes it again.
    void remove();

private:
    const QString m_path;
};
