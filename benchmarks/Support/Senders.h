#pragma once

#include <QString>
#include <QStringList>

#include <memory>

struct BenchmarkEvent;

/// One way to bring the event onto the bus.
class Sender
{
public:
    virtual ~Sender() = default;

    virtual void send() = 0;

    /// Waits until the service has taken all that this sender has sent.
    virtual void flush() = 0;
};

namespace Senders
{

/// "library"          producers of the library, each in its turn
/// "straightforward"  the public steps of the library, one after the other
/// "bare"             the bare call of QtDBus with the ready-made bytes
/// "libdbus"          the same with libdbus
/// "sdbus"            the same with sd-bus
/// Failure: null for a name that this build does not have.
std::unique_ptr<Sender> make(const QString& name, const BenchmarkEvent& event, int producerCount);

std::unique_ptr<Sender> makeLibdbusSender(const BenchmarkEvent& event);
std::unique_ptr<Sender> makeSdBusSender(const BenchmarkEvent& event);

/// Lets each of them send one event to the sink, which compares them byte for byte, the time apart.
/// \param differing  receives the first one whose event differs from that of the one before it
/// \returns size of the event in bytes; -1 when two of them differ
qint64 compare(const QStringList& names, const BenchmarkEvent& event, QString& differing);

/// Waits until a connector is valid. The first one of a process waits by itself, but only for 1 s,
/// which can pass on a busy machine under callgrind.
void waitForService();

/// Waits until the service has taken all that this process has sent over the connection of the
/// platform layer.
void flushPlatformConnection();

QString serviceName();

} // namespace Senders
