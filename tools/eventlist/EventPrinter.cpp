#include "eventlist/EventPrinter.h"

#include "eventlist/JsonText.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/SenderColumns.h"
#include "eventlist/Table.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Definitions/EventlistHandlerEnums.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr int widestName = 24;
constexpr int idCells = 6;
constexpr int streamedModuleCells = 16;
constexpr int timeCells = 19;

QString styleOf(int type, int state)
{
    if (state == EventlistHandlerEnums::State::inactive)
    {
        return QStringLiteral("32");
    }
    const bool isOn = state == EventlistHandlerEnums::State::active;
    if (isOn && type == int(EventlistHandlerEnums::EventType::alarm))
    {
        return QStringLiteral("1;31");
    }
    if (isOn && type == int(EventlistHandlerEnums::EventType::fault))
    {
        return QStringLiteral("1;33");
    }
    return type == int(EventlistHandlerEnums::EventType::auditTrail) ? QStringLiteral("36")
                                                                     : QString();
}

bool hasUsers(const ListReply& list)
{
    for (int row = 0; row < list.size(); ++row)
    {
        if (!list.value(row, Names::getListColumnNameUser()).isEmpty())
        {
            return true;
        }
    }
    return false;
}

// Texts that are JSON themselves become part of the object: whoever reads JSON shall parse once.
QJsonValue nested(const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    return document.isObject() ? QJsonValue(document.object()) : QJsonValue(text);
}

QJsonValue jsonValue(const QString& column, const QString& text)
{
    static const QStringList numbers = {Names::getListColumnNameEventlistId(),
                                        Names::getListColumnNameEventType(),
                                        Names::getListColumnNameEventState(),
                                        Names::getListColumnNameTimestampUtc(),
                                        Names::getListColumnNameTimestampOffset(),
                                        Names::getListColumnNameSourceHashType(),
                                        SenderColumns::user(),
                                        SenderColumns::process()};
    bool isNumber = false;
    const qint64 number = numbers.contains(column) ? text.toLongLong(&isNumber) : 0;
    if (isNumber)
    {
        return number;
    }
    if (text.isEmpty() && numbers.contains(column))
    {
        return QJsonValue();
    }
    if (column == Names::getListColumnNameAlarmActive() ||
        column == Names::getListColumnNameAlarmAcknowledgment())
    {
        return text == QLatin1String("1");
    }
    if (column == Names::getListColumnNameKeywords())
    {
        return QJsonArray::fromStringList(
            text.split(Names::getSeperatorEventToFile(), Qt::SkipEmptyParts));
    }
    if (column == Names::getListColumnNameDescription() ||
        column == Names::getListColumnNameMetaData())
    {
        return nested(text);
    }
    return text;
}

} // namespace

QString EventPrinter::jsonText(const ListReply& list, int row)
{
    QJsonObject object;
    for (const QString& column : list.header())
    {
        object.insert(column, jsonValue(column, list.value(row, column)));
    }
    return JsonText::of(object);
}

QString EventPrinter::shortTime(const QString& time)
{
    return time.left(timeCells).replace(QLatin1Char('T'), QLatin1Char(' '));
}

EventPrinter::EventPrinter(Form form) : m_form(form) {}

void EventPrinter::print(const ListReply& list)
{
    if (m_form == jsonArray || m_form == jsonLines)
    {
        printJson(list);
    }
    else
    {
        printTable(list, m_form == lines);
    }
}

void EventPrinter::printTable(const ListReply& list, bool isStream)
{
    const bool withUser = isStream || hasUsers(list);
    const bool withSender = list.hasColumn(SenderColumns::user());
    QVector<Table::Column> columns = {{QStringLiteral("ID"), isStream ? idCells : 0, 0, true},
                                      {QStringLiteral("TIME"), timeCells, 0, false},
                                      {QStringLiteral("TYPE"), 5, 0, false},
                                      {QStringLiteral("STATE"), 0, 0, false},
                                      {QStringLiteral("MODULE"), isStream ? streamedModuleCells : 0,
                                       isStream ? streamedModuleCells : widestName, false}};
    if (withUser)
    {
        columns.append(
            {QStringLiteral("USER"), isStream ? 8 : 0, isStream ? 8 : widestName, false});
    }
    if (withSender)
    {
        columns.append({QStringLiteral("SENDER"), 0, widestName, false});
    }
    columns.append({QStringLiteral("DESCRIPTION"), 0, 0, false});
    Table table(columns);
    for (int row = 0; row < list.size(); ++row)
    {
        const int type = int(list.number(row, Names::getListColumnNameEventType()));
        const int state = int(list.number(row, Names::getListColumnNameEventState()));
        QStringList cells = {list.value(row, Names::getListColumnNameEventlistId()),
                             shortTime(list.value(row, Names::getListColumnNameLocalTime())),
                             Words::type(type), Words::state(state),
                             list.value(row, Names::getListColumnNameModuleName())};
        if (withUser)
        {
            cells.append(list.value(row, Names::getListColumnNameUser()));
        }
        if (withSender)
        {
            cells.append(SenderColumns::text(list, row));
        }
        cells.append(list.value(row, Names::getListColumnNameDescription()));
        table.add(cells, styleOf(type, state));
    }
    Output::write(table.text(Output::width(), Output::isColoured(), m_hasTitles));
    m_hasTitles = m_hasTitles && !isStream;
}

void EventPrinter::printJson(const ListReply& list)
{
    const bool isArray = m_form == jsonArray;
    QString text = isArray ? QStringLiteral("[\n") : QString();
    for (int row = 0; row < list.size(); ++row)
    {
        const bool isLast = row == list.size() - 1;
        text += jsonText(list, row);
        text += isArray && !isLast ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    text += isArray ? QStringLiteral("]\n") : QString();
    Output::write(text);
}
