#pragma once

#include <QtGlobal>

namespace eventlistd
{

/// How much somebody may do: a supply that is used up and fills again with time.
class TokenBucket
{
public:
    /// \param perSecond  what is filled up in a second
    /// \param burst      what the bucket holds, and with what it starts
    TokenBucket(double perSecond, double burst);

    /// Takes from the bucket.
    /// \param nowMs  a clock that only goes forward
    /// \return false when there is not enough; nothing is taken then
    bool take(double amount, qint64 nowMs);

    /// Takes also what is not there; the next ones then wait for longer.
    void takeAnyway(double amount, qint64 nowMs);

    /// True when the bucket holds anything.
    bool isFilled(qint64 nowMs);

private:
    void fill(qint64 nowMs);

    // Fixed at construction.
    double m_perMillisecond;
    double m_burst;
    // What is there, and when that was true.
    double m_tokens;
    qint64 m_lastMs = -1;
};

} // namespace eventlistd
