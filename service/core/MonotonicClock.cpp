#include "core/MonotonicClock.h"

#include <chrono>

namespace eventlistd
{

qint64 monotonicMs()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace eventlistd
