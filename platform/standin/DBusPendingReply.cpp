#include "Platform/DBusPendingReply.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QMetaMethod>

DBusPendingReply::DBusPendingReply(const QDBusPendingCall& call) : m_call(call) {}

DBusPendingReply::~DBusPendingReply() = default;

bool DBusPendingReply::isFinished() const
{
    return m_call.isFinished();
}

void DBusPendingReply::waitForFinished()
{
    m_call.waitForFinished();
}

bool DBusPendingReply::isError() const
{
    return m_call.isFinished() && m_call.isError();
}

QDBusError DBusPendingReply::error() const
{
    return isError() ? m_call.error() : QDBusError();
}

QVariantList DBusPendingReply::values() const
{
    if (!m_call.isFinished() || m_call.isError())
    {
        return {};
    }
    return QDBusPendingReply<>(m_call).reply().arguments();
}

void DBusPendingReply::connectNotify(const QMetaMethod& signal)
{
    // Made only for those who listen: a watcher costs more than all the rest of a reply.
    if (m_isAnnounced || signal != QMetaMethod::fromSignal(&DBusPendingReply::finished))
    {
        return;
    }
    m_isAnnounced = true;
    if (m_call.isFinished())
    {
        // A call that was never placed has no watcher that would tell its end.
        QMetaObject::invokeMethod(this, &DBusPendingReply::finished, Qt::QueuedConnection);
        return;
    }
    const auto* watcher = new QDBusPendingCallWatcher(m_call, this);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this,
                     &DBusPendingReply::finished);
}
