#include "EventWrite/detail/PresentTime.h"

#include "Platform/IsoDateConverter.h"

#include <QDateTime>

#include <atomic>
#include <ctime>
#include <limits>

namespace
{

constexpr qint64 msPerSecond = 1000;
constexpr qint64 msPerMinute = 60 * msPerSecond;

// Both at once, so that threads need no lock. Without the alignment clang calls a library for it.
struct alignas(8) KnownOffset
{
    qint32 minute;
    qint32 seconds;
};
static_assert(std::atomic<KnownOffset>::is_always_lock_free);

std::atomic<KnownOffset> knownOffset{{std::numeric_limits<qint32>::min(), 0}};

int askForOffset(qint64 unixTimeMs)
{
    // Alone, localtime_r() would not see another time zone.
    tzset();
    // It fails for years beyond those that fit into a qint64 of milliseconds.
    const auto seconds = time_t(unixTimeMs / msPerSecond);
    tm local{};
    localtime_r(&seconds, &local);
    return int(local.tm_gmtoff);
}

int offsetAt(qint64 unixTimeMs)
{
    const auto minute = qint32(unixTimeMs / msPerMinute);
    KnownOffset known = knownOffset.load(std::memory_order_relaxed);
    if (known.minute != minute)
    {
        known = {minute, askForOffset(unixTimeMs)};
        knownOffset.store(known, std::memory_order_relaxed);
    }
    return known.seconds;
}

} // namespace

QString PresentTime::toText()
{
    return toText(QDateTime::currentMSecsSinceEpoch());
}

QString PresentTime::toText(qint64 unixTimeMs)
{
    return IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(
        QDateTime::fromMSecsSinceEpoch(unixTimeMs, Qt::OffsetFromUTC, offsetAt(unixTimeMs)));
}
