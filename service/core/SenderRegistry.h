#pragma once

#include "core/Event.h"
#include "core/TokenBucket.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>
#include <QString>

class QDBusPendingCallWatcher;

namespace eventlistd
{

/// Who sends: for every connection of the bus that talked to the service its user and process, as
/// the daemon knows them, and how much it has used of what it may.
/// Everything that an event says about its sender is a claim; this is what is known.
class SenderRegistry : public QObject
{
    Q_OBJECT
public:
    struct Limits
    {
        double eventsPerSecond = 5000;
        double eventBurst = 250000;
        /// Calls that acknowledge: enough for a whole alarm list, one by one.
        double acknowledgementsPerSecond = 100;
        double acknowledgementBurst = 10000;
        /// Work for queries, in milliseconds: so much each second, so much at once.
        double queryMsPerSecond = 500;
        double queryMsBurst = 10000;
    };

    struct Identity
    {
        qint64 uid = -1;
        qint64 pid = -1;
    };

    explicit SenderRegistry(const Limits& limits, QObject* parent = nullptr);
    ~SenderRegistry() override;

    /// A new bus connection: all senders of the old one are forgotten.
    void setConnection(const QDBusConnection& connection);

    /// Counts one event of a sender and asks the daemon about it when it is new.
    /// \return false when the sender has sent too much; the event is to be dropped
    bool admitEvent(const QString& sender);

    /// The same for an acknowledgement, which has a supply of its own. A refusal is not counted:
    /// it is for the caller to tell.
    bool admitAcknowledgement(const QString& sender);

    /// True when the sender may ask now.
    bool admitQuery(const QString& sender);
    /// Tells what its query has cost.
    void chargeQuery(const QString& sender, qint64 elapsedMs);

    /// What the daemon said; -1 as long as, or when, it did not.
    Identity identity(const QString& sender) const;
    /// Stores that in an event. An event of nobody is the service's own and stays as it is.
    void identify(Event& event, const QString& sender) const;

    /// True while an answer of the daemon is awaited.
    bool isWaiting() const { return m_waiting > 0; }

    /// Waits until the daemon has told about every sender that there is: a sender that hurries its
    /// event into the list by a query shall not stay unknown.
    /// Blocks: while a daemon that stands still keeps silent, for each sender at most 1 s.
    void waitForAnswers();

    /// Senders whose events were dropped, with the numbers, since this was asked the last time.
    QHash<QString, qint64> takeDropped();

private:
    struct Sender
    {
        Identity identity;
        TokenBucket events;
        TokenBucket acknowledgements;
        TokenBucket queryMs;
        qint64 dropped;
        qint64 lastUsed;
    };

    Sender& sender(const QString& name);
    void forgetSome();
    void ask(const QString& name);
    void answered(QDBusPendingCallWatcher* watcher, const QString& name);

    // Fixed at construction.
    const Limits m_limits;
    // The present connection.
    QDBusConnection m_connection{QString()};
    int m_waiting = 0;
    QObject* m_watchers = nullptr;
    QHash<QString, Sender> m_senders;
    qint64 m_useCounter = 0;
};

} // namespace eventlistd
