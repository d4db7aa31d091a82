#pragma once

#include <QString>

/// The words of the wire and of the list. The service spells them by itself: that a module and the
/// service agree is tested, not assumed.
namespace eventlistd::names
{

#define EVENTLISTD_NAME(function, text)                                                            \
    inline QString function()                                                                      \
    {                                                                                              \
        return QStringLiteral(text);                                                               \
    }

EVENTLISTD_NAME(moduleName, "EventlistHandler")

EVENTLISTD_NAME(eventlistReadPath, "/EventlistRead")
EVENTLISTD_NAME(eventlistWritePath, "/EventlistWrite")
EVENTLISTD_NAME(alarmlistReadPath, "/AlarmlistRead")
EVENTLISTD_NAME(alarmlistWritePath, "/AlarmlistWrite")
EVENTLISTD_NAME(hashRegisterPath, "/HashRegister")
EVENTLISTD_NAME(hashPathPrefix, "/Hash")
EVENTLISTD_NAME(globalHash, "Global")
EVENTLISTD_NAME(eventInterface, "Interface.Event")
EVENTLISTD_NAME(iconSignal, "availableEventIcon")

// An answer.
EVENTLISTD_NAME(header, "header")
EVENTLISTD_NAME(data, "data")
EVENTLISTD_NAME(truncated, "truncated")

// Columns.
EVENTLISTD_NAME(eventlistId, "EventlistId")
EVENTLISTD_NAME(eventType, "EventType")
EVENTLISTD_NAME(state, "State")
EVENTLISTD_NAME(iconType, "IconType")
EVENTLISTD_NAME(module, "ModuleName")
EVENTLISTD_NAME(localTime, "DateTimeLocal")
EVENTLISTD_NAME(timestampUtc, "TimestampUtc")
EVENTLISTD_NAME(timestampOffset, "TimestampOffset")
EVENTLISTD_NAME(dateTimeMsUtc, "DateTimeMsUTC")
EVENTLISTD_NAME(description, "Description")
EVENTLISTD_NAME(user, "User")
EVENTLISTD_NAME(keywords, "KeywordName")
EVENTLISTD_NAME(senderUid, "SenderUid")
EVENTLISTD_NAME(senderPid, "SenderPid")
EVENTLISTD_NAME(usualColumns, "*")
EVENTLISTD_NAME(alarmActive, "AlarmActive")
EVENTLISTD_NAME(alarmAcknowledgment, "AlarmAcknowledgment")
EVENTLISTD_NAME(alarmId, "AlarmID")
EVENTLISTD_NAME(eventId, "EventId")
EVENTLISTD_NAME(metaData, "MetaData")
EVENTLISTD_NAME(sourceHashType, "SourceHashType")
EVENTLISTD_NAME(sourceHashes, "SourceHashes")
EVENTLISTD_NAME(acknowledgedBy, "AcknowledgedBy")
EVENTLISTD_NAME(acknowledgedAt, "AcknowledgedAt")

// Members of the metadata.
EVENTLISTD_NAME(descriptionScheme, "DescriptionScheme")
EVENTLISTD_NAME(arguments, "Arguments")
EVENTLISTD_NAME(argumentType, "type")
EVENTLISTD_NAME(argumentValue, "value")
EVENTLISTD_NAME(argumentTypeString, "string")

#undef EVENTLISTD_NAME

/// Joins the keywords in a spool file and in the column of an answer.
constexpr char16_t keywordSeparator = u';';

} // namespace eventlistd::names
