#include "TestSupport/Waiting.h"

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline)
{
    return QTest::qWaitFor(condition, int(deadline.count()));
}
