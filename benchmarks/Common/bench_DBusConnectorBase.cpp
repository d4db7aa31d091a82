// What a connector and its calls cost.
//
//   bench_DBusConnectorBase calls N               asyncCallHelper beside the bare asyncCall
//   bench_DBusConnectorBase connectors N ...      further connectors, and whole producers, when N are there
//   bench_DBusConnectorBase times N               how long each of N connectors takes to make
//
// Under callgrind each kind is a phase of its own, and "empty" what the measurement itself costs.

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventHandlers/EventHandler.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "Support/BareProxy.h"
#include "Support/Meter.h"
#include "Support/Senders.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QJsonArray>

#include <cstdio>
#include <functional>
#include <vector>

using Definitions = EventlistHandlerDefinitions;

namespace
{
class Connector : public DBusConnectorBase
{
public:
    Connector()
        : DBusConnectorBase(Definitions::getModuleName(), Definitions::getObjectNameEventlistRead(),
                            Definitions::getInterfaceNameEventlistRead(), nullptr, defaultMode)
    {
    }

    DBusPendingReply::SharedPointer ask() const
    {
        return asyncCallHelper(QStringLiteral("getCompleteEventlist"), QStringLiteral("lang_en"));
    }
};

// The answers are kept until all are there, and let go inside of the phase.
void countCalls(int calls)
{
    Senders::waitForService();
    const Connector connector;
    BareProxy proxy(QLatin1Char('/') + Definitions::getObjectNameEventlistRead(),
                    Definitions::getInterfaceNameEventlistRead());
    const auto askBare = [&](int count) {
        std::vector<QDBusPendingCall> replies;
        for (int i = 0; i < count; ++i)
        {
            replies.push_back(
                proxy.asyncCall(QStringLiteral("getCompleteEventlist"), QStringLiteral("lang_en")));
        }
        Senders::flushPlatformConnection();
    };
    const auto askConnector = [&](int count) {
        std::vector<DBusPendingReply::SharedPointer> replies;
        for (int i = 0; i < count; ++i)
        {
            replies.push_back(connector.ask());
        }
        Senders::flushPlatformConnection();
    };
    constexpr int warmUpCalls = 20;
    askBare(warmUpCalls);
    askConnector(warmUpCalls);
    // In turns: how the two threads share out the work changes from phase to phase.
    constexpr int rounds = 10;
    for (int round = 0; round < rounds; ++round)
    {
        Meter::beginPhase();
        askBare(0);
        Meter::endPhase(QStringLiteral("empty"));
        Meter::beginPhase();
        askBare(calls / rounds);
        Meter::endPhase(QStringLiteral("bare"));
        Meter::beginPhase();
        askConnector(calls / rounds);
        Meter::endPhase(QStringLiteral("connector"));
    }
}

using Objects = std::vector<QSharedPointer<QObject>>;

QSharedPointer<QObject> newConnector()
{
    return EventlistHandlerDBusConnectorWrite::createAndConnect(false);
}

QSharedPointer<QObject> newProducer()
{
    static const TextManager texts{QString()};
    return QSharedPointer<EventHandler>::create(QStringLiteral("PumpControl"), texts,
                                                QStringLiteral("PumpControl/OverTemperature"),
                                                QStringList());
}

void countFurther(const QString& kind, const std::function<QSharedPointer<QObject>()>& make,
                  const QStringList& numbers)
{
    constexpr int further = 50;
    Senders::waitForService();
    Objects objects;
    // What happens once in a process, however often it is measured.
    for (int i = 0; i < further; ++i)
    {
        objects.push_back(make());
        Senders::flushPlatformConnection();
    }
    Meter::beginPhase();
    Senders::flushPlatformConnection();
    Meter::endPhase(QStringLiteral("empty"));
    for (const QString& number : numbers)
    {
        objects.reserve(std::size_t(number.toInt() + further));
        while (objects.size() < std::size_t(number.toInt()))
        {
            objects.push_back(make());
        }
        Senders::flushPlatformConnection();
        const qint64 heapBytes = Meter::heapBytes();
        Meter::beginPhase();
        for (int i = 0; i < further; ++i)
        {
            objects.push_back(make());
        }
        Senders::flushPlatformConnection();
        Meter::endPhase(kind + QLatin1Char(' ') + number);
        Meter::report({{QStringLiteral("kind"), kind},
                       {QStringLiteral("there"), number.toInt()},
                       {QStringLiteral("heapBytes"), (Meter::heapBytes() - heapBytes) / further}});
    }
}

// The connection is there before, so that its own set-up does not count.
void timeConnectors(int count)
{
    Senders::flushPlatformConnection();
    Objects objects;
    QJsonArray durationsNs;
    for (int i = 0; i < count; ++i)
    {
        const qint64 beginNs = Meter::wallNs();
        objects.push_back(newConnector());
        durationsNs.append(Meter::wallNs() - beginNs);
    }
    Meter::report({{QStringLiteral("wallNs"), durationsNs}});
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() < 3)
    {
        std::fputs("What is to be measured? See the head of the source.\n", stderr);
        return 2;
    }
    if (words[1] == QLatin1String("calls"))
    {
        countCalls(words[2].toInt());
    }
    else if (words[1] == QLatin1String("connectors"))
    {
        countFurther(QStringLiteral("connector"), newConnector, words.mid(2));
        countFurther(QStringLiteral("producer"), newProducer, words.mid(2));
    }
    else
    {
        timeConnectors(words[2].toInt());
    }
    return 0;
}
