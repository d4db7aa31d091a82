#pragma once

#include <QString>

/// What this machine says about itself at one moment. A reading that cannot be taken is below 0.
class Readings
{
public:
    /// Reads /proc and asks the file system of a folder.
    static Readings take(const QString& folder);

    double load = -1;          ///< average number of running processes over one minute
    double memoryPercent = -1; ///< memory in use
    double diskPercent = -1;   ///< space in use of the folder's file system; below 0: no folder
    qint64 uptimeSeconds = -1;

    /// The name of this machine.
    static QString machineName();

    /// "3 h 07 min", the same in every language.
    QString uptimeText() const;
};
