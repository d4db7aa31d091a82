#pragma once

#include <QByteArray>
#include <QDBusConnection>
#include <QString>

#include <memory>

/// One connection of this process to the bus, seen from below: it hears every message that arrives,
/// on the thread on which QtDBus reads the bus, and so needs neither an event loop nor a
/// QCoreApplication. It never comes back once it is lost; the next one takes its place.
///
/// Nothing here waits for the bus but open().
class DBusLink
{
public:
    /// What arrived on a signal that is no news of the bus itself.
    struct Signal
    {
        const char* sender;
        const char* path;
        const char* member;
        const char* signature;
        /// The argument, when the signature is "b".
        bool argument;
    };

    /// Whoever is told what arrives. Called on QtDBus' thread, also after the link is gone, until
    /// the bus connection itself is: it has to live as long as the process.
    class Listener
    {
    public:
        /// The link is lost. Nothing more comes from it.
        virtual void linkLost(quint64 generation) = 0;

        /// The answer to followOwner(): who owns the name now. Empty when nobody does.
        virtual void ownerAnswered(quint64 generation, const QByteArray& name,
                                   const QByteArray& owner) = 0;

        /// A bus name has another owner, or none any more.
        virtual void ownerChanged(quint64 generation, const QByteArray& name,
                                  const QByteArray& owner) = 0;

        virtual void signalArrived(quint64 generation, const Signal& signal) = 0;

        /// All requests up to this ticket are on their way to the bus.
        virtual void requestsSent(quint64 generation, quint64 ticket) = 0;

    protected:
        ~Listener() = default;
    };

    /// Connects to the system bus.
    /// \param generation  number of this link within the process
    /// Failure: null, at once when there is no bus.
    /// Blocks:  until the bus has answered, at most 25 s.
    static std::shared_ptr<DBusLink> open(quint64 generation, Listener& listener);

    /// Closes a link for good. QtDBus allows the end of a connection on its own thread only; it
    /// gets there when the last copy of the connection is the one that QtDBus keeps under its name.
    static void close(std::shared_ptr<DBusLink>&& link);

    quint64 generation() const { return m_generation; }

    const QDBusConnection& connection() const { return m_connection; }

    /// Tells the bus which messages are wanted. Rules are counted by the bus: equal ones are kept
    /// twice.
    /// \return the ticket of this request
    quint64 addMatch(const QByteArray& rule) const;
    void removeMatch(const QByteArray& rule) const;

    /// Makes the listener hear who owns a bus name, first by an answer, then by every change.
    void followOwner(const QByteArray& name) const;

    DBusLink(const DBusLink&) = delete;
    DBusLink& operator=(const DBusLink&) = delete;
    ~DBusLink() = default;

private:
    class Tap;

    DBusLink(quint64 generation, const QDBusConnection& connection);

    // Set by open().
    const quint64 m_generation;
    const QDBusConnection m_connection;
    Tap* m_tap = nullptr;
};
