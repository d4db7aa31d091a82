#include "TestSupport/ChildProcess.h"

#include <QDeadlineTimer>

#include <csignal>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

ChildProcess::ChildProcess(QObject* parent) : QProcess(parent), m_parentId(::getpid()) {}

ChildProcess::~ChildProcess()
{
    killHard();
}

void ChildProcess::setupChildProcess()
{
    // Runs between fork and exec: nothing but plain system calls.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != m_parentId)
    {
        ::_exit(127);
    }
}

bool ChildProcess::startAndWait(const QString& program, const QStringList& arguments)
{
    start(program, arguments);
    return waitForStarted(int(defaultDeadline.count()));
}

bool ChildProcess::isRunning() const
{
    return state() == QProcess::Running;
}

QByteArray ChildProcess::readLineOf(ProcessChannel channel, std::chrono::milliseconds deadline)
{
    const QDeadlineTimer timer(deadline);
    setReadChannel(channel);
    while (!canReadLine())
    {
        const bool isMoreToCome =
            isRunning() && waitForReadyRead(int(timer.remainingTime())) && !timer.hasExpired();
        setReadChannel(channel);
        if (!isMoreToCome && !canReadLine())
        {
            return QByteArray();
        }
    }
    QByteArray line = readLine();
    line.chop(1);
    // An empty line is a line, and not a failure.
    return line.isNull() ? QByteArray("") : line;
}

QByteArray ChildProcess::readOutputLine(std::chrono::milliseconds deadline)
{
    return readLineOf(QProcess::StandardOutput, deadline);
}

QByteArray ChildProcess::readErrorLine(std::chrono::milliseconds deadline)
{
    return readLineOf(QProcess::StandardError, deadline);
}

bool ChildProcess::stop(std::chrono::milliseconds deadline)
{
    if (state() == QProcess::NotRunning)
    {
        return true;
    }
    thaw();
    terminate();
    if (waitForFinished(int(deadline.count())))
    {
        return true;
    }
    killHard();
    return false;
}

void ChildProcess::killHard()
{
    if (state() != QProcess::NotRunning)
    {
        kill();
        waitForFinished(int(defaultDeadline.count()));
    }
}

bool ChildProcess::freeze()
{
    const pid_t id = pid_t(processId());
    if (id <= 0 || ::kill(id, SIGSTOP) != 0)
    {
        return false;
    }
    siginfo_t information{};
    return ::waitid(P_PID, id_t(id), &information, WSTOPPED | WNOWAIT) == 0 &&
           information.si_code == CLD_STOPPED;
}

void ChildProcess::thaw()
{
    if (processId() > 0)
    {
        ::kill(pid_t(processId()), SIGCONT);
    }
}
