#include "Support/Meter.h"

#include <QJsonDocument>

#include <cstdio>

#include <ctime>
#include <malloc.h>
#include <valgrind/callgrind.h>

namespace
{
qint64 nowNs(clockid_t clock)
{
    timespec now = {};
    ::clock_gettime(clock, &now);
    return qint64(now.tv_sec) * 1000000000 + now.tv_nsec;
}
} // namespace

qint64 Meter::processCpuNs()
{
    return nowNs(CLOCK_PROCESS_CPUTIME_ID);
}

qint64 Meter::wallNs()
{
    return nowNs(CLOCK_MONOTONIC);
}

qint64 Meter::heapBytes()
{
    const struct mallinfo2 information = ::mallinfo2();
    return qint64(information.uordblks) + qint64(information.hblkhd);
}

bool Meter::isCounting()
{
    return RUNNING_ON_VALGRIND != 0;
}

void Meter::beginPhase()
{
    // Setting to zero reaches the calling thread alone, and a dump all of them.
    CALLGRIND_DUMP_STATS_AT("between");
}

void Meter::endPhase(const QString& name)
{
    CALLGRIND_DUMP_STATS_AT(qPrintable(name));
}

void Meter::report(const QJsonObject& result)
{
    std::puts(QJsonDocument(result).toJson(QJsonDocument::Compact).constData());
    std::fflush(stdout);
}

void Meter::ask(const QString& word)
{
    std::puts(qPrintable(word));
    std::fflush(stdout);
    for (int character = std::getchar(); character != '\n' && character != EOF;)
    {
        character = std::getchar();
    }
}
