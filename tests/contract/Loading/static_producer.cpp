// A module without QCoreApplication whose producer is made before main() begins and ends after it. It reports on the
// file road at all three times, and while it ends also on the bus road, which nobody hears.

#include "EventHandlers/EventHandler.h"

#include "Platform/TextManager.h"

namespace
{
const TextManager texts{QString()};

class Module
{
public:
    Module()
        : m_file(s("Module"), texts, s("before main"), {}), m_bus(s("Module"), texts, s("bus"), {})
    {
        m_file.setEventToFile(QString());
        m_file.logEvent({});
    }
    ~Module()
    {
        m_file.logEvent(s("after main"), {});
        m_bus.logEvent({});
    }

    void work() { m_file.logEvent(s("in main"), {}); }

private:
    static QString s(const char* text) { return QString::fromLatin1(text); }

    EventHandler m_file;
    EventHandler m_bus;
};

Module module;
} // namespace

int main()
{
    module.work();
    return 0;
}
