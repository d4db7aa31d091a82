#pragma once

#include <QByteArray>
#include <QString>

/// Reads files that may be anything: language files, configuration descriptions.
class LimitedFile
{
public:
    /// Reads a whole regular file. Its size is asked before anything is read, and a pipe or a
    /// device is never waited for.
    /// \param error  why it was not read, for a warning that names the path itself
    /// Failure: false, and bytes is empty.
    /// Threads: any.
    static bool read(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error);
};
