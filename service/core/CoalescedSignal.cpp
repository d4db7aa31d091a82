#include "core/CoalescedSignal.h"

namespace eventlistd
{

CoalescedSignal::CoalescedSignal(int intervalMs, QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(intervalMs);
    QObject::connect(&m_timer, &QTimer::timeout, this, &CoalescedSignal::onTimeout);
}

void CoalescedSignal::touch()
{
    if (m_timer.isActive())
    {
        m_isPending = true;
        return;
    }
    m_timer.start();
    Q_EMIT changed();
}

void CoalescedSignal::onTimeout()
{
    if (m_isPending)
    {
        m_isPending = false;
        m_timer.start();
        Q_EMIT changed();
    }
}

} // namespace eventlistd
