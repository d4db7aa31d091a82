#include "TestSupport/Watchdog.h"

#include <unistd.h>

/// Hangs under a watchdog.
int main()
{
    const Watchdog watchdog(std::chrono::milliseconds(20), "waiting for the pump");
    ::pause();
    return 0;
}
