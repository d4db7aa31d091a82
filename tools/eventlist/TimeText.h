#pragma once

#include <QDateTime>
#include <QString>

/// Points in time as a user writes them.
class TimeText
{
public:
    /// What the text means.
    /// \param text  "2026-03-14", "2026-03-14 09:26:53", with milliseconds, with "T" and with an
    ///              offset; "09:26" of today; "now", "today", "yesterday"; "90s", "15min", "2h",
    ///              "3d" and "1w" before now
    /// Failure: an invalid time.
    static QDateTime read(const QString& text, const QDateTime& now);
};
