#include "EventHandlers/EventHandlerBaseClass.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/EventTextWriter.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationAndProcessDataDefinitions.h"
#include "Platform/ConfigurationDataValue.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/RecorderUrlHashHandling.h"
#include "Platform/TextManager.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDebug>
#include <QJsonObject>
#include <QVariant>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;
using UrlArgumentList = QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>;

namespace
{

// The numbering of State makes true the state active and false the state inactive.
State stateOf(bool isOn)
{
    return State(2 - int(isOn));
}

} // namespace

EventHandlerBaseClass::EventHandlerBaseClass(
    const QString& moduleName, const TextManager& textManager,
    QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf, const QString& description,
    const QStringList& keywords)
    : QObject(nullptr),
      m_descriptionalLeaf(descriptionalLeaf),
      m_textManager(textManager),
      m_eventWriter(moduleName, nullptr),
      m_description(description),
      m_keywords(keywords)
{
    addKeyword(EventlistHandlerDefinitions::getKeywordFirmware());
}

EventHandlerBaseClass::EventHandlerBaseClass(const QString& moduleName,
                                             const TextManager& textManager,
                                             const QString& description,
                                             const QStringList& keywords)
    : QObject(nullptr),
      m_textManager(textManager),
      m_eventWriter(moduleName, nullptr),
      m_description(description),
      m_keywords(keywords)
{
    addKeyword(EventlistHandlerDefinitions::getKeywordFirmware());
}

EventHandlerBaseClass::~EventHandlerBaseClass() = default;

void EventHandlerBaseClass::setEventToFile(const QString& fileName)
{
    m_eventWriter.setEventToFile(fileName);
}

void EventHandlerBaseClass::setIconType(State state, const QString& icon)
{
    switch (state)
    {
    case State::active:
        m_iconActive = icon;
        return;
    case State::inactive:
        m_iconInactive = icon;
        return;
    case State::neutral:
        m_iconNeutral = icon;
        return;
    }
    qWarning() << "State" << int(state) << "not valid";
}

void EventHandlerBaseClass::changeDescription(const QString& description)
{
    m_description = description;
}

void EventHandlerBaseClass::setDescriptionalLeaf(
    const QSharedPointer<ConfigurationAndProcessDataBase>& leaf)
{
    m_descriptionalLeaf = leaf;
}

EventlistHandlerEnums::SourceHashType EventHandlerBaseClass::getSourceHashType() const
{
    return m_sourceHashType;
}

QStringList EventHandlerBaseClass::getAllSourceTags() const
{
    return m_sourceTags;
}

void EventHandlerBaseClass::addKeyword(const QString& keyword)
{
    if (!m_keywords.contains(keyword))
    {
        m_keywords.append(keyword);
    }
}

void EventHandlerBaseClass::addSourceTag(const QString& tag,
                                         EventlistHandlerEnums::SourceHashType type)
{
    // A known tag changes nothing, not even the type.
    if (m_sourceTags.contains(tag))
    {
        return;
    }
    m_sourceTags.append(tag);
    m_sourceHashType = type;
    createSourceHashes();
}

void EventHandlerBaseClass::removeSourceTag(const QString& tag)
{
    // The type stays here and in removeAllSourceTags(), on purpose.
    if (m_sourceTags.removeOne(tag))
    {
        createSourceHashes();
    }
}

void EventHandlerBaseClass::removeAllSourceTags()
{
    m_sourceTags.clear();
    createSourceHashes();
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const QString& description,
                                     const ArgumentList& arguments, const QString& user,
                                     const QString& alarmId)
{
    logEvent(type, state, description, arguments, m_textManager, ArgumentList(), user, alarmId);
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const ArgumentList& arguments,
                                     const QString& user, const QString& alarmId)
{
    logEvent(type, state, m_description, arguments, user, alarmId);
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const QString& description,
                                     const ArgumentList& arguments,
                                     QSharedPointer<ConfigurationAndProcessDataBase>& root,
                                     const ArgumentList& urlArguments, const QString& user,
                                     const QString& alarmId)
{
    const QVariantMap textObject = getDescriptionTextList(description);
    UrlArgumentList resolvedUrlArguments;
    for (const auto& urlArgument : urlArguments)
    {
        const QSharedPointer<ConfigurationDataValue> leaf =
            root->getLeafConfigurationData(urlArgument.argument);
        if (leaf.isNull())
        {
            qWarning() << "Can't find element" << urlArgument.argument << "in root object";
            continue;
        }
        const QVariant value = leaf->getValue();
        if (!value.canConvert(QMetaType::QVariantMap))
        {
            qWarning() << "Can't convert ConfigValue to QVariantMap. Result QVariant:" << value;
            continue;
        }
        resolvedUrlArguments.append({urlArgument.placeholder, value.toMap()});
    }
    logTexts(type, state, description, textObject, arguments, resolvedUrlArguments, user, alarmId);
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const ArgumentList& arguments,
                                     QSharedPointer<ConfigurationAndProcessDataBase>& root,
                                     const ArgumentList& urlArguments, const QString& user,
                                     const QString& alarmId)
{
    logEvent(type, state, m_description, arguments, root, urlArguments, user, alarmId);
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const QString& description,
                                     const ArgumentList& arguments, const TextManager& textManager,
                                     const ArgumentList& urlArguments, const QString& user,
                                     const QString& alarmId)
{
    const QVariantMap textObject = getDescriptionTextList(description);
    UrlArgumentList resolvedUrlArguments;
    for (const auto& urlArgument : urlArguments)
    {
        resolvedUrlArguments.append(
            {urlArgument.placeholder,
             ReadAllTextsHelper::getAllTextsAsVariantMap(textManager, urlArgument.argument)});
    }
    logTexts(type, state, description, textObject, arguments, resolvedUrlArguments, user, alarmId);
}

