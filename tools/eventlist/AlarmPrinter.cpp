#include "eventlist/AlarmPrinter.h"

#include "eventlist/AlarmIds.h"
#include "eventlist/EventPrinter.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Table.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Definitions/EventlistHandlerEnums.h"

#include <QDateTime>
#include <QVector>

#include <algorithm>

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr int widestModule = 24;
constexpr int streamedModuleCells = 16;
constexpr int changeCells = 12;
constexpr int idCells = 8;
constexpr int timeCells = 19;

bool isOn(const ListReply& alarms, int row)
{
    return alarms.value(row, Names::getListColumnNameAlarmActive()) == QLatin1String("1");
}

bool isAcknowledged(const ListReply& alarms, int row)
{
    return alarms.value(row, Names::getListColumnNameAlarmAcknowledgment()) == QLatin1String("1");
}

QString mark(const ListReply& alarms, int row)
{
    if (isOn(alarms, row) && !isAcknowledged(alarms, row))
    {
        return QStringLiteral("!!");
    }
    return QStringLiteral("!");
}

QString style(const ListReply& alarms, int row)
{
    if (!isOn(alarms, row))
    {
        return QStringLiteral("32");
    }
    const bool isFault = alarms.number(row, Names::getListColumnNameEventType()) ==
                         int(EventlistHandlerEnums::EventType::fault);
    const QString colour = isFault ? QStringLiteral("33") : QStringLiteral("31");
    return isAcknowledged(alarms, row) ? colour : QStringLiteral("1;7;") + colour;
}

QString acknowledgement(const ListReply& alarms, int row)
{
    if (!isAcknowledged(alarms, row))
    {
        return QStringLiteral("no");
    }
    const QString user = alarms.value(row, QStringLiteral("AcknowledgedBy"));
    return user.isEmpty() ? QStringLiteral("yes") : user;
}

QVector<int> mostUrgentFirst(const ListReply& alarms)
{
    QVector<int> rows;
    for (int row = 0; row < alarms.size(); ++row)
    {
        rows.append(row);
    }
    const auto urgency = [&](int row) { return mark(alarms, row).size(); };
    std::stable_sort(rows.begin(), rows.end(),
                     [&](int left, int right) { return urgency(left) > urgency(right); });
    return rows;
}
} // namespace

AlarmPrinter::AlarmPrinter(bool isJson) : m_isJson(isJson) {}

void AlarmPrinter::printList(const ListReply& alarms)
{
    if (m_isJson)
    {
        EventPrinter(EventPrinter::jsonArray).print(alarms);
        return;
    }
    if (alarms.size() == 0)
    {
        Output::write(QStringLiteral("The alarm list is empty.\n"));
        return;
    }
    const AlarmIds ids(alarms);
    Table table({{QString(), 2, 0, false},
                 {QStringLiteral("ALARM"), idCells, 0, false},
                 {QStringLiteral("SINCE"), timeCells, 0, false},
                 {QStringLiteral("TYPE"), 0, 0, false},
                 {QStringLiteral("STATE"), 0, 0, false},
                 {QStringLiteral("ACKNOWLEDGED"), 0, widestModule, false},
                 {QStringLiteral("MODULE"), 0, widestModule, false},
                 {QStringLiteral("DESCRIPTION"), 0, 0, false}});
    for (const int row : mostUrgentFirst(alarms))
    {
        const int state = isOn(alarms, row) ? EventlistHandlerEnums::State::active
                                            : EventlistHandlerEnums::State::inactive;
        table.add({mark(alarms, row),
                   ids.shortened(alarms.value(row, Names::getListColumnNameAlarmID())),
                   EventPrinter::shortTime(alarms.value(row, Names::getListColumnNameLocalTime())),
                   Words::type(int(alarms.number(row, Names::getListColumnNameEventType()))),
                   Words::state(state), acknowledgement(alarms, row),
                   alarms.value(row, Names::getListColumnNameModuleName()),
                   alarms.value(row, Names::getListColumnNameDescription())},
                  style(alarms, row));
    }
    Output::write(table.text(Output::width(), Output::isColoured()));
}

void AlarmPrinter::printChange(const QString& change, const ListReply& alarms, int row)
{
    if (m_isJson)
    {
        // The members of the row, and the change in front of them.
        Output::write(QStringLiteral("{\"Change\":\"") + change + QStringLiteral("\",") +
                      EventPrinter::jsonText(alarms, row).mid(1) + QLatin1Char('\n'));
        return;
    }
    Table table({{QStringLiteral("TIME"), timeCells, 0, false},
                 {QStringLiteral("CHANGE"), changeCells, 0, false},
                 {QStringLiteral("ALARM"), idCells, 0, false},
                 {QStringLiteral("TYPE"), 5, 0, false},
                 {QStringLiteral("MODULE"), streamedModuleCells, streamedModuleCells, false},
                 {QStringLiteral("DESCRIPTION"), 0, 0, false}});
    table.add({EventPrinter::shortTime(QDateTime::currentDateTime().toString(Qt::ISODate)), change,
               AlarmIds(alarms).shortened(alarms.value(row, Names::getListColumnNameAlarmID())),
               Words::type(int(alarms.number(row, Names::getListColumnNameEventType()))),
               alarms.value(row, Names::getListColumnNameModuleName()),
               alarms.value(row, Names::getListColumnNameDescription())},
              style(alarms, row));
    Output::write(table.text(Output::width(), Output::isColoured(), m_hasTitles));
    m_hasTitles = false;
}

void AlarmPrinter::printCentralDetector(bool isOn)
{
    if (m_isJson)
    {
        Output::write(QStringLiteral("{\"Change\":\"central detector\",\"CentralDetector\":%1}\n")
                          .arg(isOn ? QStringLiteral("true") : QStringLiteral("false")));
        return;
    }
    Output::write(isOn ? QStringLiteral("Central detector: ON. Silence it with 'eventlist ack "
                                        "--central'.\n")
                       : QStringLiteral("Central detector: off.\n"));
}
