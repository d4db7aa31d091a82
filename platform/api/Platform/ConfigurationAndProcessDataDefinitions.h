#pragma once

#include "Platform/PlatformExport.h"

#include <QString>

/// The words of a configuration description.
class PLATFORM_EXPORT ConfigurationAndProcessDataDefinitions
{
public:
    /// The key under which a node holds its value.
    /// Threads: any. The reference stays valid until the process ends.
    static const QString& getKeyDataPropertyValue();
};
