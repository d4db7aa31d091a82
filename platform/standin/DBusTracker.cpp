#include "DBusTracker.h"

#include "Platform/PropertyManagerConst.h"

#include <dbus/dbus.h>

#include <QCoreApplication>
#include <QDBusServiceWatcher>
#include <QDebug>
#include <QEvent>
#include <QObject>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace
{
constexpr std::chrono::seconds longestWait{1};
constexpr std::chrono::milliseconds pauseBetweenAttempts{100};
// Lost connections that are kept whole, for a foreign thread that is just calling through one.
constexpr std::size_t keptLinks = 4;

thread_local const QDBusConnection* pinnedConnection = nullptr;

/// A bare proxy: the ready-made class of Qt would ask the service for its introspection, and wait.
class Proxy : public QDBusAbstractInterface
{
public:
    Proxy(const DBusAddress& address, const QDBusConnection& connection)
        : QDBusAbstractInterface(address.serviceName, address.path,
                                 address.interfaceName.constData(), connection, nullptr)
    {
        // The owner is followed here for all proxies at once. The watcher of this one would get an
        // event with each change, which stays where it is in a thread without event loop.
        qDeleteAll(findChildren<QDBusServiceWatcher*>());
        // Of no thread: it is shared, and outlives the thread that makes it.
        moveToThread(nullptr);
    }
};

/// A connection that is not connected. An empty name makes QtDBus look for none.
QDBusConnection noConnection()
{
    return QDBusConnection(QString());
}

bool isAllowedOnDBus(const QByteArray& name, dbus_bool_t (*isAllowed)(const char*, DBusError*))
{
    return name.size() == int(qstrlen(name.constData())) &&
           isAllowed(name.constData(), nullptr) != FALSE;
}

QByteArray matchRule(const DBusSignalAddress& address)
{
    return "type='signal',sender='" + address.serviceName + "',path='" + address.path +
           "',member='" + address.member + '\'';
}

/// Keeps the signals of the module away from the threads that are started meanwhile. Faults of
/// those threads themselves stay visible.
class SignalShield
{
public:
    SignalShield()
    {
        sigset_t signals;
        sigfillset(&signals);
        for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        {
            sigdelset(&signals, fault);
        }
        pthread_sigmask(SIG_SETMASK, &signals, &m_before);
    }
    ~SignalShield() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    SignalShield(const SignalShield&) = delete;
    SignalShield& operator=(const SignalShield&) = delete;

private:
    sigset_t m_before;
};
} // namespace

DBusAddress::DBusAddress(const QString& moduleName, const QString& objectName,
                         const QString& interfaceNameOfObject)
    : serviceName(PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + moduleName),
      path(QLatin1Char('/') + objectName),
      interfaceName(interfaceNameOfObject.toUtf8())
{
    isAllowed = isAllowedOnDBus(serviceName.toUtf8(), dbus_validate_bus_name) &&
                isAllowedOnDBus(path.toUtf8(), dbus_validate_path) &&
                isAllowedOnDBus(interfaceName, dbus_validate_interface);
}

bool DBusAddress::isAllowedMember(const QByteArray& name)
{
    return isAllowedOnDBus(name, dbus_validate_member);
}

DBusRemoteObject::DBusRemoteObject(const DBusAddress& objectAddress)
    : address(objectAddress), placeholder(new Proxy(address, noConnection()))
{
}

void DBusSubscriber::tell()
{
    if (!m_isTold.exchange(true))
    {
        QCoreApplication::postEvent(&m_context, new QEvent(QEvent::User));
    }
}

void DBusSubscriber::hear()
{
    m_isTold = false;
    connectionReplaced();
}

DBusTracker::Pin::Pin(const QDBusConnection& connection)
    : m_connection(connection), m_previous(pinnedConnection)
{
    pinnedConnection = &m_connection;
}

DBusTracker::Pin::~Pin()
{
    pinnedConnection = m_previous;
}

/// Ends the thread when the process ends. Made after QtDBus' own static objects, so that they are
/// still there; the tracker itself stays, for the objects of a module that end later.
struct DBusTracker::Stopper
{
    explicit Stopper(DBusTracker& tracker) : m_tracker(tracker) {}
    ~Stopper() { m_tracker.stop(); }
    Stopper(const Stopper&) = delete;
    Stopper& operator=(const Stopper&) = delete;

    DBusTracker& m_tracker;
};

DBusTracker& DBusTracker::instance()
{
    static DBusTracker* const tracker = new DBusTracker;
    static const Stopper stopper(*tracker);
    return *tracker;
}

