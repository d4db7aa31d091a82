// A module that logs events.
//
//   steady_module [--application | --event-loop] [--producers <n>] [--count <n>]
//
// Without --count it logs at most one event each millisecond until its standard input ends. The user of each
// event is its number. It obeys these lines of its standard input:
//
//   too large         logs an event that is too large for a system bus
//   kill <process>    logs an event, kills the process at once, and goes on as soon as that has ended
//   end <process>     the same in good order (SIGTERM)
//
// In the end it prints
//
//   sent <n>
//   refused <number> ...      the events that were warned about, in order
//   slowest <microseconds>    the longest that one event took
//
// --application makes a QCoreApplication, whose loop never runs, --event-loop one whose loop runs;
// without them there is none. --producers makes more than one of them; they take turns.

#include "EventHandlers/AuditTrailHandler.h"
#include "TestSupport/FakeTextManager.h"

#include "Platform/DBusConnection.h"
#include "Platform/PropertyManagerConst.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QSocketNotifier>
#include <QTimer>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace
{
// A system bus takes messages up to 32 MiB.
constexpr int unitsTooMany = 33 * 1024 * 1024;

// The warnings about the event that is just logged.
int warningCount = 0;

void takeWarning(QtMsgType, const QMessageLogContext&, const QString& text)
{
    ++warningCount;
    if (!text.contains(QLatin1String("Interface.EventlistWrite")))
    {
        std::fprintf(stderr, "unexpected: %s\n", text.toUtf8().constData());
    }
}

class Module
{
public:
    explicit Module(int producerCount)
        : m_texts({{QStringLiteral("Steady/Beat"),
                    {{QStringLiteral("lang_de"), QStringLiteral("Schlag %1")},
                     {QStringLiteral("lang_en"), QStringLiteral("Beat %1")}}}})
    {
        for (int i = 0; i < producerCount; ++i)
        {
            m_producers.push_back(std::make_unique<AuditTrailHandler>(
                QStringLiteral("Steady"), m_texts, QStringLiteral("Steady/Beat"), QStringList()));
        }
    }

    void logNext(bool isTooLarge = false)
    {
        QElapsedTimer timer;
        timer.start();
        warningCount = 0;
        const QString number = QString::number(m_sent);
        const QString user = isTooLarge ? QString(unitsTooMany, QLatin1Char('x')) : number;
        m_producers[std::size_t(m_sent) % m_producers.size()]->logAuditTrail(
            user, {{QStringLiteral("%1"), number}});
        m_slowestNs = std::max(m_slowestNs, timer.nsecsElapsed());
        if (warningCount == 2)
        {
            m_refused.push_back(m_sent);
        }
        else if (warningCount != 0)
        {
            std::fprintf(stderr, "unexpected: %d warnings\n", warningCount);
        }
        ++m_sent;
    }

    void report() const
    {
        std::printf("sent %d\nrefused", m_sent);
        for (const int number : m_refused)
        {
            std::printf(" %d", number);
        }
        std::printf("\nslowest %lld\n", static_cast<long long>(m_slowestNs / 1000));
    }

private:
    FakeTextManager m_texts;
    std::vector<std::unique_ptr<AuditTrailHandler>> m_producers;
    int m_sent = 0;
    std::vector<int> m_refused;
    qint64 m_slowestNs = 0;
};

// The event just before is on its way then. How long the kernel takes to end a process, and so to close its
// connections, is up to the machine: what is logged meanwhile is written to a connection that still looks
// open, and tells nothing about this library.
void endBehindEvent(Module& module, pid_t process, int signal)
{
    pollfd end{int(::syscall(SYS_pidfd_open, process, 0)), POLLIN, 0};
    module.logNext();
    if (end.fd < 0 || ::kill(process, signal) != 0 || ::poll(&end, 1, -1) != 1)
    {
        std::fprintf(stderr, "unexpected: %s\n", std::strerror(errno));
    }
    ::close(end.fd);
}

// Takes a line from the standard input. False when it has ended.
bool obey(Module& module)
{
    char line[64] = "";
    int process = 0;
    const ssize_t length = ::read(STDIN_FILENO, line, sizeof line - 1);
    if (std::sscanf(line, "kill %d", &process) == 1)
    {
        endBehindEvent(module, process, SIGKILL);
    }
    else if (std::sscanf(line, "end %d", &process) == 1)
    {
        endBehindEvent(module, process, SIGTERM);
    }
    else if (std::strcmp(line, "too large\n") == 0)
    {
        module.logNext(true);
    }
    else if (length > 0)
    {
        std::fprintf(stderr, "unknown: %s", line);
    }
    return length > 0;
}

// Logs until the standard input ends. A millisecond passes after each event, however late it came, and
// after the end of a process: a burst would outrun the news of it.
void logSteadily(Module& module)
{
    constexpr int pauseMs = 1;
    pollfd input{STDIN_FILENO, POLLIN, 0};
    for (int ready = 0; ready == 0 || obey(module); ready = ::poll(&input, 1, pauseMs))
    {
        if (ready == 0)
        {
            module.logNext();
        }
    }
}

// The same in an event loop.
void logInLoop(Module& module)
{
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    timer.setSingleShot(true);
    timer.setInterval(1);
    QObject::connect(&timer, &QTimer::timeout, [&] {
        module.logNext();
        timer.start();
    });
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        if (!obey(module))
        {
            QCoreApplication::quit();
        }
        timer.start();
    });
    timer.start();
    QCoreApplication::exec();
}

// The service answers this when it has taken everything that was sent before.
bool waitForService()
{
    const QDBusMessage ping = QDBusMessage::createMethodCall(
        PropertyManagerConst::getDBusPrefix() + QStringLiteral(".EventlistHandler"),
        QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping"));
    return DBusConnection::getQDBusConnection().call(ping, QDBus::Block, 60000).type() ==
           QDBusMessage::ReplyMessage;
}
} // namespace

int main(int argumentCount, char** arguments)
{
    int count = -1;
    int producerCount = 1;
    bool isLooping = false;
    std::unique_ptr<QCoreApplication> application;
    for (int i = 1; i < argumentCount; ++i)
    {
        const bool hasValue = i + 1 < argumentCount;
        if (std::strcmp(arguments[i], "--count") == 0 && hasValue)
        {
            count = std::atoi(arguments[++i]);
        }
        else if (std::strcmp(arguments[i], "--producers") == 0 && hasValue)
        {
            producerCount = std::atoi(arguments[++i]);
        }
        else
        {
            isLooping = std::strcmp(arguments[i], "--event-loop") == 0;
            if (!isLooping && std::strcmp(arguments[i], "--application") != 0)
            {
                std::fprintf(stderr, "unknown: %s\n", arguments[i]);
                return 2;
            }
            application = std::make_unique<QCoreApplication>(argumentCount, arguments);
        }
    }
    qInstallMessageHandler(takeWarning);
    Module module(producerCount);
    for (int i = 0; i < count; ++i)
    {
        module.logNext();
    }
    if (count < 0)
    {
        isLooping ? logInLoop(module) : logSteadily(module);
    }
    if (!waitForService())
    {
        std::fprintf(stderr, "unexpected: the service does not answer\n");
    }
    module.report();
    return 0;
}
