#include "eventlist/AlarmIds.h"

#include "eventlist/ListReply.h"

#include "Definitions/EventlistHandlerDefinitions.h"

namespace
{
constexpr int shortest = 8;

QString withoutBraces(const QString& id)
{
    return id.startsWith(QLatin1Char('{')) && id.endsWith(QLatin1Char('}'))
               ? id.mid(1, id.size() - 2)
               : id;
}
} // namespace

AlarmIds::AlarmIds(const ListReply& alarms)
{
    for (int row = 0; row < alarms.size(); ++row)
    {
        m_ids.append(alarms.value(row, EventlistHandlerDefinitions::getListColumnNameAlarmID()));
    }
}

QString AlarmIds::shortened(const QString& alarmId) const
{
    const QString whole = withoutBraces(alarmId);
    if (whole == alarmId)
    {
        return alarmId;
    }
    for (int length = shortest; length < whole.size(); ++length)
    {
        if (matches(whole.left(length)).size() == 1)
        {
            return whole.left(length);
        }
    }
    return whole;
}

QString AlarmIds::found(const QString& word) const
{
    const QStringList candidates = matches(word);
    return candidates.size() == 1 ? candidates.first() : QString();
}

QStringList AlarmIds::matches(const QString& word) const
{
    if (m_ids.contains(word))
    {
        return {word};
    }
    QStringList candidates;
    for (const QString& id : m_ids)
    {
        if (!word.isEmpty() &&
            withoutBraces(id).startsWith(withoutBraces(word), Qt::CaseInsensitive))
        {
            candidates.append(id);
        }
    }
    return candidates;
}
