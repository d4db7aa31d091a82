#include "core/TokenBucket.h"

#include <algorithm>

namespace eventlistd
{

TokenBucket::TokenBucket(double perSecond, double burst)
    : m_perMillisecond(perSecond / 1000), m_burst(burst), m_tokens(burst)
{
}

bool TokenBucket::take(double amount, qint64 nowMs)
{
    fill(nowMs);
    if (m_tokens < amount)
    {
        return false;
    }
    m_tokens -= amount;
    return true;
}

void TokenBucket::takeAnyway(double amount, qint64 nowMs)
{
    fill(nowMs);
    m_tokens -= amount;
}

bool TokenBucket::isFilled(qint64 nowMs)
{
    fill(nowMs);
    return m_tokens > 0;
}

void TokenBucket::fill(qint64 nowMs)
{
    if (m_lastMs >= 0 && nowMs > m_lastMs)
    {
        m_tokens = std::min(m_burst, m_tokens + double(nowMs - m_lastMs) * m_perMillisecond);
    }
    m_lastMs = nowMs;
}

} // namespace eventlistd
