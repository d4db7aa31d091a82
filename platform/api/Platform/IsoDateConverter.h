#pragma once

#include "Platform/PlatformExport.h"

#include <QDateTime>
#include <QString>

/// The one text form of a point in time on this device.
class PLATFORM_EXPORT IsoDateConverter
{
public:
    /// ISO 8601 with milliseconds and offset, such as "2026-03-14T09:26:53.589+01:00"; the offset
    /// of UTC is written "+00:00", so that all texts have one width.
    /// Failure: an invalid date and time gives the empty string.
    /// Threads: any.
    static QString convertDateTimeToIsoDateWithMsAndTimezone(const QDateTime& dateTime);
};
