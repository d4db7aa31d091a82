#pragma once

#include <QString>

/// The time of an event.
class PresentTime
{
public:
    /// The present time of the device's time zone, as IsoDateConverter writes it.
    ///
    /// The offset from UTC is asked for once in a minute of the clock: an offset changes at the
    /// beginning of a minute, so daylight saving is right to the millisecond. A change of the time
    /// zone itself counts from the next minute on.
    /// Threads: any.
    static QString toText();

    /// The same of another time, in milliseconds since 1970.
    static QString toText(qint64 unixTimeMs);
};
