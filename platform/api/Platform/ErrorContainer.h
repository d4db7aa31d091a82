#pragma once

#include "Platform/PlatformExport.h"

/// Error numbers of the common D-Bus layer.
class PLATFORM_EXPORT ErrorContainer
{
public:
    /// The code of every error reply that a connector makes up itself. Never 0, which means "no
    /// error".
    /// Threads: any.
    static int getDefaultErrorCode();
};
