#include "core/WorkQueue.h"

#include "core/MonotonicClock.h"

#include <utility>

namespace eventlistd
{

void WorkQueue::append(Work work)
{
    if (m_works.empty())
    {
        m_filledSinceMs = monotonicMs();
    }
    m_size += work.size;
    m_works.push_back(std::move(work));
}

void WorkQueue::prepend(Work work)
{
    m_size += work.size;
    m_works.push_front(std::move(work));
}

void WorkQueue::removeFirst(int count)
{
    for (int i = 0; i < count; ++i)
    {
        m_size -= m_works.front().size;
        m_works.pop_front();
    }
}

} // namespace eventlistd
