#include "machinewatch/Readings.h"

#include <QFile>
#include <QStringList>
#include <QSysInfo>

#include <sys/statvfs.h>

namespace
{
QStringList linesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly)
               ? QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'))
               : QStringList();
}

double firstNumber(const QString& path)
{
    bool isNumber = false;
    const double number =
        linesOf(path).value(0).section(QLatin1Char(' '), 0, 0).toDouble(&isNumber);
    return isNumber ? number : -1;
}

double memoryInUse()
{
    double total = 0;
    double available = 0;
    for (const QString& line : linesOf(QStringLiteral("/proc/meminfo")))
    {
        const double kibibytes = line.section(QLatin1Char(':'), 1)
                                     .simplified()
                                     .section(QLatin1Char(' '), 0, 0)
                                     .toDouble();
        if (line.startsWith(QLatin1String("MemTotal:")))
        {
            total = kibibytes;
        }
        else if (line.startsWith(QLatin1String("MemAvailable:")))
        {
            available = kibibytes;
        }
    }
    return total > 0 ? 100.0 * (total - available) / total : -1;
}

double diskInUse(const QString& folder)
{
    struct statvfs status = {};
    if (::statvfs(QFile::encodeName(folder).constData(), &status) != 0 || status.f_blocks == 0)
    {
        return -1;
    }
    return 100.0 * double(status.f_blocks - status.f_bavail) / double(status.f_blocks);
}
} // namespace

Readings Readings::take(const QString& folder)
{
    Readings readings;
    readings.load = firstNumber(QStringLiteral("/proc/loadavg"));
    readings.uptimeSeconds = qint64(firstNumber(QStringLiteral("/proc/uptime")));
    readings.memoryPercent = memoryInUse();
    readings.diskPercent = diskInUse(folder);
    return readings;
}

QString Readings::machineName()
{
    return QSysInfo::machineHostName();
}

QString Readings::uptimeText() const
{
    const qint64 minutes = uptimeSeconds / 60;
    return QStringLiteral("%1 h %2 min")
        .arg(minutes / 60)
        .arg(minutes % 60, 2, 10, QLatin1Char('0'));
}
