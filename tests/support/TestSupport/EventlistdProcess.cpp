#include "TestSupport/EventlistdProcess.h"

#include "TestSupport/SpoolFolder.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

EventlistdProcess::EventlistdProcess()
{
    // Nobody reads its output: it must not fill a pipe.
    m_process.setStandardOutputFile(QProcess::nullDevice());
}

QString EventlistdProcess::program()
{
    const QString given = qEnvironmentVariable("EVENTLISTHANDLER_EVENTLISTD");
    if (!given.isEmpty())
    {
        return given;
    }
    return QStandardPaths::findExecutable(QStringLiteral("eventlistd"));
}

QString EventlistdProcess::textFolder()
{
    const QString given = qEnvironmentVariable("EVENTLISTHANDLER_TEXTS");
    return given.isEmpty() ? QFileInfo(program()).dir().filePath(
                                 QStringLiteral("../share/EventlistHandler/texts"))
                           : given;
}

QString EventlistdProcess::databasePath() const
{
    return m_folder.filePath(QStringLiteral("eventlist.sqlite"));
}

bool EventlistdProcess::start(const QStringList& furtherArguments)
{
    m_arguments = furtherArguments;
    const QStringList arguments =
        QStringList{QStringLiteral("--database"), databasePath(),
                    QStringLiteral("--spool"),    SpoolFolder::compiledInPath(),
                    QStringLiteral("--texts"),    textFolder()} +
        furtherArguments;
    if (!m_process.startAndWait(program(), arguments))
    {
        m_errorText = "eventlistd does not start: " + m_process.errorString().toUtf8();
        return false;
    }
    const QDeadlineTimer timer(defaultDeadline);
    for (;;)
    {
        const QByteArray line =
            m_process.readErrorLine(std::chrono::milliseconds(timer.remainingTime()));
        if (line.isNull())
        {
            m_errorText = "eventlistd does not become ready: " + log();
            m_process.killHard();
            return false;
        }
        m_log += line + '\n';
        if (line == "eventlistd: ready")
        {
            return true;
        }
    }
}

bool EventlistdProcess::stop()
{
    return m_process.stop();
}

void EventlistdProcess::kill()
{
    m_process.killHard();
}

bool EventlistdProcess::restart()
{
    kill();
    return start(m_arguments);
}

bool EventlistdProcess::freeze()
{
    return m_process.freeze();
}

void EventlistdProcess::thaw()
{
    m_process.thaw();
}

bool EventlistdProcess::isRunning() const
{
    return m_process.isRunning();
}

qint64 EventlistdProcess::processId() const
{
    return m_process.processId();
}

const char* EventlistdProcess::errorText() const
{
    return m_errorText.constData();
}

QByteArray EventlistdProcess::log()
{
    m_log += m_process.readAllStandardError();
    return m_log;
}
