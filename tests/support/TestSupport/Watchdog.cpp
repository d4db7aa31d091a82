#include "TestSupport/Watchdog.h"

#include <cstdio>
#include <cstdlib>

Watchdog::Watchdog(std::chrono::milliseconds deadline, const QByteArray& activity)
    : m_deadline(deadline), m_activity(activity), m_thread(&Watchdog::watch, this)
{
}

Watchdog::~Watchdog()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isOver = true;
    }
    m_ended.notify_one();
    m_thread.join();
}

void Watchdog::watch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_ended.wait_for(lock, m_deadline, [this] { return m_isOver; }))
    {
        std::fprintf(stderr, "Watchdog: \"%s\" has not ended within %lld ms\n",
                     m_activity.constData(), static_cast<long long>(m_deadline.count()));
        std::fflush(stderr);
        std::abort();
    }
}
