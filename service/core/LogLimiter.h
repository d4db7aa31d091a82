#pragma once

#include <QString>

namespace eventlistd
{

/// A value in the service's own log is never longer than this, in UTF-16 units.
constexpr int longestLogValue = 1024;

/// The value as it goes into a warning: cut, with a mark, when somebody sent far too much.
QString shortened(const QString& value);

/// Keeps one kind of warning from filling the log: a first burst goes through, then one a second.
/// One for each kind of warning.
class LogLimiter
{
public:
    explicit LogLimiter(int burst = 20, qint64 intervalMs = 1000);

    /// True when a warning may be written now.
    /// \param nowMs  a clock that only goes forward
    bool allows(qint64 nowMs);

    /// The same with the service's own clock.
    bool allows();

    /// Number of warnings that were kept back since this was asked for the last time.
    int takeSuppressed();

private:
    // Fixed at construction.
    const double m_burst;
    const double m_intervalMs;
    // What is left of the burst, and when that was true.
    double m_tokens;
    qint64 m_lastMs = 0;
    int m_suppressed = 0;
};

} // namespace eventlistd
