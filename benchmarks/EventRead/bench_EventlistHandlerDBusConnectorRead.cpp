// Reading: a change told to many connectors of one process, and queries of large lists.
//
//   bench_EventlistHandlerDBusConnectorRead changes <connectors> <changes>   needs event_sink
//   bench_EventlistHandlerDBusConnectorRead query <rows wanted> <times>      needs the real service
//
// 0 rows wanted asks for the whole list.

#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "Support/Meter.h"
#include "Support/Senders.h"

#include "Platform/DBusConnection.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDateTime>
#include <QDBusVariant>
#include <QEventLoop>
#include <QJsonArray>

#include <cstdio>
#include <vector>

namespace
{
void tellChanges(int connectorCount, int changes)
{
    std::vector<QSharedPointer<EventlistHandlerDBusConnectorRead>> connectors;
    QEventLoop loop;
    int heard = 0;
    for (int i = 0; i < connectorCount; ++i)
    {
        connectors.push_back(EventlistHandlerDBusConnectorRead::createAndConnect(false));
        QObject::connect(connectors.back().data(),
                         &EventlistHandlerDBusConnectorRead::changedEventlist, &loop, [&] {
                             if (++heard == connectorCount)
                             {
                                 loop.quit();
                             }
                         });
    }
    Senders::flushPlatformConnection();
    QJsonArray cpuNs;
    QJsonArray wallNs;
    for (int i = 0; i < changes; ++i)
    {
        heard = 0;
        const qint64 beginCpuNs = Meter::processCpuNs();
        const qint64 beginNs = Meter::wallNs();
        DBusConnection::getQDBusConnection().send(QDBusMessage::createMethodCall(
            Senders::serviceName(), QStringLiteral("/"), QStringLiteral("Benchmark.Sink"),
            QStringLiteral("announceChange")));
        loop.exec();
        wallNs.append(Meter::wallNs() - beginNs);
        cpuNs.append(Meter::processCpuNs() - beginCpuNs);
    }
    Meter::report({{QStringLiteral("cpuNs"), cpuNs}, {QStringLiteral("wallNs"), wallNs}});
}

int rowsIn(const QVariant& data)
{
    int rows = 0;
    const auto list = data.value<QDBusArgument>();
    list.beginArray();
    while (!list.atEnd())
    {
        QStringList row;
        list >> row;
        ++rows;
    }
    list.endArray();
    return rows;
}

void query(int rowsWanted, int times)
{
    const auto connector = EventlistHandlerDBusConnectorRead::createAndConnect(false);
    for (int i = 0; i < times; ++i)
    {
        const qint64 beginNs = Meter::wallNs();
        const DBusPendingReply::SharedPointer reply =
            rowsWanted == 0
                ? connector->getCompleteEventlist(QStringLiteral("lang_en"))
                : connector->getPartOfEventlist(QStringLiteral("lang_en"), {}, {}, {}, {},
                                                QDateTime(), QDateTime(), {}, rowsWanted);
        reply->waitForFinished();
        const double ms = double(Meter::wallNs() - beginNs) / 1000000;
        const QVariantList values = reply->values();
        QVariantMap answer;
        if (!values.isEmpty())
        {
            values.first().value<QDBusArgument>() >> answer;
        }
        Meter::report(
            {{QStringLiteral("ms"), ms},
             {QStringLiteral("error"), reply->error().message()},
             {QStringLiteral("rows"), rowsIn(answer.value(QStringLiteral("data")))},
             {QStringLiteral("isTruncated"), answer.value(QStringLiteral("truncated")).toBool()}});
    }
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 4)
    {
        std::fputs("What is to be measured? See the head of the source.\n", stderr);
        return 2;
    }
    Senders::waitForService();
    if (words[1] == QLatin1String("changes"))
    {
        tellChanges(words[2].toInt(), words[3].toInt());
    }
    else
    {
        query(words[2].toInt(), words[3].toInt());
    }
    return 0;
}
