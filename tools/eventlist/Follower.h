#pragma once

#include "Platform/DBusPendingReply.h"

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class DBusConnectorBase;
class ListReply;
class QSocketNotifier;

/// What the commands that follow a list have in common: they ask for it whenever it may have
/// changed, one query at a time, and go on after a restart of the service or of the bus.
class Follower : public QObject
{
    Q_OBJECT
public:
    ~Follower() override;

    /// Runs until the process is ended.
    int run();

protected:
    explicit Follower(const DBusConnectorBase& connector);

    /// The list may have changed.
    void look();

    /// Places the query. Null when the service is not there.
    virtual DBusPendingReply::SharedPointer ask() = 0;
    /// Takes the answer. \returns true when there may be more to ask for at once
    virtual bool take(const ListReply& list) = 0;
    /// The service is there again, perhaps with another list.
    virtual void serviceIsBack() = 0;

private:
    void watchPresence();
    void finish();

    const DBusConnectorBase& m_connector;
    QTimer m_presence;
    std::unique_ptr<QSocketNotifier> m_reader;
    DBusPendingReply::SharedPointer m_reply;
    bool m_isThere = false;
    bool m_wasTold = false;
    bool m_isStale = false;
    bool m_hasFailed = false;
};
