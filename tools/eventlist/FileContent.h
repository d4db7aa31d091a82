#pragma once

#include <QByteArray>
#include <QString>

/// Files that may be anything: those of a module, and those that anybody leaves in a folder.
class FileContent
{
public:
    /// Reads a whole regular file. Nothing is waited for: a pipe is refused like every other thing
    /// that is no file.
    /// \param error  why it was not read, without the path
    /// Failure: false.
    static bool read(const QString& path, qint64 largest, QByteArray& content, QString& error);
};
