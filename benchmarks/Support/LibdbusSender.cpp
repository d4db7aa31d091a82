#include "Support/Senders.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Support/BenchmarkEvent.h"

#include <dbus/dbus.h>

#include <QByteArray>

#include <vector>

using Definitions = EventlistHandlerDefinitions;

namespace
{
std::vector<QByteArray> utf8(const QStringList& texts)
{
    std::vector<QByteArray> bytes;
    for (const QString& text : texts)
    {
        bytes.push_back(text.toUtf8());
    }
    return bytes;
}

class LibdbusSender final : public Sender
{
public:
    explicit LibdbusSender(const ReadyMadeEvent& event)
        : m_connection(dbus_bus_get_private(DBUS_BUS_SYSTEM, nullptr)),
          m_service(Senders::serviceName().toUtf8()),
          m_path('/' + Definitions::getObjectNameEventlistWrite().toUtf8()),
          m_interface(Definitions::getInterfaceNameEventlistWrite().toUtf8()),
          m_attributes(utf8(event.eventAttributes)),
          m_keywords(utf8(event.keywords)),
          m_before(utf8({event.timestamp, event.moduleName, event.description})),
          m_after(utf8({event.user, event.additionalData, event.alarmId}))
    {
    }

    ~LibdbusSender() override
    {
        dbus_connection_close(m_connection);
        dbus_connection_unref(m_connection);
    }
    Q_DISABLE_COPY(LibdbusSender)

    void send() override
    {
        DBusMessage* const message = newCall(m_path, m_interface, "logEvent");
        dbus_message_set_no_reply(message, TRUE);
        DBusMessageIter arguments;
        dbus_message_iter_init_append(message, &arguments);
        appendArray(arguments, m_attributes);
        appendTexts(arguments, m_before);
        appendArray(arguments, m_keywords);
        appendTexts(arguments, m_after);
        dbus_connection_send(m_connection, message, nullptr);
        dbus_message_unref(message);
        dbus_connection_flush(m_connection);
    }

    void flush() override
    {
        DBusMessage* const ping = newCall("/", DBUS_INTERFACE_PEER, "Ping");
        constexpr int timeoutMs = 600000;
        DBusMessage* const answer =
            dbus_connection_send_with_reply_and_block(m_connection, ping, timeoutMs, nullptr);
        if (answer != nullptr)
        {
            dbus_message_unref(answer);
        }
        dbus_message_unref(ping);
    }

private:
    DBusMessage* newCall(const QByteArray& path, const QByteArray& interface, const char* method)
    {
        return dbus_message_new_method_call(m_service.constData(), path.constData(),
                                            interface.constData(), method);
    }

    static void appendTexts(DBusMessageIter& to, const std::vector<QByteArray>& texts)
    {
        for (const QByteArray& text : texts)
        {
            const char* const bytes = text.constData();
            dbus_message_iter_append_basic(&to, DBUS_TYPE_STRING, &bytes);
        }
    }

    static void appendArray(DBusMessageIter& to, const std::vector<QByteArray>& texts)
    {
        DBusMessageIter array;
        dbus_message_iter_open_container(&to, DBUS_TYPE_ARRAY, DBUS_TYPE_STRING_AS_STRING, &array);
        appendTexts(array, texts);
        dbus_message_iter_close_container(&to, &array);
    }

    DBusConnection* const m_connection;
    const QByteArray m_service;
    const QByteArray m_path;
    const QByteArray m_interface;
    const std::vector<QByteArray> m_attributes;
    const std::vector<QByteArray> m_keywords;
    const std::vector<QByteArray> m_before;
    const std::vector<QByteArray> m_after;
};
} // namespace

std::unique_ptr<Sender> Senders::makeLibdbusSender(const BenchmarkEvent& event)
{
    return std::make_unique<LibdbusSender>(ReadyMadeEvent(event));
}
