#pragma once

#include <QByteArray>
#include <QString>

/// Writes files of which a reader sees all or nothing.
class DurableFile
{
public:
    /// Puts ready-made bytes to exactly this path; what writeJsonObjectToFile promises is done
    /// here.
    /// Failure: false. Up to the step that makes the file visible, what stood at the path before
    ///          stands there still and a new name is not there. Only when the folder cannot be
    ///          synced after a file was replaced, the new one stands there, complete.
    /// Blocks:  until the data and the directory entry are on the disk.
    /// Threads: any.
    static bool writeBytesToFile(const QByteArray& bytes, const QString& path);
};
