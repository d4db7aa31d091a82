#include "eventlist/Output.h"

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

bool isStatusShown = false;

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

int widthOf(int terminal)
{
    bool isNumber = false;
    const int given = qEnvironmentVariableIntValue("COLUMNS", &isNumber);
    winsize size = {};
    int cells = 80;
    if (isNumber && given > 0)
    {
        cells = given;
    }
    else if (::ioctl(terminal, TIOCGWINSZ, &size) == 0 && size.ws_col > 0)
    {
        cells = size.ws_col;
    }
    return qMax(cells, narrowest);
}
} // namespace

void Output::prepare()
{
    std::signal(SIGPIPE, SIG_IGN);
}

void Output::write(const QString& text, ExitCode code)
{
    clearStatus();
    if (writeAll(STDOUT_FILENO, text.toUtf8()))
    {
        return;
    }
    if (errno == EPIPE)
    {
        endQuietly(code);
    }
    error(QStringLiteral("cannot write: ") + QString::fromLocal8Bit(std::strerror(errno)));
    ::_exit(ExitCode::failed);
}

void Output::error(const QString& text)
{
    clearStatus();
    // Nothing is left to be told when the standard error is gone.
    (void)writeAll(
        STDERR_FILENO,
        (QStringLiteral("eventlist: ") + SafeText::escaped(text) + QLatin1Char('\n')).toUtf8());
}

void Output::status(const QString& text)
{
    if (::isatty(STDERR_FILENO) != 1 || qgetenv("TERM") == "dumb")
    {
        return;
    }
    isStatusShown = true;
    const QString line = SafeText::cut(SafeText::escaped(text), widthOf(STDERR_FILENO) - 1);
    (void)writeAll(STDERR_FILENO, (QStringLiteral("\r\x1b[K") + line).toUtf8());
}

void Output::clearStatus()
{
    if (isStatusShown)
    {
        isStatusShown = false;
        (void)writeAll(STDERR_FILENO, "\r\x1b[K");
    }
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
    return isTerminal() ? widthOf(STDOUT_FILENO) : 0;
}

bool Output::isPipe()
{
    struct stat status = {};
    return ::fstat(STDOUT_FILENO, &status) == 0 &&
           (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

void Output::endQuietly(ExitCode code)
{
    ::_exit(code);
}
