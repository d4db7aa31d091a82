#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"

#include <QCoreApplication>

#include <cstdio>
#include <unistd.h>

/// Starts a bus and a service, tells their process ids and waits to be killed.
int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    PrivateBus bus;
    ForeignService service(bus, QStringLiteral("org.example.Pump"));
    if (!bus.start() || !service.start())
    {
        std::fprintf(stderr, "%s %s\n", bus.errorText(), service.errorText());
        return 1;
    }
    // The service stands still, so that it cannot notice the end of its input.
    service.freeze();
    std::printf("%lld %lld\n", bus.processId(), service.processId());
    std::fflush(stdout);
    ::pause();
    return 0;
}
