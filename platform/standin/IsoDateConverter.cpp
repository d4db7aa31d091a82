#include "Platform/IsoDateConverter.h"

#include <QDate>
#include <QTime>

#include <cstdlib>

namespace
{
constexpr int secondsPerMinute = 60;
constexpr int minutesPerHour = 60;
constexpr int maxYear = 9999;

QChar* putNumber(QChar* end, int number, int digits)
{
    for (int digit = digits - 1; digit >= 0; --digit)
    {
        end[digit] = QLatin1Char(static_cast<char>('0' + number % 10));
        number /= 10;
    }
    return end + digits;
}

QChar* putCharacter(QChar* end, char character)
{
    *end = QLatin1Char(character);
    return end + 1;
}
} // namespace

// QDateTime::toString() prints an offset only after a conversion, and writes "Z" for +00:00. Done
// by hand the time zone is asked once for a local time and not at all for one with an offset.
QString IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(const QDateTime& dateTime)
{
    const QDate date = dateTime.date();
    // A local time that daylight saving skips is no valid one: any offset would be wrong.
    if (!dateTime.isValid() || date.year() < 0 || date.year() > maxYear)
    {
        return QString();
    }
    const QTime time = dateTime.time();
    const int offsetSeconds = dateTime.offsetFromUtc();
    const int offsetMinutes = std::abs(offsetSeconds) / secondsPerMinute;

    constexpr int length = 29; // "2026-03-14T09:26:53.589+01:00"
    QString text(length, Qt::Uninitialized);
    QChar* end = text.data();
    end = putCharacter(putNumber(end, date.year(), 4), '-');
    end = putCharacter(putNumber(end, date.month(), 2), '-');
    end = putCharacter(putNumber(end, date.day(), 2), 'T');
    end = putCharacter(putNumber(end, time.hour(), 2), ':');
    end = putCharacter(putNumber(end, time.minute(), 2), ':');
    end = putCharacter(putNumber(end, time.second(), 2), '.');
    end = putCharacter(putNumber(end, time.msec(), 3), offsetSeconds < 0 ? '-' : '+');
    end = putCharacter(putNumber(end, offsetMinutes / minutesPerHour, 2), ':');
    putNumber(end, offsetMinutes % minutesPerHour, 2);
    return text;
}
