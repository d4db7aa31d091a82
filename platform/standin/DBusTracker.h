#pragma once

#include "DBusLink.h"

#include <QByteArray>
#include <QDBusAbstractInterface>
#include <QDBusConnection>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <tuple>
#include <vector>

class QObject;
class DBusTracker;

/// Somebody who has to know, on his own thread, that the bus connection was replaced.
class DBusSubscriber
{
public:
    /// \param context  object whose thread is to be told; it ends after this one
    explicit DBusSubscriber(QObject& context) : m_context(context) {}
    virtual ~DBusSubscriber() = default;

    DBusSubscriber(const DBusSubscriber&) = delete;
    DBusSubscriber& operator=(const DBusSubscriber&) = delete;

    /// Makes the event loop of the context's thread call the context's customEvent(). There may be
    /// other custom events: this one is not marked.
    void tell();

    /// To be called by customEvent().
    void hear();

protected:
    virtual void connectionReplaced() = 0;

private:
    friend class DBusTracker;

    QObject& m_context;
    // An event is under way. At most one, so that nothing piles up in a thread without event loop.
    std::atomic<bool> m_isTold{false};
    // Guarded by the tracker's mutex.
    std::list<DBusSubscriber*>* m_list = nullptr;
    std::list<DBusSubscriber*>::iterator m_position;
};

/// The address of a remote object in the words of D-Bus.
struct DBusAddress
{
    DBusAddress(const QString& moduleName, const QString& objectName,
                const QString& interfaceNameOfObject);

    static bool isAllowedMember(const QByteArray& name);

    QString serviceName;
    QString path;
    /// A proxy keeps a pointer into it.
    QByteArray interfaceName;
    /// False when D-Bus forbids one of the names.
    bool isAllowed = false;
};

/// One remote object, shared by all connectors of this process that talk to it. Lives as long as
/// the process.
class DBusRemoteObject
{
public:
    explicit DBusRemoteObject(const DBusAddress& objectAddress);

    /// What state() is while the proxy of this generation can be used.
    static constexpr quint64 validState(quint64 generation) { return generation << 1 | 1; }

    /// The generation of the newest proxy, 0 when there was none yet, and whether its service is
    /// there. The one thing that a call looks at.
    quint64 state() const { return m_state.load(std::memory_order_acquire); }

    const DBusAddress address;

    /// Stands in for a proxy until there is one. Every call through it fails at once.
    const std::unique_ptr<QDBusAbstractInterface> placeholder;

private:
    friend class DBusTracker;

    std::atomic<quint64> m_state{0};
    // Guarded by the tracker's mutex.
    std::shared_ptr<QDBusAbstractInterface> m_proxy;
    quint64 m_generation = 0;
    bool m_hasBeenAwaited = false;
    std::list<DBusSubscriber*> m_subscribers;
};

/// A signal to listen for from QtDBus' thread.
struct DBusSignalAddress
{
    QByteArray serviceName;
    QByteArray path;
    QByteArray member;

    bool operator<(const DBusSignalAddress& other) const
    {
        return std::tie(serviceName, path, member) <
               std::tie(other.serviceName, other.path, other.member);
    }
};

/// Whoever takes such a signal. Must not call the tracker.
class DBusSignalSink
{
public:
    virtual void signalArrived(const DBusLink::Signal& signal) = 0;

protected:
    ~DBusSignalSink() = default;
};

/// Keeps this process on the bus, and knows at any time whether the services are there that its
/// connectors talk to.
///
/// One per process, with the one thread of the stand-in. That thread connects, and connects again
/// after a loss; it makes all proxies, so that no connector ever waits for QtDBus. News of the bus
/// come on QtDBus' own thread and are published as atomics, so that a call needs no lock.
/// Threads: any.
class DBusTracker final : private DBusLink::Listener
{
public:
    /// Starts with the first use and ends with the process.
    static DBusTracker& instance();

    /// The connection to use now; one that is not connected when there is no bus.
    /// Blocks: until the first attempt to connect is over, at most 1 s.
    QDBusConnection connection();

    /// The same as a link, so that its user can hold it without being the one to end it; null when
    /// there is no bus.
    std::shared_ptr<DBusLink> link();

    /// Why a connector cannot place a call, for its message.
    enum class Obstacle
    {
        forbiddenName,
        noConnection,
        noService,
        replacedConnection
    };
    Obstacle obstacle(const DBusRemoteObject& object);

