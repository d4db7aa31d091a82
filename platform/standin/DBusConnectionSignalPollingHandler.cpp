#include "Platform/DBusConnectionSignalPollingHandler.h"

#include "DBusTracker.h"

#include <QDebug>

#include <cstring>
#include <deque>
#include <mutex>

namespace
{
constexpr std::size_t mostOccurrences = 4096;

// Any allowed word: an address needs one, and a signal is taken from every interface.
const QString& anyInterface()
{
    static const QString name = QStringLiteral("Interface.Any");
    return name;
}
} // namespace

/// What arrived. Fed by QtDBus' thread.
class DBusConnectionSignalPollingHandler::Private final : public DBusSignalSink
{
public:
    Private(const DBusSignalAddress& signalAddress, SlotSignature signature)
        : address(signalAddress), m_hasArgument(signature == boolArgument)
    {
    }

    void signalArrived(const DBusLink::Signal& signal) override;
    bool isEmpty() const;
    QVariant read();
    void forgetRead();
    void forgetAll();

    // Fixed at construction.
    const DBusSignalAddress address;

    // Of the constructing thread.
    bool isListening = false;

private:
    struct Occurrence
    {
        quint64 number;
        bool argument;
    };

    const bool m_hasArgument;
    mutable std::mutex m_mutex;
    // Guarded by the mutex. Numbers begin with 1 and rise.
    std::deque<Occurrence> m_occurrences;
    quint64 m_lastNumber = 0;
    quint64 m_readNumber = 0;
};

void DBusConnectionSignalPollingHandler::Private::signalArrived(const DBusLink::Signal& signal)
{
    if (std::strcmp(signal.signature, m_hasArgument ? "b" : "") != 0)
    {
        return;
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_occurrences.size() == (m_hasArgument ? mostOccurrences : 1))
    {
        m_occurrences.pop_front();
    }
    m_occurrences.push_back({++m_lastNumber, signal.argument});
}

bool DBusConnectionSignalPollingHandler::Private::isEmpty() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_occurrences.empty();
}

QVariant DBusConnectionSignalPollingHandler::Private::read()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_occurrences.empty())
    {
        return {};
    }
    m_readNumber = m_occurrences.front().number;
    return m_hasArgument ? QVariant(m_occurrences.front().argument) : QVariant();
}

void DBusConnectionSignalPollingHandler::Private::forgetRead()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    // What was read may have been dropped meanwhile by those that came after it.
    if (!m_occurrences.empty() && m_occurrences.front().number == m_readNumber)
    {
        m_occurrences.pop_front();
    }
}

void DBusConnectionSignalPollingHandler::Private::forgetAll()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_occurrences.clear();
}

DBusConnectionSignalPollingHandler::DBusConnectionSignalPollingHandler(const QString& moduleName,
                                                                       const QString& objectName,
                                                                       const QString& signalName,
                                                                       SlotSignature signature,
                                                                       bool)
{
    const DBusAddress object(moduleName, objectName, anyInterface());
    const DBusSignalAddress address{object.serviceName.toUtf8(), object.path.toUtf8(),
                                    signalName.toUtf8()};
    d = std::make_unique<Private>(address, signature);
    if (!object.isAllowed || !DBusAddress::isAllowedMember(address.member))
    {
        qWarning() << "Cannot listen for a signal, D-Bus forbids one of its names:"
                   << object.serviceName << object.path << signalName;
        return;
    }
    DBusTracker::instance().addSink(address, *d);
    d->isListening = true;
}

DBusConnectionSignalPollingHandler::~DBusConnectionSignalPollingHandler()
{
    if (d->isListening)
    {
        DBusTracker::instance().removeSink(d->address, *d);
    }
}

bool DBusConnectionSignalPollingHandler::isSignalOccured()
{
    return !d->isEmpty();
}

QVariant DBusConnectionSignalPollingHandler::getSignalParameter()
{
    return d->read();
}

void DBusConnectionSignalPollingHandler::resetLastSignal()
{
    d->forgetRead();
}

void DBusConnectionSignalPollingHandler::resetAllSignals()
{
    d->forgetAll();
}
