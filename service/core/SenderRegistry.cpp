#include "core/SenderRegistry.h"

#include "core/MonotonicClock.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVector>

#include <algorithm>
#include <utility>

namespace eventlistd
{

namespace
{
// A daemon gives out no name twice, so that names of the past would stay for ever.
constexpr int sendersKept = 2048;
constexpr int longestAnswerMs = 1000;
} // namespace

SenderRegistry::SenderRegistry(const Limits& limits, QObject* parent)
    : QObject(parent), m_limits(limits), m_watchers(new QObject(this))
{
}

SenderRegistry::~SenderRegistry() = default;

void SenderRegistry::setConnection(const QDBusConnection& connection)
{
    m_connection = connection;
    m_senders.clear();
    m_waiting = 0;
    delete m_watchers;
    m_watchers = new QObject(this);
}

bool SenderRegistry::admitEvent(const QString& name)
{
    Sender& known = sender(name);
    if (known.events.take(1, monotonicMs()))
    {
        return true;
    }
    ++known.dropped;
    return false;
}

bool SenderRegistry::admitAcknowledgement(const QString& name)
{
    return sender(name).acknowledgements.take(1, monotonicMs());
}

bool SenderRegistry::admitQuery(const QString& name)
{
    return sender(name).queryMs.isFilled(monotonicMs());
}

void SenderRegistry::chargeQuery(const QString& name, qint64 elapsedMs)
{
    sender(name).queryMs.takeAnyway(double(elapsedMs), monotonicMs());
}

SenderRegistry::Identity SenderRegistry::identity(const QString& name) const
{
    const auto found = m_senders.constFind(name);
    return found == m_senders.constEnd() ? Identity() : found->identity;
}

void SenderRegistry::identify(Event& event, const QString& sender) const
{
    if (!sender.isEmpty())
    {
        const Identity known = identity(sender);
        event.senderUid = known.uid;
        event.senderPid = known.pid;
    }
}

QHash<QString, qint64> SenderRegistry::takeDropped()
{
    QHash<QString, qint64> dropped;
    for (auto it = m_senders.begin(); it != m_senders.end(); ++it)
    {
        if (it->dropped > 0)
        {
            dropped.insert(it.key(), std::exchange(it->dropped, 0));
        }
    }
    return dropped;
}

SenderRegistry::Sender& SenderRegistry::sender(const QString& name)
{
    auto found = m_senders.find(name);
    if (found == m_senders.end())
    {
        forgetSome();
        found = m_senders.insert(
            name, {Identity(), TokenBucket(m_limits.eventsPerSecond, m_limits.eventBurst),
                   TokenBucket(m_limits.acknowledgementsPerSecond, m_limits.acknowledgementBurst),
                   TokenBucket(m_limits.queryMsPerSecond, m_limits.queryMsBurst), 0, 0});
        ask(name);
    }
    found->lastUsed = ++m_useCounter;
    return *found;
}

void SenderRegistry::forgetSome()
{
    if (m_senders.size() < sendersKept)
    {
        return;
    }
    QVector<qint64> uses;
    for (const Sender& known : qAsConst(m_senders))
    {
        uses.append(known.lastUsed);
    }
    const auto middle = uses.begin() + uses.size() / 2;
    std::nth_element(uses.begin(), middle, uses.end());
    for (auto it = m_senders.begin(); it != m_senders.end();)
    {
        // A count that was not told yet is kept.
        it = it->lastUsed < *middle && it->dropped == 0 ? m_senders.erase(it) : std::next(it);
    }
}

void SenderRegistry::ask(const QString& name)
{
    QDBusMessage question = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionCredentials"));
    question << name;
    auto* watcher =
        new QDBusPendingCallWatcher(m_connection.asyncCall(question, longestAnswerMs), m_watchers);
    ++m_waiting;
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this,
                     [this, name](QDBusPendingCallWatcher* done) { answered(done, name); });
    watcher->setObjectName(name);
}

void SenderRegistry::waitForAnswers()
{
    const auto watchers = m_watchers->findChildren<QDBusPendingCallWatcher*>();
    for (QDBusPendingCallWatcher* watcher : watchers)
    {
        // One that is answered already waits for its deletion only.
        if (!watcher->objectName().isEmpty())
        {
            watcher->waitForFinished();
            answered(watcher, watcher->objectName());
        }
    }
}

void SenderRegistry::answered(QDBusPendingCallWatcher* watcher, const QString& name)
{
    const QDBusPendingReply<QVariantMap> reply = *watcher;
    // Nothing more is to come of it, not even the signal that is posted.
    watcher->disconnect(this);
    watcher->setObjectName(QString());
    watcher->deleteLater();
    --m_waiting;
    const auto found = m_senders.find(name);
    if (reply.isError() || found == m_senders.end())
    {
        return;
    }
    const QVariantMap credentials = reply.value();
    const auto number = [&](const QString& key) {
        return credentials.contains(key) ? credentials.value(key).toLongLong() : -1;
    };
    found->identity = {number(QStringLiteral("UnixUserID")), number(QStringLiteral("ProcessID"))};
}

} // namespace eventlistd
