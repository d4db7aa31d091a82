#include "Support/Senders.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Support/BenchmarkEvent.h"

#include <QByteArray>

#include <systemd/sd-bus.h>

#include <vector>

using Definitions = EventlistHandlerDefinitions;

namespace
{
class TextArray
{
public:
    explicit TextArray(const QStringList& texts)
    {
        for (const QString& text : texts)
        {
            m_bytes.push_back(text.toUtf8());
        }
        for (QByteArray& text : m_bytes)
        {
            m_pointers.push_back(text.data());
        }
        m_pointers.push_back(nullptr);
    }

    char** get() const { return const_cast<char**>(m_pointers.data()); }
    const char* at(std::size_t index) const { return m_pointers[index]; }

private:
    std::vector<QByteArray> m_bytes;
    std::vector<char*> m_pointers;
};

class SdBusSender final : public Sender
{
public:
    explicit SdBusSender(const ReadyMadeEvent& event)
        : m_service(Senders::serviceName().toUtf8()),
          m_path('/' + Definitions::getObjectNameEventlistWrite().toUtf8()),
          m_interface(Definitions::getInterfaceNameEventlistWrite().toUtf8()),
          m_attributes(event.eventAttributes),
          m_keywords(event.keywords),
          m_texts({event.timestamp, event.moduleName, event.description, event.user,
                   event.additionalData, event.alarmId})
    {
        sd_bus_open_system(&m_bus);
    }

    ~SdBusSender() override { sd_bus_flush_close_unref(m_bus); }
    Q_DISABLE_COPY(SdBusSender)

    // No result is looked at: the comparison before the measurement has shown that all arrives.
    void send() override
    {
        sd_bus_message* message = nullptr;
        sd_bus_message_new_method_call(m_bus, &message, m_service.constData(), m_path.constData(),
                                       m_interface.constData(), "logEvent");
        sd_bus_message_set_expect_reply(message, 0);
        sd_bus_message_append_strv(message, m_attributes.get());
        sd_bus_message_append(message, "sss", m_texts.at(0), m_texts.at(1), m_texts.at(2));
        sd_bus_message_append_strv(message, m_keywords.get());
        sd_bus_message_append(message, "sss", m_texts.at(3), m_texts.at(4), m_texts.at(5));
        sd_bus_send(m_bus, message, nullptr);
        sd_bus_message_unref(message);
        sd_bus_flush(m_bus);
    }

    void flush() override
    {
        sd_bus_call_method(m_bus, m_service.constData(), "/", "org.freedesktop.DBus.Peer", "Ping",
                           nullptr, nullptr, "");
    }

private:
    sd_bus* m_bus = nullptr;
    const QByteArray m_service;
    const QByteArray m_path;
    const QByteArray m_interface;
    const TextArray m_attributes;
    const TextArray m_keywords;
    const TextArray m_texts;
};
} // namespace

std::unique_ptr<Sender> Senders::makeSdBusSender(const BenchmarkEvent& event)
{
    return std::make_unique<SdBusSender>(ReadyMadeEvent(event));
}
