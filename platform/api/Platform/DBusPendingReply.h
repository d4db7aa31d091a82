#pragma once

#include "Platform/PlatformExport.h"

#include <QDBusError>
#include <QDBusPendingCall>
#include <QObject>
#include <QSharedPointer>
#include <QVariantList>

/// The answer to an asynchronous call, now or later. Belongs to the thread that placed the call:
/// use it and release it there.
///
///     const DBusPendingReply::SharedPointer reply = reader.getCompleteEventlist(QString());
///     if (reply.isNull())
///         return;                                    // not placed: the service is not there
///     QObject::connect(reply.data(), &DBusPendingReply::finished, this, &Panel::showList);
class PLATFORM_EXPORT DBusPendingReply : public QObject
{
    Q_OBJECT
public:
    /// How replies are handed out.
    using SharedPointer = QSharedPointer<DBusPendingReply>;

    /// Of a call that was placed.
    explicit DBusPendingReply(const QDBusPendingCall& call);
    ~DBusPendingReply() override;

    /// True when the answer is there, be it a result or an error.
    bool isFinished() const;

    /// Blocks: until the answer is there, at most the time-out of the bus, 25 s. Needs no event
    ///         loop.
    void waitForFinished();

    /// True when the call has failed: refused, no such method, no answer, bus lost. False while it
    /// is under way.
    bool isError() const;

    /// Why the call has failed; of type QDBusError::NoError otherwise.
    QDBusError error() const;

    /// The values of the answer, as QtDBus delivers them: what is a container inside a container is
    /// a QDBusArgument, to be read with qdbus_cast. Empty while the call is under way and when it
    /// has failed.
    QVariantList values() const;

Q_SIGNALS:
    /// The answer is there. Sent once, also when it was there before the signal was connected;
    /// needs the event loop of this thread.
    void finished();

protected:
    /// Announces an answer that was there before its signal was connected.
    void connectNotify(const QMetaMethod& signal) override;

private:
    QDBusPendingCall m_call;
    bool m_isAnnounced = false;
};
