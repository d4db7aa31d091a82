#include "eventlist/Output.h"

#include "eventlist/ExitCode.h"
#include "eventlist/SafeText.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
constexpr int narrowest = 40;

// False with errno when not everything could be written.
bool writeAll(int descriptor, const QByteArray& bytes)
{
    qint64 written = 0;
    while (written < bytes.size())
    {
        const ssize_t count =
            ::write(descriptor, bytes.constData() + written, size_t(bytes.size() - written));
        if (count < 0 && errno != EINTR)
        {
            return false;
        }
        written += count > 0 ? count : 0;
    }
    return true;
}
} // namespace

void Output::prepare()
{
    std::signal(SIGPIPE, SIG_IGN);
}

void Output::write(const QString& text)
{
    if (writeAll(STDOUT_FILENO, text.toUtf8()))
    {
        return;
    }
    if (errno == EPIPE)
    {
        endQuietly();
    }
    error(QStringLiteral("cannot write: ") + QString::fromLocal8Bit(std::strerror(errno)));
    ::_exit(ExitCode::failed);
}

void Output::error(const QString& text)
{
    // Nothing is left to be told when the standard error is gone.
    (void)writeAll(
        STDERR_FILENO,
        (QStringLiteral("eventlist: ") + SafeText::escaped(text) + QLatin1Char('\n')).toUtf8());
}

bool Output::isTerminal()
{
    return ::isatty(STDOUT_FILENO) == 1;
}

bool Output::isColoured()
{
    return isTerminal() && qgetenv("NO_COLOR").isEmpty() && qgetenv("TERM") != "dumb";
}

int Output::width()
{
    if (!isTerminal())
    {
        return 0;
    }
    bool isNumber = false;
    const int given = qEnvironmentVariableIntValue("COLUMNS", &isNumber);
    winsize size = {};
    int cells = 80;
    if (isNumber && given > 0)
    {
        cells = given;
    }
    else if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
    {
        cells = size.ws_col;
    }
    return qMax(cells, narrowest);
}

bool Output::isPipe()
{
    struct stat status = {};
    return ::fstat(STDOUT_FILENO, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

void Output::endQuietly()
{
    ::_exit(ExitCode::success);
}
