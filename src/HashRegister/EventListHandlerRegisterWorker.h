#pragma once

#include "Definitions/EventlistHandlerExport.h"

#include <QObject>
#include <QString>

#include <atomic>

/// Listens for the icon that the central service announces for one hash. It may live on a thread of
/// the owner's choice, which needs an event loop: make it, move it there, call connect().
///
/// The subscription lives as long as the object and as the bus: it outlives a restart of the
/// service, but not one of the bus daemon, and isConnected() stays true then. A module that must
/// outlive that makes a new worker.
///
/// connect() hides QObject::connect; write that one with its class.
class EVENTLISTHANDLER_EXPORT EventListHandlerRegisterWorker : public QObject
{
    Q_OBJECT
public:
    /// \param hash        letters, digits and "_"; with other characters connect() fails. Empty
    ///                    listens for the global announcements.
    /// \param moduleName  module of the service that announces, such as "EventlistHandler"
    EventListHandlerRegisterWorker(const QString& hash, const QString& moduleName);
    ~EventListHandlerRegisterWorker() override;

    /// Subscribes, once: when it has succeeded, further calls do nothing. After a failure it may be
    /// called again, as often as wanted.
    /// Failure: one warning; isConnected() stays false.
    /// Blocks:  called on another thread than the object's, until that thread's event loop has made
    ///          the attempt: for ever when that thread never runs one.
    /// Threads: any.
    /// Wire:    signal "availableEventIcon" of "Interface.Event" on "/Hash<hash>", or
    ///          "/HashGlobal".
    void connect();

    /// True once the subscription stands.
    /// Threads: any.
    bool isConnected() const;

Q_SIGNALS:
    /// The service has announced the icon of the hash. Sent on the object's thread.
    void newSignal(const QString& hash, const QString& icon);

private Q_SLOTS:
    void receiver(const QString& icon);

private:
    // Fixed at construction.
    QString m_hash;
    QString m_moduleName;
    // Written by the object's thread, read by any.
    std::atomic<bool> m_connected{false};
};
