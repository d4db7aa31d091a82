#pragma once

#include <QString>

/// Checks of paths with parts that came from outside.
class PathCheck
{
public:
    /// True when a file or folder that exists lies, all symbolic links followed, outside of the
    /// folder. What does not exist leads nowhere.
    static bool leadsOutOf(const QString& folder, const QString& path);

    /// The name as a warning may show it: it came from outside and may have any length.
    static QString shortened(const QString& name);
};
