#include "core/LogLimiter.h"

#include "core/MonotonicClock.h"

#include <algorithm>
#include <utility>

namespace eventlistd
{

QString shortened(const QString& value)
{
    return value.size() <= longestLogValue ? value
                                           : value.left(longestLogValue) + QStringLiteral("...");
}

LogLimiter::LogLimiter(int burst, qint64 intervalMs)
    : m_burst(burst), m_intervalMs(double(intervalMs)), m_tokens(burst)
{
}

bool LogLimiter::allows(qint64 nowMs)
{
    m_tokens = std::min(m_burst, m_tokens + double(nowMs - m_lastMs) / m_intervalMs);
    m_lastMs = nowMs;
    if (m_tokens < 1.0)
    {
        ++m_suppressed;
        return false;
    }
    m_tokens -= 1.0;
    return true;
}

bool LogLimiter::allows()
{
    return allows(monotonicMs());
}

int LogLimiter::takeSuppressed()
{
    return std::exchange(m_suppressed, 0);
}

} // namespace eventlistd