DBusTracker::DBusTracker() : m_receiver(new QObject)
{
    const SignalShield shield;
    // Any name makes QtDBus create its static objects and its thread.
    const QDBusConnection unconnected(QStringLiteral("EventlistHandlerPlatform"));
    pthread_atfork([] { instance().m_mutex.lock(); }, [] { instance().m_mutex.unlock(); },
                   leaveForkedChild);
    try
    {
        m_thread = std::thread(&DBusTracker::run, this);
    }
    catch (const std::system_error& error)
    {
        qWarning() << "D-Bus stays unreachable, no thread can be started:" << error.what();
        m_isStopping = true;
    }
}

void DBusTracker::stop()
{
    {
        const Lock lock(m_mutex);
        m_isStopping = true;
        clearStates();
    }
    m_work.notify_all();
    m_settled.notify_all();
    if (m_thread.joinable() && !m_isForkedChild)
    {
        m_thread.join();
    }
}

/// The child of a fork has the connection, but nobody who reads or writes it: without this, its
/// calls would vanish and look successful.
void DBusTracker::leaveForkedChild()
{
    DBusTracker& tracker = instance();
    tracker.m_isStopping = true;
    tracker.m_isForkedChild = true;
    tracker.clearStates();
    tracker.m_mutex.unlock();
}

bool DBusTracker::isAlive() const
{
    return m_link && m_lostGeneration != m_generation && !m_isForkedChild;
}

void DBusTracker::run()
{
    pthread_setname_np(pthread_self(), "DBusTracker");
    Lock lock(m_mutex);
    while (!m_isStopping)
    {
        if (!m_link)
        {
            connectAgain(lock);
        }
        else if (m_lostGeneration == m_generation)
        {
            retireLink();
        }
        else if (!prepareNextService(lock) && !prepareNextObject(lock))
        {
            m_work.wait(lock);
        }
    }
}

void DBusTracker::connectAgain(Lock& lock)
{
    closeRetiredLinks(lock);
    const quint64 generation = ++m_generation;
    lock.unlock();
    std::shared_ptr<DBusLink> link = DBusLink::open(generation, *this);
    lock.lock();
    m_hasAttempted = true;
    if (link)
    {
        adopt(link);
    }
    m_settled.notify_all();
    if (!link)
    {
        m_work.wait_for(lock, pauseBetweenAttempts, [this] { return m_isStopping; });
    }
}

void DBusTracker::adopt(const std::shared_ptr<DBusLink>& link)
{
    m_link = link;
    m_sentTicket = 0;
    for (Service& known : m_services)
    {
        ask(known);
    }
    for (const auto& [address, sinks] : m_sinks)
    {
        link->addMatch(matchRule(address));
    }
    tell(m_subscribers);
}

void DBusTracker::ask(Service& service)
{
    service.isAnswered = false;
    service.isKnownToQt = false;
    service.owner.clear();
    if (m_link)
    {
        m_link->followOwner(service.name);
    }
}

bool DBusTracker::prepareNextService(Lock& lock)
{
    const auto next = std::find_if(m_services.begin(), m_services.end(), [](const Service& known) {
        return known.isAnswered && !known.isKnownToQt && !known.owner.isEmpty();
    });
    if (next == m_services.end())
    {
        return false;
    }
    // One subscription to anything of the service makes QtDBus ask for its owner, once and
    // waiting, and keep the answer: without it every proxy and the first subscription of a
    // connector would ask. The bus has just told the same, so this wait is short. Not while the
    // service is absent: QtDBus would warn when it comes just between the question and the answer.
    // Nobody sends this signal.
    const std::shared_ptr<DBusLink> link = m_link;
    lock.unlock();
    QDBusConnection(link->connection())
        .connect(QString::fromUtf8(next->name), QStringLiteral("/"), QString(),
                 QStringLiteral("keepOwnerKnown"), m_receiver.get(),
                 SIGNAL(objectNameChanged(QString)));
    lock.lock();
    next->isKnownToQt = m_link == link;
    return true;
}

bool DBusTracker::prepareNextObject(Lock& lock)
{
    for (Service& known : m_services)
    {
        const auto next =
            std::find_if(known.objects.begin(), known.objects.end(), [this](const auto& object) {
                return object->m_generation != m_generation;
            });
        if (!known.isKnownToQt || next == known.objects.end())
        {
            continue;
        }
        const std::shared_ptr<DBusRemoteObject> object = *next;
        const std::shared_ptr<DBusLink> link = m_link;
        lock.unlock();
        // The proxy holds a copy of the connection; the link, which has to end later, goes with it.
        const std::shared_ptr<QDBusAbstractInterface> proxy(
            new Proxy(object->address, link->connection()),
            [link](QDBusAbstractInterface* unused) { delete unused; });
        lock.lock();
        if (m_link == link)
        {
            object->m_proxy = proxy;
            object->m_generation = m_generation;
            publish(known);
            tell(object->m_subscribers);
            m_settled.notify_all();
        }
        return true;
    }
    return false;
}

