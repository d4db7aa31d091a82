#include "eventlist/AckCommand.h"

#include "eventlist/AlarmIds.h"
#include "eventlist/CommonTexts.h"
#include "eventlist/ExitCode.h"
#include "eventlist/Language.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/SafeText.h"
#include "eventlist/Service.h"

#include "Alarmlist/AlarmlistHandler.h"
#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/TextManager.h"

#include <pwd.h>
#include <unistd.h>

using Names = EventlistHandlerDefinitions;

namespace
{
// Who sits at the shell.
QString loginName()
{
    const passwd* entry = ::getpwuid(::getuid());
    return entry == nullptr ? QString::number(::getuid()) : QString::fromLocal8Bit(entry->pw_name);
}

int rowOf(const ListReply& alarms, const QString& alarmId)
{
    for (int row = 0; row < alarms.size(); ++row)
    {
        if (alarms.value(row, Names::getListColumnNameAlarmID()) == alarmId)
        {
            return row;
        }
    }
    return -1;
}

QString descriptionOf(const ListReply& alarms, const QString& alarmId)
{
    return alarms.value(rowOf(alarms, alarmId), Names::getListColumnNameDescription());
}

// The alarms that were meant. All or none: half an acknowledgement would be hard to see.
int resolve(const QStringList& words, const ListReply& alarms, QStringList& alarmIds)
{
    const AlarmIds known(alarms);
    for (const QString& word : words)
    {
        const QStringList matches = known.matches(word);
        if (matches.size() != 1)
        {
            Output::error(
                matches.isEmpty()
                    ? QStringLiteral("there is no alarm '%1' in the alarm list; see 'eventlist "
                                     "alarms'. Nothing was acknowledged")
                          .arg(word)
                    : QStringLiteral("'%1' could be any of %2 alarms; give more of the id. Nothing "
                                     "was acknowledged")
                          .arg(word, QString::number(matches.size())));
            return ExitCode::failed;
        }
        if (!alarmIds.contains(matches.first()))
        {
            alarmIds.append(matches.first());
        }
    }
    return ExitCode::success;
}

// True when the service has taken the acknowledgement: it says so, or the alarm has left the list.
bool isDone(const ListReply& alarms, const QString& alarmId)
{
    const int row = rowOf(alarms, alarmId);
    return row < 0 ||
           alarms.value(row, Names::getListColumnNameAlarmAcknowledgment()) == QLatin1String("1");
}

int acknowledgeAlarms(AlarmlistHandlerDBusConnectorRead& reader, const QStringList& words,
                      const QString& user)
{
    const QString language = Language::ofUser();
    ListReply before;
    QStringList alarmIds;
    int code = Service::waitForList(reader, reader.getCompleteAlarmlist(language), before);
    if (code != ExitCode::success || (code = resolve(words, before, alarmIds)) != ExitCode::success)
    {
        return code;
    }
    QStringList descriptions;
    for (const QString& alarmId : qAsConst(alarmIds))
    {
        descriptions.append(descriptionOf(before, alarmId));
    }
    const TextManager texts(CommonTexts::folder());
    AlarmlistHandler alarmlist(QStringLiteral("eventlist"), texts, nullptr);
    alarmlist.acknowledgeAlarms(alarmIds, user, descriptions.join(QStringLiteral("; ")));

    // The query comes after the acknowledgement on the same connection, and so does its answer.
    ListReply after;
    code = Service::waitForList(reader, reader.getCompleteAlarmlist(language), after);
    for (int i = 0; code == ExitCode::success && i < alarmIds.size(); ++i)
    {
        if (!isDone(after, alarmIds.at(i)))
        {
            Output::error(
                QStringLiteral("the service did not take the acknowledgement of '%1'; its "
                               "log says why")
                    .arg(descriptions.at(i)));
            return ExitCode::failed;
        }
        Output::write(QStringLiteral("acknowledged by ") + SafeText::escaped(user) +
                      QStringLiteral(": ") + SafeText::escaped(descriptions.at(i)) +
                      QLatin1Char('\n'));
    }
    return code;
}

int acknowledgeCentralDetector(AlarmlistHandlerDBusConnectorRead& reader, const QString& user)
{
    AlarmlistHandlerDBusConnectorWrite(false).acknowledgeCentralDetector(user);
    QVariantMap state;
    const int code = Service::waitForDictionary(reader, reader.getAlarmState(QString()), state);
    if (code != ExitCode::success)
    {
        return code;
    }
    if (state.value(QStringLiteral("CentralDetector")).toBool())
    {
        Output::error(QStringLiteral("the central detector is still on: the bus may allow this to "
                                     "others alone, or there is a new alarm"));
        return ExitCode::failed;
    }
    Output::write(QStringLiteral("central detector acknowledged by ") + SafeText::escaped(user) +
                  QLatin1Char('\n'));
    return ExitCode::success;
}
} // namespace

QString AckCommand::name() const
{
    return QStringLiteral("ack");
}

QString AckCommand::summary() const
{
    return QStringLiteral("acknowledge alarms, or the central detector");
}

QString AckCommand::usage() const
{
    return QStringLiteral("[--user NAME] ID...\n       eventlist ack [--user NAME] --central");
}

QString AckCommand::explanation() const
{
    return QStringLiteral(
        "Acknowledges alarms and faults of the alarm list, by their ids or the beginnings of\n"
        "their ids, as 'eventlist alarms' shows them. Every acknowledgement leaves an entry in\n"
        "the audit trail. An id that is not in the list acknowledges nothing at all.\n");
}

QVector<Option> AckCommand::options() const
{
    return {{{QStringLiteral("u"), QStringLiteral("user")},
             QStringLiteral("NAME"),
             QStringLiteral("who acknowledges; without it, your login name")},
            {{QStringLiteral("c"), QStringLiteral("central")},
             QString(),
             QStringLiteral("acknowledge the central detector, which silences it")}};
}

QStringList AckCommand::examples() const
{
    return {QStringLiteral("ack 6f1c2a8e --user anna"),
            QStringLiteral("ack --central --user anna")};
}

int AckCommand::run(const Arguments& arguments)
{
    const bool isCentral = arguments.isSet(QStringLiteral("central"));
    if (isCentral != arguments.words().isEmpty())
    {
        return complain(QStringLiteral("give the ids of alarms, or --central"));
    }
    const QString user = arguments.isSet(QStringLiteral("user"))
                             ? arguments.value(QStringLiteral("user"))
                             : loginName();
    AlarmlistHandlerDBusConnectorRead reader(false);
    if (!Service::isThere(reader))
    {
        return ExitCode::notReachable;
    }
    if (!isCentral)
    {
        return acknowledgeAlarms(reader, arguments.words(), user);
    }
    return acknowledgeCentralDetector(reader, user);
}
