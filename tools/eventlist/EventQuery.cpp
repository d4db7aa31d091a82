#include "eventlist/EventQuery.h"

#include "eventlist/Language.h"
#include "eventlist/SenderColumns.h"
#include "eventlist/TimeText.h"
#include "eventlist/Words.h"

#include "EventRead/EventlistHandlerDBusConnectorRead.h"

QVector<Option> EventQuery::filterOptions()
{
    return {
        {{QStringLiteral("t"), QStringLiteral("type")},
         QStringLiteral("TYPE"),
         QStringLiteral("only alarm, fault, audit or event; several with commas")},
        {{QStringLiteral("m"), QStringLiteral("module")},
         QStringLiteral("NAME"),
         QStringLiteral("only events of this module; may be repeated")},
        {{QStringLiteral("k"), QStringLiteral("keyword")},
         QStringLiteral("WORD"),
         QStringLiteral("only events with this keyword; repeated: with any of them")},
        {{QStringLiteral("e"), QStringLiteral("event-id")},
         QStringLiteral("URL"),
         QStringLiteral("only events with this text url; may be repeated")},
        {{QStringLiteral("l"), QStringLiteral("language")},
         QStringLiteral("LANGUAGE"),
         QStringLiteral("de, en, fr ... or all; without it, that of your locale,\n"
                        "and with --json all")},
    };
}

QVector<Option> EventQuery::spanOptions()
{
    return {
        {{QStringLiteral("S"), QStringLiteral("since")},
         QStringLiteral("TIME"),
         QStringLiteral("from this time on: \"2026-03-14\", \"2026-03-14 09:26:53\",\n"
                        "\"09:26\", \"today\", \"yesterday\", \"15min\", \"2h\" or \"3d\" ago")},
        {{QStringLiteral("U"), QStringLiteral("until")},
         QStringLiteral("TIME"),
         QStringLiteral("up to this time")},
        {{QStringLiteral("from-id")}, QStringLiteral("ID"), QStringLiteral("from this id on")},
        {{QStringLiteral("to-id")}, QStringLiteral("ID"), QStringLiteral("up to this id")},
    };
}

bool EventQuery::read(const Arguments& arguments)
{
    m_modules = arguments.values(QStringLiteral("module"));
    m_keywords = arguments.values(QStringLiteral("keyword"));
    m_eventIds = arguments.values(QStringLiteral("event-id"));
    m_language = Language::ofArguments(arguments);
    return readTypes(arguments.list(QStringLiteral("type"))) && readTimes(arguments);
}

bool EventQuery::readTypes(const QStringList& words)
{
    for (const QString& word : words)
    {
        EventlistHandlerEnums::EventType type = {};
        if (!Words::readType(word, type))
        {
            m_errorText =
                QStringLiteral("there is no type '%1': alarm, fault, audit or event").arg(word);
            return false;
        }
        // One character whose code is the type: the form of every query of the event list.
        m_types.append(QString(QChar(ushort(type))));
    }
    return true;
}

bool EventQuery::readTimes(const Arguments& arguments)
{
    const QDateTime now = QDateTime::currentDateTime();
    const auto readTime = [&](const QString& option, QDateTime& time) {
        if (!arguments.isSet(option))
        {
            return true;
        }
        time = TimeText::read(arguments.value(option), now);
        if (!time.isValid())
        {
            m_errorText =
                QStringLiteral("--%1 takes a time such as \"2026-03-14 09:26\" or \"2h\", "
                               "not '%2'")
                    .arg(option, arguments.value(option));
        }
        return time.isValid();
    };
    const auto readId = [&](const QString& option, qint64& id) {
        bool isNumber = true;
        id = arguments.isSet(option) ? arguments.value(option).toLongLong(&isNumber) : 0;
        if (!isNumber || (arguments.isSet(option) && id < 1))
        {
            m_errorText = QStringLiteral("--%1 takes an id from the list, not '%2'")
                              .arg(option, arguments.value(option));
            return false;
        }
        return true;
    };
    if (!readTime(QStringLiteral("since"), m_since) ||
        !readTime(QStringLiteral("until"), m_until) ||
        !readId(QStringLiteral("from-id"), m_fromId) || !readId(QStringLiteral("to-id"), m_toId))
    {
        return false;
    }
    if (!isById() && (m_fromId > 0 || m_toId > 0))
    {
        m_errorText = QStringLiteral("give a span of times or of ids, not of both");
        return false;
    }
    return true;
}

void EventQuery::askForSender()
{
    // The asterisk stands for the columns that come without asking.
    m_columns = QStringList{QStringLiteral("*"), SenderColumns::user(), SenderColumns::process()};
}

DBusPendingReply::SharedPointer EventQuery::newest(EventlistHandlerDBusConnectorRead& connector,
                                                   int rowLimit) const
{
    if (isById())
    {
        return byId(connector, m_fromId, m_toId, rowLimit, false);
    }
    return connector.getPartOfEventlist(m_language, m_types, m_eventIds, m_modules, m_keywords,
                                        m_since, m_until, m_columns, rowLimit);
}

DBusPendingReply::SharedPointer EventQuery::from(EventlistHandlerDBusConnectorRead& connector,
                                                 qint64 id, int rowLimit) const
{
    return byId(connector, id, 0, rowLimit, true);
}

DBusPendingReply::SharedPointer EventQuery::byId(EventlistHandlerDBusConnectorRead& connector,
                                                 qint64 firstId, qint64 lastId, int rowLimit,
                                                 bool isOldestFirst) const
{
    return connector.getPartOfEventlistById(m_language, m_types, m_eventIds, m_modules, m_keywords,
                                            firstId, lastId, m_columns, rowLimit, isOldestFirst);
}
