#include "core/Event.h"

#include "Platform/IsoDateConverter.h"

#include <QDateTime>

namespace eventlistd
{

namespace
{
constexpr int longestTimestamp = 64;
}

qint64 Event::size() const
{
    qint64 size = qint64(icon.size()) + timestamp.size() + moduleName.size() + description.size() +
                  user.size() + eventId.size() + metaData.size() + alarmId.size() +
                  sourceHashes.size();
    for (const QString& keyword : keywords)
    {
        size += keyword.size() + 1;
    }
    return size;
}

void Event::setArrival(qint64 unixTimeMs)
{
    arrivalMs = unixTimeMs;
    QDateTime time;
    if (!timestamp.isEmpty() && timestamp.size() <= longestTimestamp)
    {
        time = QDateTime::fromString(timestamp, Qt::ISODateWithMs);
    }
    if (!time.isValid())
    {
        time = QDateTime::fromMSecsSinceEpoch(unixTimeMs);
        timestamp = IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(time);
    }
    timeMs = time.toMSecsSinceEpoch();
    offsetSeconds = time.offsetFromUtc();
}

} // namespace eventlistd
