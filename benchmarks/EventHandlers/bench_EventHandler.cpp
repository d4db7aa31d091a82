// What an event on the bus road costs its sender, beside what else could bring it onto the bus.
// The service is whoever has its name on the bus: event_sink, or the real one.
//
// Under callgrind the instructions of each sender are one phase, named after it; the phase "empty"
// holds what the measurement itself costs. Otherwise the senders take turns, and each round gives
// one value for each of them.

#include "Support/BenchmarkEvent.h"
#include "Support/Meter.h"
#include "Support/Senders.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonArray>

#include <cstdio>
#include <vector>

namespace
{
struct Contestant
{
    QString name;
    std::unique_ptr<Sender> sender;
    QJsonArray cpuNs;
    QJsonArray wallNs;
};

constexpr int warmUpEvents = 20;

void send(Sender& sender, int count)
{
    for (int i = 0; i < count; ++i)
    {
        sender.send();
    }
    sender.flush();
}

// In turns: how the two threads share out the work changes from phase to phase.
void countInstructions(const std::vector<Contestant>& contestants, int events)
{
    for (const Contestant& contestant : contestants)
    {
        send(*contestant.sender, warmUpEvents);
    }
    constexpr int rounds = 5;
    for (int round = 0; round < rounds; ++round)
    {
        Meter::beginPhase();
        send(*contestants.front().sender, 0);
        Meter::endPhase(QStringLiteral("empty"));
        for (const Contestant& contestant : contestants)
        {
            Meter::beginPhase();
            send(*contestant.sender, events / rounds);
            Meter::endPhase(contestant.name);
        }
    }
}

void takeTimes(std::vector<Contestant>& contestants, int events, int rounds)
{
    for (const Contestant& contestant : contestants)
    {
        send(*contestant.sender, warmUpEvents);
    }
    for (int round = 0; round < rounds; ++round)
    {
        for (std::size_t i = 0; i < contestants.size(); ++i)
        {
            // Who is first in a round changes: what disturbs the machine hits all of them.
            Contestant& contestant = contestants[(i + std::size_t(round)) % contestants.size()];
            const qint64 cpuNs = Meter::processCpuNs();
            const qint64 wallNs = Meter::wallNs();
            send(*contestant.sender, events);
            contestant.cpuNs.append(double(Meter::processCpuNs() - cpuNs) / events);
            contestant.wallNs.append(double(Meter::wallNs() - wallNs) / events);
        }
    }
}

int number(const QCommandLineParser& parser, const char* option)
{
    return parser.value(QLatin1String(option)).toInt();
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const auto add = [&](const char* name, const QString& standard) {
        parser.addOption({QLatin1String(name), QString(), QStringLiteral("value"), standard});
    };
    add("texts", QString());
    add("senders", QStringLiteral("library,bare"));
    add("events", QStringLiteral("200"));
    add("rounds", QStringLiteral("1"));
    add("arguments", QString::number(BenchmarkEvent::usualArguments));
    add("source-tags", QStringLiteral("0"));
    add("producers", QStringLiteral("1"));
    parser.addOption(QCommandLineOption(QStringLiteral("real-service")));
    parser.process(application);

    Senders::waitForService();
    const BenchmarkEvent event(parser.value(QStringLiteral("texts")), number(parser, "arguments"),
                               number(parser, "source-tags"));
    const QStringList names = parser.value(QStringLiteral("senders")).split(QLatin1Char(','));
    QString differing;
    const qint64 bytes = parser.isSet(QStringLiteral("real-service"))
                             ? 0
                             : Senders::compare(names, event, differing);
    if (bytes < 0)
    {
        std::fprintf(stderr, "The event of %s is not that of %s\n", qPrintable(differing),
                     qPrintable(names.first()));
        return 1;
    }
    std::vector<Contestant> contestants;
    for (const QString& name : names)
    {
        contestants.push_back(
            {name, Senders::make(name, event, number(parser, "producers")), {}, {}});
    }
    if (Meter::isCounting())
    {
        countInstructions(contestants, number(parser, "events"));
    }
    else
    {
        takeTimes(contestants, number(parser, "events"), number(parser, "rounds"));
    }
    for (const Contestant& contestant : contestants)
    {
        Meter::report({{QStringLiteral("name"), contestant.name},
                       {QStringLiteral("bytes"), bytes},
                       {QStringLiteral("cpuNs"), contestant.cpuNs},
                       {QStringLiteral("wallNs"), contestant.wallNs}});
    }
    return 0;
}
