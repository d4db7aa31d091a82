#include "machinewatch/MachineWatch.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/TextManager.h"

using Names = EventlistHandlerDefinitions;

namespace
{
const QString& module()
{
    static const QString name = QStringLiteral("MachineWatch");
    return name;
}

QString text(double value, const QString& unit = QString())
{
    return QString::number(value, 'f', 1) + unit;
}
} // namespace

MachineWatch::MachineWatch(const TextManager& texts, const QString& folder)
    : m_texts(texts),
      m_folder(folder),
      m_events(module(), texts, QStringLiteral("MachineWatch/Started"), {Names::getKeywordBoot()}),
      m_reports(module(), texts, QStringLiteral("MachineWatch/Readings"),
                {Names::getKeywordStatus()}),
      m_folderMissing(module(), texts, QStringLiteral("MachineWatch/FolderMissing"),
                      {Names::getKeywordObserver()}),
      m_limitChanged(module(), texts, QStringLiteral("MachineWatch/LimitChanged"),
                     {Names::getKeywordUser(), Names::getKeywordConfiguration()})
{
    m_reports.setEventToFile(QStringLiteral("machinewatch-readings"));
    addWatched(QStringLiteral("load"), QStringLiteral("MachineWatch/Load"), QString(), 1000);
    addWatched(QStringLiteral("memory"), QStringLiteral("MachineWatch/Memory"),
               QStringLiteral(" %"), 100);
    addWatched(QStringLiteral("disk"), QStringLiteral("MachineWatch/Disk"), QStringLiteral(" %"),
               100);

    m_readings = Readings::take(m_folder);
    m_events.logEvent({{QStringLiteral("%1"), Readings::machineName()},
                       {QStringLiteral("%2"), m_readings.uptimeText()}});
}

void MachineWatch::addWatched(const QString& name, const QString& nameUrl, const QString& unit,
                              double limit)
{
    auto alarm = std::make_unique<AlarmHandler>(module(), m_texts,
                                                QStringLiteral("MachineWatch/LimitExceeded"),
                                                QStringList{Names::getKeywordError()});
    // Whoever shows the source "machine/memory" can ask for the icon of its last event.
    alarm->addSourceTag(QStringLiteral("machine/") + name, EventlistHandlerEnums::noSourceHash);
    m_watched.emplace(name, Watched{nameUrl, unit, limit, -1, std::move(alarm)});
}

void MachineWatch::look()
{
    m_readings = Readings::take(m_folder);
    m_watched.at(QStringLiteral("load")).reading = m_readings.load;
    m_watched.at(QStringLiteral("memory")).reading = m_readings.memoryPercent;
    m_watched.at(QStringLiteral("disk")).reading = m_readings.diskPercent;
    for (auto& [name, watched] : m_watched)
    {
        watched.alarm->changeState(watched.reading > watched.limit, m_texts,
                                   {{QStringLiteral("%1"), watched.nameUrl}},
                                   {{QStringLiteral("%2"), text(watched.reading, watched.unit)},
                                    {QStringLiteral("%3"), text(watched.limit, watched.unit)}});
    }
    m_folderMissing.changeState(m_readings.diskPercent < 0, {{QStringLiteral("%1"), m_folder}});
}

void MachineWatch::report()
{
    m_reports.logEvent({{QStringLiteral("%1"), text(m_readings.load)},
                        {QStringLiteral("%2"), text(m_readings.memoryPercent)},
                        {QStringLiteral("%3"), diskText()},
                        {QStringLiteral("%4"), m_readings.uptimeText()}});
}

bool MachineWatch::setLimit(const QString& name, double limit, const QString& user)
{
    const auto found = m_watched.find(name);
    if (found == m_watched.end())
    {
        return false;
    }
    Watched& watched = found->second;
    m_limitChanged.logAuditTrail(user, m_texts, {{QStringLiteral("%1"), watched.nameUrl}},
                                 {{QStringLiteral("%2"), text(watched.limit, watched.unit)},
                                  {QStringLiteral("%3"), text(limit, watched.unit)}});
    watched.limit = limit;
    return true;
}

void MachineWatch::logWithoutText()
{
    m_events.logEvent(QStringLiteral("MachineWatch/NobodyHasWrittenThisText"), {});
}

QString MachineWatch::line() const
{
    return QStringLiteral("load ") + text(m_readings.load) + QStringLiteral(", memory ") +
           text(m_readings.memoryPercent) + QStringLiteral(" %, disk ") + diskText() +
           QStringLiteral(" %, up ") + m_readings.uptimeText();
}

QString MachineWatch::diskText() const
{
    return m_readings.diskPercent < 0 ? QStringLiteral("?") : text(m_readings.diskPercent);
}
