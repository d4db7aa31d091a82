// How long a caller waits in the worst case, while the service or the daemon stands still.
//
//   bench_EventlistHandlerDBusConnectorWrite <text folder> <sender> <events>
//
// Lines for the driver, each of which waits for a line in return: "ready" (let it stand still),
// "sent" (a new producer comes now), "made" (let it go on).

#include "EventHandlers/EventHandler.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "Support/BenchmarkEvent.h"
#include "Support/Meter.h"
#include "Support/Senders.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
constexpr double nsPerMs = 1000000;

double quantile(const std::vector<qint64>& sorted, double share)
{
    return double(sorted[std::size_t(double(sorted.size() - 1) * share)]) / nsPerMs;
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 4)
    {
        std::fputs("Text folder, sender and events are missing.\n", stderr);
        return 2;
    }
    Senders::waitForService();
    const BenchmarkEvent event(words[1], BenchmarkEvent::usualArguments, 0);
    const std::unique_ptr<Sender> sender = Senders::make(words[2], event, 1);
    const EventlistHandlerDBusConnectorWrite early(false);
    sender->send();
    sender->flush();
    Meter::ask(QStringLiteral("ready"));

    std::vector<qint64> durationsNs(std::size_t(words[3].toInt()));
    for (qint64& durationNs : durationsNs)
    {
        const qint64 beginNs = Meter::wallNs();
        sender->send();
        durationNs = Meter::wallNs() - beginNs;
    }
    Meter::ask(QStringLiteral("sent"));

    const qint64 beginNs = Meter::wallNs();
    EventHandler producer(event.moduleName, event.texts, event.url, event.keywords);
    const qint64 newProducerNs = Meter::wallNs() - beginNs;
    Meter::ask(QStringLiteral("made"));

    sender->flush();
    producer.logEvent(event.texts, event.urlArguments, event.arguments);
    sender->flush();
    const EventlistHandlerDBusConnectorWrite late(false);
    std::sort(durationsNs.begin(), durationsNs.end());
    Meter::report({{QStringLiteral("medianMs"), quantile(durationsNs, 0.5)},
                   {QStringLiteral("p999Ms"), quantile(durationsNs, 0.999)},
                   {QStringLiteral("worstMs"), quantile(durationsNs, 1)},
                   {QStringLiteral("newProducerMs"), double(newProducerNs) / nsPerMs},
                   {QStringLiteral("isValidAfterwards"),
                    early.isDBusInterfaceValid() && late.isDBusInterfaceValid()}});
    return 0;
}