void EventHandlerBaseClass::logEvent(EventType type, State state, const ArgumentList& arguments,
                                     const TextManager& textManager,
                                     const ArgumentList& urlArguments, const QString& user,
                                     const QString& alarmId)
{
    logEvent(type, state, m_description, arguments, textManager, urlArguments, user, alarmId);
}

void EventHandlerBaseClass::changeState(bool state, EventType type, const ArgumentList& arguments,
                                        const QString& alarmId)
{
    if (takeState(state))
    {
        logEvent(type, stateOf(state), m_description, arguments, QString(), alarmId);
    }
}

void EventHandlerBaseClass::changeState(bool state, EventType type, const ArgumentList& arguments,
                                        QSharedPointer<ConfigurationAndProcessDataBase>& root,
                                        const ArgumentList& urlArguments, const QString& alarmId)
{
    if (takeState(state))
    {
        logEvent(type, stateOf(state), m_description, arguments, root, urlArguments, QString(),
                 alarmId);
    }
}

void EventHandlerBaseClass::changeState(bool state, EventType type, const ArgumentList& arguments,
                                        const TextManager& textManager,
                                        const ArgumentList& urlArguments, const QString& alarmId)
{
    if (takeState(state))
    {
        logEvent(type, stateOf(state), m_description, arguments, textManager, urlArguments,
                 QString(), alarmId);
    }
}

QVariantMap EventHandlerBaseClass::getDescriptionTextList(const QString& description) const
{
    if (m_descriptionalLeaf.isNull())
    {
        return ReadAllTextsHelper::getAllTextsAsVariantMap(m_textManager, description);
    }
    const QSharedPointer<ConfigurationAndProcessDataBase> node =
        m_descriptionalLeaf->getLeafByPath(description);
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(
        node->getDataProperty(ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue())
            .toMap());
    return helper.getTranslateableTextObject();
}

// Once per change of the tags, never per event.
void EventHandlerBaseClass::createSourceHashes()
{
    m_sourceHashes.clear();
    for (const QString& tag : qAsConst(m_sourceTags))
    {
        const QByteArray hash = RecorderUrlHashHandling::createUrlHash(tag.toUtf8());
        m_sourceHashes.append(QString::fromLatin1(hash.toHex()));
    }
}

// True when this is a change. It counts before the event is built: what the event meets on its way
// does not bring it back.
bool EventHandlerBaseClass::takeState(bool state)
{
    if (state == m_currentState)
    {
        return false;
    }
    m_currentState = state;
    return true;
}

// Null for a state that is none.
const QString* EventHandlerBaseClass::iconOf(State state) const
{
    switch (state)
    {
    case State::active:
        return &m_iconActive;
    case State::inactive:
        return &m_iconInactive;
    case State::neutral:
        return &m_iconNeutral;
    }
    return nullptr;
}

// The inner road where it can be taken, which makes the same event, and else the exported steps.
void EventHandlerBaseClass::logTexts(EventType type, State state, const QString& description,
                                     const QVariantMap& textObject, const ArgumentList& arguments,
                                     const UrlArgumentList& urlArguments, const QString& user,
                                     const QString& alarmId)
{
    const EventTextWriter writer(textObject, arguments, urlArguments);
    const QString* const icon = iconOf(state);
    const bool isOrdinary = icon != nullptr && writer.isOrdinary();
    if (isOrdinary && m_eventWriter.canSend())
    {
        m_eventWriter.sendEvent(
            type, state, *icon, m_keywords, writer.description(), user,
            writer.additionalData(description, m_sourceHashes, m_sourceHashType), alarmId);
        return;
    }
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(metaData, textObject, arguments,
                                                           urlArguments, description);
    if (isOrdinary && m_eventWriter.isOnFileRoad())
    {
        m_eventWriter.spoolEvent(type, state, *icon, m_keywords, writer.description(), user,
                                 description, metaData, alarmId, m_sourceHashes, m_sourceHashType);
        return;
    }
    logEventIntern(type, state, description, user, metaData, alarmId);
}

void EventHandlerBaseClass::logEventIntern(EventType type, State state, const QString& eventId,
                                           const QString& user, const QJsonObject& metaData,
                                           const QString& alarmId)
{
    const QString* const icon = iconOf(state);
    if (icon == nullptr)
    {
        // Required: the event is written all the same, with an empty icon.
        qWarning() << "State" << int(state) << "not valid";
    }
    QVariantMap descriptionTextList;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(descriptionTextList,
                                                                      metaData);
    m_eventWriter.logEvent(type, state, icon != nullptr ? *icon : QString(), m_keywords,
                           descriptionTextList, user, eventId, metaData, alarmId, m_sourceHashes,
                           m_sourceHashType);
}
