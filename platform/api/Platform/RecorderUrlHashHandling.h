#pragma once

#include "Platform/PlatformExport.h"

#include <QByteArray>

/// The hash by which a source of events is named.
class PLATFORM_EXPORT RecorderUrlHashHandling
{
public:
    /// The hash of the bytes as raw bytes, 20 of them; equal input gives equal output on every
    /// device.
    /// Threads: any.
    static QByteArray createUrlHash(const QByteArray& url);
};