void DBusTracker::retireLink()
{
    Retired retired;
    retired.link = std::move(m_link);
    for (const auto& [name, object] : m_objects)
    {
        if (object->m_proxy)
        {
            retired.proxies.push_back(std::move(object->m_proxy));
        }
    }
    m_retired.push_back(std::move(retired));
    m_link.reset();
}

void DBusTracker::closeRetiredLinks(Lock& lock)
{
    std::vector<std::shared_ptr<DBusLink>> unused;
    auto current = m_retired.begin();
    for (std::size_t older = m_retired.size(); older > keptLinks; --older)
    {
        current->proxies.clear();
        // A connector that has not called since then still holds its proxy, and so the link.
        if (current->link.use_count() == 1)
        {
            unused.push_back(std::move(current->link));
            current = m_retired.erase(current);
        }
        else
        {
            ++current;
        }
    }
    lock.unlock();
    for (std::shared_ptr<DBusLink>& link : unused)
    {
        DBusLink::close(std::move(link));
    }
    lock.lock();
}

DBusTracker::Service& DBusTracker::service(const QByteArray& name)
{
    const auto known = std::find_if(m_services.begin(), m_services.end(),
                                    [&name](const Service& each) { return each.name == name; });
    if (known != m_services.end())
    {
        return *known;
    }
    Service& added = m_services.emplace_back();
    added.name = name;
    ask(added);
    return added;
}

void DBusTracker::publish(const Service& service)
{
    const bool isPresent = isAlive() && !service.owner.isEmpty();
    for (const std::shared_ptr<DBusRemoteObject>& object : service.objects)
    {
        if (object->m_generation == m_generation)
        {
            object->m_state.store(m_generation << 1 | quint64(isPresent),
                                  std::memory_order_release);
        }
    }
}

void DBusTracker::clearStates()
{
    for (const auto& [name, object] : m_objects)
    {
        object->m_state.store(object->m_generation << 1, std::memory_order_release);
    }
}

void DBusTracker::tell(const std::list<DBusSubscriber*>& subscribers)
{
    for (DBusSubscriber* const subscriber : subscribers)
    {
        subscriber->tell();
    }
}

template<typename Condition>
void DBusTracker::waitBriefly(Lock& lock, Condition isSettled)
{
    m_work.notify_all();
    m_settled.wait_for(lock, longestWait, [&] {
        return m_isStopping || (m_hasAttempted && !isAlive()) || isSettled();
    });
}

QDBusConnection DBusTracker::connection()
{
    if (pinnedConnection != nullptr)
    {
        return *pinnedConnection;
    }
    const std::shared_ptr<DBusLink> current = link();
    return current ? current->connection() : noConnection();
}

std::shared_ptr<DBusLink> DBusTracker::link()
{
    Lock lock(m_mutex);
    if (m_isConnectionAwaited)
    {
        waitBriefly(lock, [this] { return m_link != nullptr; });
        m_isConnectionAwaited = false;
    }
    return isAlive() ? m_link : nullptr;
}

DBusTracker::Obstacle DBusTracker::obstacle(const DBusRemoteObject& object)
{
    const Lock lock(m_mutex);
    if (!object.address.isAllowed)
    {
        return Obstacle::forbiddenName;
    }
    if (!isAlive())
    {
        return Obstacle::noConnection;
    }
    return object.m_generation != m_generation || (object.state() & 1) == 0
               ? Obstacle::noService
               : Obstacle::replacedConnection;
}

void DBusTracker::awaitFirst(Lock& lock, const std::shared_ptr<DBusRemoteObject>& object)
{
    Service& owner = service(object->address.serviceName.toUtf8());
    if (std::find(owner.objects.begin(), owner.objects.end(), object) == owner.objects.end())
    {
        owner.objects.push_back(object);
    }
    waitBriefly(lock, [&] {
        const bool isAbsent = owner.isAnswered && owner.owner.isEmpty();
        return m_link && (isAbsent || object->m_generation == m_generation);
    });
    object->m_hasBeenAwaited = true;
}

