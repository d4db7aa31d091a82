#include "contract/WriteRoad/JournalService.h"

#include "Platform/PropertyManagerConst.h"

#include <QDebug>
#include <QFile>

#include <csignal>

bool JournalService::start()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    return m_process.startAndWait(
               QStringLiteral(JOURNAL_SERVICE),
               {PropertyManagerConst::getDBusPrefix() + QStringLiteral(".EventlistHandler"),
                m_folder.filePath(QStringLiteral("journal"))}) &&
           m_process.readOutputLine() == "ready";
}

bool JournalService::killBehindEvent(qint64 processId)
{
    sigval victim{};
    victim.sival_int = int(processId != 0 ? processId : m_process.processId());
    return ::sigqueue(pid_t(m_process.processId()), SIGUSR1, victim) == 0 &&
           (!m_process.isRunning() || m_process.waitForFinished(int(defaultDeadline.count())));
}

QVector<JournalService::Entry> JournalService::entries() const
{
    QFile file(m_folder.filePath(QStringLiteral("journal")));
    QVector<Entry> result;
    if (!file.open(QFile::ReadOnly))
    {
        return result;
    }
    const QList<QByteArray> lines = file.readAll().split('\n');
    for (const QByteArray& line : lines)
    {
        const QList<QByteArray> words = line.split(' ');
        bool isNumber = true;
        const bool isStart = words.value(1) == "ready";
        const int event = isStart ? -1 : words.value(1).toInt(&isNumber);
        if (!line.isEmpty() && !isNumber)
        {
            qWarning() << "Journal:" << line;
            return {};
        }
        if (!line.isEmpty())
        {
            result.append({words[0].toLongLong(), event});
        }
    }
    return result;
}
