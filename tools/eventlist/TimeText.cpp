#include "eventlist/TimeText.h"

#include <QMap>
#include <QRegularExpression>

namespace
{
// Seconds of a unit; 0 when it is none.
qint64 secondsOf(const QString& unit)
{
    static const QMap<QString, qint64> seconds = {
        {QStringLiteral("s"), 1},    {QStringLiteral("m"), 60},    {QStringLiteral("min"), 60},
        {QStringLiteral("h"), 3600}, {QStringLiteral("d"), 86400}, {QStringLiteral("w"), 604800}};
    return seconds.value(unit);
}

QDateTime beforeNow(const QString& text, const QDateTime& now)
{
    static const QRegularExpression form(QStringLiteral("^-?(\\d{1,9})\\s*([a-z]+)( ago)?$"));
    const auto match = form.match(text);
    const qint64 seconds = match.hasMatch() ? secondsOf(match.captured(2)) : 0;
    return seconds == 0 ? QDateTime() : now.addSecs(-match.captured(1).toLongLong() * seconds);
}
} // namespace

QDateTime TimeText::read(const QString& text, const QDateTime& now)
{
    const QString word = text.trimmed();
    if (word == QLatin1String("now"))
    {
        return now;
    }
    if (word == QLatin1String("today"))
    {
        return now.date().startOfDay();
    }
    if (word == QLatin1String("yesterday"))
    {
        return now.date().addDays(-1).startOfDay();
    }
    const QDateTime relative = beforeNow(word, now);
    if (relative.isValid())
    {
        return relative;
    }
    for (const QString& format : {QStringLiteral("HH:mm"), QStringLiteral("HH:mm:ss")})
    {
        const QTime time = QTime::fromString(word, format);
        if (time.isValid())
        {
            return QDateTime(now.date(), time);
        }
    }
    QString iso = word;
    iso.replace(QLatin1Char(' '), QLatin1Char('T'));
    return QDateTime::fromString(iso, Qt::ISODateWithMs);
}
