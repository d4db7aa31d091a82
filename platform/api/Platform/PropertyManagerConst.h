#pragma once

#include "Platform/PlatformExport.h"

#include <QString>

/// What is fixed for this device when the platform layer is built.
class PLATFORM_EXPORT PropertyManagerConst
{
public:
    /// First word of every bus name, such as "org.eventlist": a dot and the name of the module follow.
    /// Threads: any. The reference stays valid until the process ends.
    static const QString& getDBusPrefix();

    /// The full path of a configuration folder, which may or may not exist.
    /// \param relativePath  path below the device's configuration, ending with "/"; "/" alone and
    ///                      the empty path mean the configuration folder itself
    /// Failure: a path that would leave the configuration folder ("..", absolute, a symbolic link
    ///          that leads out) gives an empty string, with a warning that names it.
    /// Threads: any.
    static QString getConfigurationFolderPath(const QString& relativePath);
};
