#include "eventlist/EventFromShell.h"

#include "eventlist/ExitCode.h"
#include "eventlist/Language.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"
#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Definitions/EventlistHandlerStructs.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "EventWrite/EventlistHandlerEventToFile.h"

#include "Platform/LanguageDefinitions.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDir>
#include <QJsonArray>
#include <QUuid>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;

namespace
{
// "LANGUAGE=TEXT", "%1=VALUE". False without a "=" or with nothing before it.
bool split(const QString& pair, QString& name, QString& value)
{
    const int position = pair.indexOf(QLatin1Char('='));
    name = pair.left(position);
    value = pair.mid(position + 1);
    return position > 0;
}

// The same for the same words: the command that ends an alarm need not know what began it.
QString alarmIdOf(const QString& module, const QString& words)
{
    static const QUuid space(QStringLiteral("{6d2f4b0e-6c7a-4a52-9d0c-5f2b8f6f3e11}"));
    return QUuid::createUuidV5(space, module + QLatin1Char('\n') + words).toString();
}

int leave(EventlistHandlerEventToFile& spool, const QJsonObject& entry)
{
    // Numbers begin anew in every process: a name of its own, or this would replace an event that
    // nobody has picked up yet.
    const QString fileName =
        QStringLiteral("eventlist-") + QUuid::createUuid().toString(QUuid::WithoutBraces);
    if (spool.writeEventToFile(entry, fileName))
    {
        return ExitCode::success;
    }
    Output::error(
        QStringLiteral("cannot write into the spool folder '%1'; look at its rights and at "
                       "the space that is left")
            .arg(EventlistHandlerDefinitions::getPathEventToFile()));
    return ExitCode::failed;
}
} // namespace

QVector<Option> EventFromShell::options()
{
    const auto option = [](const char* names, const char* value, const char* description) {
        return Option{QString::fromLatin1(names).split(QLatin1Char(',')),
                      QString::fromLatin1(value), QString::fromUtf8(description)};
    };
    return {
        option("t,type", "TYPE", "alarm, fault, audit or event; event without this"),
        option("s,state", "STATE", "on, off or none; without this on for alarms and faults"),
        option("m,module", "NAME", "module that reports; eventlist without this"),
        option("u,user", "NAME", "user to whom the event belongs"),
        option("k,keyword", "WORD", "a keyword; may be repeated"),
        option("text", "LANG=TEXT", "the text in one language, such as de=...; repeat it"),
        option("texts", "FOLDER", "language files (*.qm) for --url"),
        option("url", "URL", "text url of the description; also the event id"),
        option("arg", "PLACEHOLDER=VALUE", "fills a placeholder of the text, such as %1=7"),
        option("event-id", "URL", "event id, when there is no --url"),
        option("alarm-id", "ID", "alarm id, when it is not to be made of the text"),
        option("icon", "NAME", "icon, when it is not to be that of the type"),
        option("file", "", "leave it in the spool folder; needs no bus and no service"),
    };
}

bool EventFromShell::fail(const QString& text)
{
    m_errorText = text;
    return false;
}

bool EventFromShell::read(const Arguments& arguments)
{
    m_module = arguments.isSet(QStringLiteral("module")) ? arguments.value(QStringLiteral("module"))
                                                         : QStringLiteral("eventlist");
    m_user = arguments.value(QStringLiteral("user"));
    m_keywords = arguments.values(QStringLiteral("keyword"));
    m_eventId = arguments.isSet(QStringLiteral("url"))
                    ? arguments.value(QStringLiteral("url"))
                    : arguments.value(QStringLiteral("event-id"));
    QVariantMap texts;
    if (!readKind(arguments) || !readTexts(arguments, texts) || !readMetaData(arguments, texts))
    {
        return false;
    }
    m_icon = arguments.isSet(QStringLiteral("icon")) ? arguments.value(QStringLiteral("icon"))
                                                     : Words::icon(m_type, m_state);
    if (arguments.isSet(QStringLiteral("alarm-id")))
    {
        m_alarmId = arguments.value(QStringLiteral("alarm-id"));
    }
    else if (m_type == EventType::alarm || m_type == EventType::fault)
    {
        m_alarmId = alarmIdOf(m_module, m_eventId.isEmpty() ? texts.first().toString() : m_eventId);
    }
    return true;
}

bool EventFromShell::readKind(const Arguments& arguments)
{
    const QString type = arguments.value(QStringLiteral("type"));
    if (arguments.isSet(QStringLiteral("type")) && !Words::readType(type, m_type))
    {
        return fail(
            QStringLiteral("there is no type '%1': alarm, fault, audit or event").arg(type));
    }
    const bool isAlarm = m_type == EventType::alarm || m_type == EventType::fault;
    m_state = isAlarm ? State::active : State::neutral;
    const QString state = arguments.value(QStringLiteral("state"));
    if (arguments.isSet(QStringLiteral("state")) && !Words::readState(state, m_state))
    {
        return fail(QStringLiteral("there is no state '%1': on, off or none").arg(state));
    }
    return true;
}