std::shared_ptr<DBusRemoteObject> DBusTracker::remoteObject(const QString& moduleName,
                                                            const QString& objectName,
                                                            const QString& interfaceName)
{
    Lock lock(m_mutex);
    std::shared_ptr<DBusRemoteObject>& entry = m_objects[{moduleName, objectName, interfaceName}];
    if (!entry)
    {
        entry =
            std::make_shared<DBusRemoteObject>(DBusAddress(moduleName, objectName, interfaceName));
    }
    const std::shared_ptr<DBusRemoteObject> object = entry;
    if (object->address.isAllowed && !object->m_hasBeenAwaited)
    {
        awaitFirst(lock, object);
    }
    return object;
}

bool DBusTracker::newView(const DBusRemoteObject& object, quint64 knownGeneration, View& view)
{
    const Lock lock(m_mutex);
    if (!isAlive() || object.m_generation != m_generation || m_generation == knownGeneration)
    {
        return false;
    }
    view.generation = m_generation;
    view.proxy = object.m_proxy;
    return true;
}

void DBusTracker::subscribe(DBusRemoteObject& object, DBusSubscriber& subscriber)
{
    const Lock lock(m_mutex);
    subscriber.m_list = &object.m_subscribers;
    subscriber.m_position = subscriber.m_list->insert(subscriber.m_list->end(), &subscriber);
}

void DBusTracker::subscribe(DBusSubscriber& subscriber)
{
    const Lock lock(m_mutex);
    subscriber.m_list = &m_subscribers;
    subscriber.m_position = subscriber.m_list->insert(subscriber.m_list->end(), &subscriber);
}

void DBusTracker::unsubscribe(DBusSubscriber& subscriber)
{
    const Lock lock(m_mutex);
    if (subscriber.m_list != nullptr)
    {
        subscriber.m_list->erase(subscriber.m_position);
        subscriber.m_list = nullptr;
    }
}

void DBusTracker::addSink(const DBusSignalAddress& address, DBusSignalSink& sink)
{
    Lock lock(m_mutex);
    Service& sender = service(address.serviceName);
    std::vector<DBusSignalSink*>& sinks = m_sinks[address];
    sinks.push_back(&sink);
    const quint64 generation = m_generation;
    const quint64 ticket =
        sinks.size() == 1 && m_link ? m_link->addMatch(matchRule(address)) : m_sentTicket;
    const bool isFirst = !sender.hasBeenAwaited;
    if (isFirst || ticket > m_sentTicket)
    {
        waitBriefly(lock, [&] {
            return m_link && (!isFirst || sender.isAnswered) &&
                   (ticket <= m_sentTicket || generation != m_generation);
        });
        sender.hasBeenAwaited = true;
    }
}

void DBusTracker::removeSink(const DBusSignalAddress& address, DBusSignalSink& sink)
{
    const Lock lock(m_mutex);
    const auto entry = m_sinks.find(address);
    entry->second.erase(std::find(entry->second.begin(), entry->second.end(), &sink));
    if (!entry->second.empty())
    {
        return;
    }
    m_sinks.erase(entry);
    if (m_link)
    {
        m_link->removeMatch(matchRule(address));
    }
}

void DBusTracker::linkLost(quint64 generation)
{
    const Lock lock(m_mutex);
    if (generation != m_generation)
    {
        return;
    }
    m_lostGeneration = generation;
    clearStates();
    m_work.notify_all();
    m_settled.notify_all();
}

void DBusTracker::ownerAnswered(quint64 generation, const QByteArray& name, const QByteArray& owner)
{
    const Lock lock(m_mutex);
    for (Service& known : m_services)
    {
        if (generation == m_generation && known.name == name)
        {
            known.isAnswered = true;
            known.owner = owner;
            publish(known);
            m_work.notify_all();
            m_settled.notify_all();
        }
    }
}

void DBusTracker::ownerChanged(quint64 generation, const QByteArray& name, const QByteArray& owner)
{
    const Lock lock(m_mutex);
    for (Service& known : m_services)
    {
        if (generation == m_generation && known.isAnswered && known.name == name)
        {
            known.owner = owner;
            publish(known);
            m_work.notify_all();
        }
    }
}

void DBusTracker::signalArrived(quint64 generation, const DBusLink::Signal& signal)
{
    const Lock lock(m_mutex);
    for (const auto& [address, sinks] : m_sinks)
    {
        if (generation == m_generation && address.member == signal.member &&
            address.path == signal.path && service(address.serviceName).owner == signal.sender)
        {
            for (DBusSignalSink* const sink : sinks)
            {
                sink->signalArrived(signal);
            }
        }
    }
}

void DBusTracker::requestsSent(quint64 generation, quint64 ticket)
{
    const Lock lock(m_mutex);
    if (generation == m_generation)
    {
        m_sentTicket = ticket;
        m_settled.notify_all();
    }
}
