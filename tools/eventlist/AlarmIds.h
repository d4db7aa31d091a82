#pragma once

#include <QString>
#include <QStringList>

class ListReply;

/// The names of alarms, short enough to be read and typed. An alarm id is most often a UUID; its
/// beginning says enough as long as no other alarm in the list begins so.
class AlarmIds
{
public:
    explicit AlarmIds(const ListReply& alarms);

    /// The shortest form, of eight characters or more, that means this alarm alone.
    QString shortened(const QString& alarmId) const;

    /// The alarm that a user means by an id or by its beginning.
    /// Failure: empty, when there is none or more than one; matches() tells.
    QString found(const QString& word) const;
    QStringList matches(const QString& word) const;

private:
    QStringList m_ids;
};
