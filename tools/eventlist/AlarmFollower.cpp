#include "eventlist/AlarmFollower.h"

#include "eventlist/ExitCode.h"
#include "eventlist/Service.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "Definitions/EventlistHandlerDefinitions.h"

#include <QHash>

using Names = EventlistHandlerDefinitions;

namespace
{
// Row of each alarm.
QHash<QString, int> rowsById(const ListReply& alarms)
{
    QHash<QString, int> rows;
    for (int row = 0; row < alarms.size(); ++row)
    {
        rows.insert(alarms.value(row, Names::getListColumnNameAlarmID()), row);
    }
    return rows;
}

// What has happened to an alarm; empty when nothing has.
QString change(const ListReply& before, int rowBefore, const ListReply& now, int row)
{
    const auto differs = [&](const QString& column) {
        return before.value(rowBefore, column) != now.value(row, column);
    };
    const bool isOn = now.value(row, Names::getListColumnNameAlarmActive()) == QLatin1String("1");
    if (differs(Names::getListColumnNameAlarmActive()))
    {
        return isOn ? QStringLiteral("came again") : QStringLiteral("gone");
    }
    if (differs(Names::getListColumnNameAlarmAcknowledgment()))
    {
        const bool isAcknowledged =
            now.value(row, Names::getListColumnNameAlarmAcknowledgment()) == QLatin1String("1");
        return isAcknowledged ? QStringLiteral("acknowledged") : QStringLiteral("came again");
    }
    return differs(Names::getListColumnNameDescription()) ? QStringLiteral("changed") : QString();
}
} // namespace

AlarmFollower::AlarmFollower(const QSharedPointer<AlarmlistHandlerDBusConnectorRead>& connector,
                             const QString& language, bool isJson)
    : Follower(*connector),
      m_connector(connector),
      m_language(language),
      m_isJson(isJson),
      m_printer(isJson)
{
    using Connector = AlarmlistHandlerDBusConnectorRead;
    connect(m_connector.data(), &Connector::changedAlarmlist, this, &AlarmFollower::look);
    connect(m_connector.data(), &Connector::changedCentralDetector, this,
            &AlarmFollower::tellCentralDetector);
}

DBusPendingReply::SharedPointer AlarmFollower::ask()
{
    return m_connector->getCompleteAlarmlist(m_language);
}

bool AlarmFollower::take(const ListReply& list)
{
    if (m_hasList || m_isJson)
    {
        printDifferences(list);
    }
    else
    {
        m_printer.printList(list);
    }
    m_hasList = true;
    m_list = list;
    if (m_isStateWanted)
    {
        askState();
    }
    return false;
}

void AlarmFollower::serviceIsBack()
{
    m_isStateWanted = true;
    m_isCentralDetectorOn.reset();
}

// A signal tells a change only: a horn that sounds already has to be asked for.
void AlarmFollower::askState()
{
    m_stateReply = m_connector->getAlarmState(QString());
    m_isStateWanted = m_stateReply.isNull();
    if (!m_isStateWanted)
    {
        connect(m_stateReply.data(), &DBusPendingReply::finished, this, &AlarmFollower::takeState);
    }
}

void AlarmFollower::takeState()
{
    const DBusPendingReply::SharedPointer reply = m_stateReply;
    m_stateReply.reset();
    QVariantMap state;
    // What a restart has cut off is asked for anew when the service is back.
    if (!reply.isNull() && m_connector->isDBusInterfaceValid() &&
        Service::waitForDictionary(*m_connector, reply, state) == ExitCode::success)
    {
        tellCentralDetector(state.value(QStringLiteral("CentralDetector")).toBool());
    }
}

// The answer and a signal may tell the same.
void AlarmFollower::tellCentralDetector(bool isOn)
{
    if (m_isCentralDetectorOn != isOn)
    {
        m_isCentralDetectorOn = isOn;
        m_printer.printCentralDetector(isOn);
    }
}

void AlarmFollower::printDifferences(const ListReply& now)
{
    const QHash<QString, int> before = rowsById(m_list);
    const QHash<QString, int> after = rowsById(now);
    // The list has the newest first; changes are told in the order in which they came.
    for (int row = now.size() - 1; row >= 0; --row)
    {
        const QString id = now.value(row, Names::getListColumnNameAlarmID());
        const QString what =
            before.contains(id) ? change(m_list, before.value(id), now, row)
                                : (m_hasList ? QStringLiteral("came") : QStringLiteral("is there"));
        if (!what.isEmpty())
        {
            m_printer.printChange(what, now, row);
        }
    }
    for (int row = m_list.size() - 1; row >= 0; --row)
    {
        if (!after.contains(m_list.value(row, Names::getListColumnNameAlarmID())))
        {
            m_printer.printChange(QStringLiteral("left list"), m_list, row);
        }
    }
}
