#include "contract/WriteRoad/JournalService.h"

#include "Platform/PropertyManagerConst.h"

#include <QDebug>
#include <QFile>

JournalService::JournalService() : m_process(std::make_unique<ChildProcess>()) {}

bool JournalService::launch(ChildProcess& process, const QStringList& further,
                            const QByteArray& firstLine) const
{
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    return process.startAndWait(QStringLiteral(JOURNAL_SERVICE),
                                QStringList{PropertyManagerConst::getDBusPrefix() +
                                                QStringLiteral(".EventlistHandler"),
                                            m_folder.filePath(QStringLiteral("journal"))} +
                                    further) &&
           process.readOutputLine() == firstLine;
}

bool JournalService::start()
{
    return launch(*m_process, {}, "ready");
}

bool JournalService::startStandby()
{
    m_standby = std::make_unique<ChildProcess>();
    return launch(*m_standby, {QStringLiteral("--standby")}, "standby");
}

bool JournalService::takeOver()
{
    m_process = std::move(m_standby);
    return m_process->readOutputLine() == "ready";
}

bool JournalService::waitForEnd()
{
    return !m_process->isRunning() || m_process->waitForFinished(int(defaultDeadline.count()));
}

qint64 JournalService::processId() const
{
    return m_process->processId();
}

bool JournalService::freeze()
{
    return m_process->freeze();
}

void JournalService::thaw()
{
    m_process->thaw();
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