    /// The shared remote object of that name.
    /// Blocks: the first use of an object, until its state is known or there is no bus, at most
    ///         1 s.
    std::shared_ptr<DBusRemoteObject> remoteObject(const QString& moduleName,
                                                   const QString& objectName,
                                                   const QString& interfaceName);

    /// A proxy of another generation than the one that is known, while its connection is alive. A
    /// new connection has a proxy as soon as the service has been seen there.
    struct View
    {
        quint64 generation = 0;
        std::shared_ptr<QDBusAbstractInterface> proxy;
    };
    bool newView(const DBusRemoteObject& object, quint64 knownGeneration, View& view);

    /// Tells a subscriber of each new proxy of this object.
    void subscribe(DBusRemoteObject& object, DBusSubscriber& subscriber);

    /// Tells a subscriber of each new connection.
    void subscribe(DBusSubscriber& subscriber);

    /// After this the subscriber is not touched any more.
    void unsubscribe(DBusSubscriber& subscriber);

    /// Feeds a sink with the signals of a service, on every connection to come.
    /// Blocks: until the subscription is on its way to the bus, so that a signal cannot overtake it
    ///         that is sent afterwards; the first use of a service, as remoteObject().
    void addSink(const DBusSignalAddress& address, DBusSignalSink& sink);

    /// After this the sink is not touched any more.
    void removeSink(const DBusSignalAddress& address, DBusSignalSink& sink);

    /// While it lives, connection() gives this connection to the current thread.
    class Pin
    {
    public:
        explicit Pin(const QDBusConnection& connection);
        ~Pin();
        Pin(const Pin&) = delete;
        Pin& operator=(const Pin&) = delete;

    private:
        const QDBusConnection m_connection;
        const QDBusConnection* const m_previous;
    };

private:
    struct Service
    {
        QByteArray name;
        // Of the current generation.
        bool isAnswered = false;
        bool isKnownToQt = false;
        QByteArray owner;
        // For good.
        bool hasBeenAwaited = false;
        std::vector<std::shared_ptr<DBusRemoteObject>> objects;
    };
    using Lock = std::unique_lock<std::mutex>;
    struct Stopper;
    struct Retired
    {
        std::shared_ptr<DBusLink> link;
        std::vector<std::shared_ptr<QDBusAbstractInterface>> proxies;
    };

    DBusTracker();
    ~DBusTracker() = delete;

    void run();
    void stop();
    bool isAlive() const;
    void connectAgain(Lock& lock);
    void adopt(const std::shared_ptr<DBusLink>& link);
    void retireLink();
    void closeRetiredLinks(Lock& lock);
    bool prepareNextService(Lock& lock);
    bool prepareNextObject(Lock& lock);
    void ask(Service& service);
    Service& service(const QByteArray& name);
    void publish(const Service& service);
    void clearStates();
    static void tell(const std::list<DBusSubscriber*>& subscribers);
    void awaitFirst(Lock& lock, const std::shared_ptr<DBusRemoteObject>& object);
    template<typename Condition>
    void waitBriefly(Lock& lock, Condition isSettled);
    static void leaveForkedChild();

    void linkLost(quint64 generation) override;
    void ownerAnswered(quint64 generation, const QByteArray& name,
                       const QByteArray& owner) override;
    void ownerChanged(quint64 generation, const QByteArray& name, const QByteArray& owner) override;
    void signalArrived(quint64 generation, const DBusLink::Signal& signal) override;
    void requestsSent(quint64 generation, quint64 ticket) override;

    // Set before the thread starts.
    std::unique_ptr<QObject> m_receiver;
    std::thread m_thread;

    // Everything from here on is guarded by this mutex. Nothing that can wait for QtDBus' thread is
    // done while it is held, as that thread takes it with every message.
    std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_settled;
    bool m_isStopping = false;
    bool m_isForkedChild = false;
    bool m_hasAttempted = false;
    bool m_isConnectionAwaited = true;
    quint64 m_generation = 0;
    quint64 m_lostGeneration = 0;
    quint64 m_sentTicket = 0;
    std::shared_ptr<DBusLink> m_link;
    std::list<Service> m_services;
    std::map<std::tuple<QString, QString, QString>, std::shared_ptr<DBusRemoteObject>> m_objects;
    std::map<DBusSignalAddress, std::vector<DBusSignalSink*>> m_sinks;
    std::list<DBusSubscriber*> m_subscribers;
    std::list<Retired> m_retired;
};
