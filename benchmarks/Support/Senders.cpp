#include "Support/Senders.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventHandlers/EventHandler.h"
#include "EventWrite/EventHandlerWrite.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "Support/BareProxy.h"
#include "Support/BenchmarkEvent.h"

#include "Platform/DBusConnection.h"
#include "Platform/PropertyManagerConst.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/RecorderUrlHashHandling.h"

#include <QDBusMessage>
#include <QJsonObject>

#include <vector>

using Definitions = EventlistHandlerDefinitions;

namespace
{
class PlatformSender : public Sender
{
public:
    void flush() override { Senders::flushPlatformConnection(); }
};

class LibrarySender final : public PlatformSender
{
public:
    LibrarySender(const BenchmarkEvent& event, int producerCount) : m_event(event)
    {
        for (int i = 0; i < producerCount; ++i)
        {
            m_producers.push_back(std::make_unique<EventHandler>(event.moduleName, event.texts,
                                                                 event.url, event.keywords));
            for (const QString& tag : event.sourceTags)
            {
                m_producers.back()->addSourceTag(
                    tag, EventlistHandlerEnums::SourceHashType::noSourceHash);
            }
        }
    }

    void send() override
    {
        m_producers[m_next]->logEvent(m_event.texts, m_event.urlArguments, m_event.arguments);
        m_next = (m_next + 1) % m_producers.size();
    }

private:
    const BenchmarkEvent& m_event;
    std::vector<std::unique_ptr<EventHandler>> m_producers;
    std::size_t m_next = 0;
};

class StraightforwardSender final : public PlatformSender
{
public:
    explicit StraightforwardSender(const BenchmarkEvent& event)
        : m_event(event),
          m_keywords(event.keywords + QStringList(Definitions::getKeywordFirmware())),
          m_writer(event.moduleName, nullptr)
    {
        for (const QString& tag : event.sourceTags)
        {
            m_sourceHashes +=
                QString::fromLatin1(RecorderUrlHashHandling::createUrlHash(tag.toUtf8()).toHex());
        }
    }

    void send() override
    {
        QJsonObject metaData;
        EventlistHandlerConvenienceFunctions::generateMetaData(
            metaData, ReadAllTextsHelper::getAllTextsAsVariantMap(m_event.texts, m_event.url),
            m_event.arguments, m_event.urlArguments, m_event.texts, m_event.url);
        QVariantMap textList;
        EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(textList, metaData);
        m_writer.logEvent(EventlistHandlerEnums::EventType::otherEvents,
                          EventlistHandlerEnums::State::neutral, Definitions::getIconNameEvent(),
                          m_keywords, textList, QString(), m_event.url, metaData, QString(),
                          m_sourceHashes, EventlistHandlerEnums::SourceHashType::noSourceHash);
    }

private:
    const BenchmarkEvent& m_event;
    const QStringList m_keywords;
    QString m_sourceHashes;
    EventHandlerWrite m_writer;
};

class BareSender final : public PlatformSender
{
public:
    explicit BareSender(const BenchmarkEvent& event)
        : m_event(event),
          m_proxy(QLatin1Char('/') + Definitions::getObjectNameEventlistWrite(),
                  Definitions::getInterfaceNameEventlistWrite())
    {
    }

    void send() override
    {
        m_proxy.call(QDBus::NoBlock, QStringLiteral("logEvent"), m_event.eventAttributes,
                     m_event.timestamp, m_event.moduleName, m_event.description, m_event.keywords,
                     m_event.user, m_event.additionalData, m_event.alarmId);
    }

private:
    const ReadyMadeEvent m_event;
    BareProxy m_proxy;
};

QVariantList callSink(const QString& method)
{
    const QDBusMessage call = QDBusMessage::createMethodCall(
        Senders::serviceName(), QStringLiteral("/"), QStringLiteral("Benchmark.Sink"), method);
    return DBusConnection::getQDBusConnection().call(call).arguments();
}
} // namespace

QString Senders::serviceName()
{
    return PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + Definitions::getModuleName();
}

void Senders::waitForService()
{
    const EventlistHandlerDBusConnectorWrite connector(false);
    while (!connector.isDBusInterfaceValid())
    {
        flushPlatformConnection();
    }
}

void Senders::flushPlatformConnection()
{
    const QDBusMessage ping = QDBusMessage::createMethodCall(
        serviceName(), QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"),
        QStringLiteral("Ping"));
    constexpr int timeoutMs = 600000;
    // The answer says nothing but that it is there.
    DBusConnection::getQDBusConnection().call(ping, QDBus::Block, timeoutMs);
}

std::unique_ptr<Sender> Senders::make(const QString& name, const BenchmarkEvent& event,
                                      int producerCount)
{
    if (name == QLatin1String("library"))
    {
        return std::make_unique<LibrarySender>(event, producerCount);
    }
    if (name == QLatin1String("straightforward"))
    {
        return std::make_unique<StraightforwardSender>(event);
    }
    if (name == QLatin1String("bare"))
    {
        return std::make_unique<BareSender>(event);
    }
#ifdef EVENTLISTHANDLER_OTHER_BUS_LIBRARIES
    if (name == QLatin1String("libdbus"))
    {
        return makeLibdbusSender(event);
    }
    if (name == QLatin1String("sdbus"))
    {
        return makeSdBusSender(event);
    }
#endif
    return nullptr;
}

qint64 Senders::compare(const QStringList& names, const BenchmarkEvent& event, QString& differing)
{
    QVariantList first;
    for (const QString& name : names)
    {
        const std::unique_ptr<Sender> sender = make(name, event, 1);
        callSink(QStringLiteral("startComparison"));
        sender->send();
        sender->flush();
        const QVariantList summary = callSink(QStringLiteral("takeSummary"));
        if (summary.size() != 3 || summary[0].toUInt() != 1 ||
            (!first.isEmpty() && summary != first))
        {
            differing = name;
            return -1;
        }
        first = summary;
    }
    return first.value(2).toLongLong();
}