bool EventFromShell::readTexts(const Arguments& arguments, QVariantMap& texts)
{
    const QStringList words = arguments.words();
    const QStringList pairs = arguments.values(QStringLiteral("text"));
    const bool isUrl = arguments.isSet(QStringLiteral("url"));
    if (words.size() > 1)
    {
        return fail(QStringLiteral("one text is enough; put it in quotes"));
    }
    if (int(!words.isEmpty()) + int(!pairs.isEmpty()) + int(isUrl) != 1)
    {
        return fail(QStringLiteral("give one of TEXT, --text and --url"));
    }
    if (isUrl)
    {
        return readTextOfFolder(arguments, texts);
    }
    for (const QString& pair : pairs)
    {
        QString language;
        QString text;
        if (!split(pair, language, text))
        {
            return fail(QStringLiteral("--text takes LANGUAGE=TEXT, not '%1'").arg(pair));
        }
        texts.insert(Language::key(language), text);
    }
    if (!words.isEmpty())
    {
        texts.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(), words.first());
    }
    return true;
}

bool EventFromShell::readTextOfFolder(const Arguments& arguments, QVariantMap& texts)
{
    const QString folder = arguments.value(QStringLiteral("texts"));
    if (!arguments.isSet(QStringLiteral("texts")) || !QDir(folder).exists())
    {
        return fail(QStringLiteral("--url needs the folder of its language files, --texts FOLDER"));
    }
    texts = ReadAllTextsHelper::getAllTextsAsVariantMap(TextManager(folder), m_eventId);
    return !texts.isEmpty() ||
           fail(QStringLiteral("no language file in '%1' has a text '%2'").arg(folder, m_eventId));
}

bool EventFromShell::readMetaData(const Arguments& arguments, const QVariantMap& texts)
{
    QList<EventlistHandlerStructs::stDescriptionArgument> descriptionArguments;
    for (const QString& pair : arguments.values(QStringLiteral("arg")))
    {
        EventlistHandlerStructs::stDescriptionArgument argument;
        if (!split(pair, argument.placeholder, argument.argument))
        {
            return fail(QStringLiteral("--arg takes PLACEHOLDER=VALUE, not '%1'").arg(pair));
        }
        descriptionArguments.append(argument);
    }
    EventlistHandlerConvenienceFunctions::generateMetaData(
        m_metaData, texts, descriptionArguments,
        QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>(), m_eventId);
    return true;
}

QString EventFromShell::description() const
{
    QVariantMap texts;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(texts, m_metaData);
    TranslateableTextHelper helper((QString()));
    helper.setTranslateableTextObject(texts);
    return helper.getTranslateableTextObjectAsJsonString();
}

int EventFromShell::send() const
{
    EventlistHandlerDBusConnectorWrite connector(false);
    if (!Service::isThere(connector))
    {
        return ExitCode::notReachable;
    }
    connector.logEvent(m_type, m_state, m_icon, m_module, description(), m_keywords, m_user,
                       m_eventId, m_metaData, m_alarmId, QString(),
                       EventlistHandlerEnums::noSourceHash);
    return Service::flush(connector);
}

int EventFromShell::writeFile() const
{
    EventlistHandlerEventToFile spool;
    QJsonObject entry;
    spool.generateEventEntryData(entry, m_type, m_state, m_icon, m_module, description(),
                                 m_keywords, m_user, m_eventId, m_metaData, m_alarmId, QString(),
                                 EventlistHandlerEnums::noSourceHash);
    return leave(spool, entry);
}

int EventFromShell::writeEmergency(const QString& module, const QString& argument)
{
    // Not by setEventWatchdogEmergency(): that one numbers its files and tells no failure.
    const QJsonObject metaData{{EventlistHandlerDefinitions::getKeyMetaDataArguments(),
                                QJsonArray{QJsonObject{{QStringLiteral("%1"), argument}}}}};
    EventlistHandlerEventToFile spool;
    QJsonObject entry;
    spool.generateEventEntryData(entry, EventType::otherEvents, State::neutral,
                                 EventlistHandlerDefinitions::getIconNameEvent(), module, QString(),
                                 {EventlistHandlerDefinitions::getKeywordFirmware()}, QString(),
                                 EventlistHandlerDefinitions::getTextUrlSystemWatchdog(), metaData,
                                 QString(), QString(), EventlistHandlerEnums::noSourceHash);
    return leave(spool, entry);
}
