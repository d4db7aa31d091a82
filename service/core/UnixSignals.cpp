#include "core/UnixSignals.h"

#include <QSocketNotifier>

#include <csignal>

#include <sys/signalfd.h>
#include <unistd.h>

namespace eventlistd
{

UnixSignals::UnixSignals(QObject* parent) : QObject(parent)
{
    // Blocked before any other thread is made: all of them inherit it, so that the signals arrive
    // here and nowhere else.
    sigset_t signals;
    ::sigemptyset(&signals);
    ::sigaddset(&signals, SIGTERM);
    ::sigaddset(&signals, SIGINT);
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_descriptor = ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        signalfd_siginfo information;
        if (::read(m_descriptor, &information, sizeof(information)) == sizeof(information))
        {
            Q_EMIT endWanted();
        }
    });
}

UnixSignals::~UnixSignals()
{
    m_notifier.reset();
    ::close(m_descriptor);
}

} // namespace eventlistd
