#include "core/EventColumns.h"

#include "core/Descriptions.h"
#include "core/Names.h"

#include <QDateTime>

#include <algorithm>

namespace eventlistd
{

namespace
{
QString localTime(const Event& event)
{
    // Wall clock at the place of the event: computed as if it were UTC, shown without an offset.
    QString text =
        QDateTime::fromMSecsSinceEpoch(event.timeMs + qint64(event.offsetSeconds) * 1000, Qt::UTC)
            .toString(Qt::ISODateWithMs);
    text.chop(text.endsWith(QLatin1Char('Z')) ? 1 : 0);
    return text;
}

QVector<EventColumns::Column> makeColumns()
{
    using Language = const QString&;
    return {
        {names::eventlistId(), [](const Event& e, Language) { return QString::number(e.id); }},
        {names::eventType(), [](const Event& e, Language) { return QString::number(e.type); }},
        {names::state(), [](const Event& e, Language) { return QString::number(e.state); }},
        {names::iconType(), [](const Event& e, Language) { return e.icon; }},
        {names::module(), [](const Event& e, Language) { return e.moduleName; }},
        {names::localTime(), [](const Event& e, Language) { return localTime(e); }},
        {names::timestampUtc(), [](const Event& e, Language) { return QString::number(e.timeMs); }},
        {names::timestampOffset(),
         [](const Event& e, Language) { return QString::number(e.offsetSeconds); }},
        {names::dateTimeMsUtc(), [](const Event& e, Language) { return e.timestamp; }},
        {names::description(),
         [](const Event& e, Language language) { return inLanguage(e.description, language); }},
        {names::user(), [](const Event& e, Language) { return e.user; }},
        {names::keywords(),
         [](const Event& e, Language) { return e.keywords.join(QChar(names::keywordSeparator)); }},
        {names::alarmId(), [](const Event& e, Language) { return e.alarmId; }},
        {names::eventId(), [](const Event& e, Language) { return e.eventId; }},
        {names::metaData(), [](const Event& e, Language) { return e.metaData; }},
        {names::sourceHashType(),
         [](const Event& e, Language) { return QString::number(e.sourceHashType); }},
        {names::sourceHashes(), [](const Event& e, Language) { return e.sourceHashes; }},
    };
}

QString knownNumber(qint64 number)
{
    return number < 0 ? QStringLiteral("") : QString::number(number);
}

const QVector<EventColumns::Column>& onRequest()
{
    static const QVector<EventColumns::Column> columns = {
        {names::senderUid(),
         [](const Event& e, const QString&) { return knownNumber(e.senderUid); }},
        {names::senderPid(),
         [](const Event& e, const QString&) { return knownNumber(e.senderPid); }},
    };
    return columns;
}
} // namespace

const QVector<EventColumns::Column>& EventColumns::all()
{
    static const QVector<Column> columns = makeColumns();
    return columns;
}

EventColumns::EventColumns(const QStringList& wanted)
{
    if (wanted.isEmpty())
    {
        m_columns = all();
        return;
    }
    for (const QString& name : wanted)
    {
        const bool isAll = name == names::usualColumns();
        for (const Column& column : all())
        {
            if (isAll || column.name == name)
            {
                add(column);
            }
        }
        for (const Column& column : onRequest())
        {
            if (column.name == name)
            {
                add(column);
            }
        }
    }
}

void EventColumns::add(const Column& column)
{
    if (!contains(column.name))
    {
        m_columns.append(column);
    }
}

QStringList EventColumns::header() const
{
    QStringList header;
    for (const Column& column : m_columns)
    {
        header.append(column.name);
    }
    return header;
}

bool EventColumns::contains(const QString& name) const
{
    return std::any_of(m_columns.begin(), m_columns.end(),
                       [&](const Column& column) { return column.name == name; });
}

QStringList EventColumns::row(const Event& event, const QString& language) const
{
    QStringList row;
    row.reserve(m_columns.size());
    for (const Column& column : m_columns)
    {
        row.append(column.text(event, language));
    }
    return row;
}

} // namespace eventlistd
