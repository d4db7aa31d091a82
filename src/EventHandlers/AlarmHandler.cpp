#include "EventHandlers/AlarmHandler.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDebug>
#include <QUuid>

using Definitions = EventlistHandlerDefinitions;
using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;

AlarmHandler::AlarmHandler(const QString& moduleName, const TextManager& textManager,
                           QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, descriptionalLeaf, description, keywords),
      m_alarmId(QUuid::createUuid().toString())
{
    setIconType(State::inactive, Definitions::getIconNameAlarmOff());
    setIconType(State::active, Definitions::getIconNameAlarmOn());
}

AlarmHandler::AlarmHandler(const QString& moduleName, const TextManager& textManager,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, description, keywords),
      m_alarmId(QUuid::createUuid().toString())
{
    setIconType(State::inactive, Definitions::getIconNameAlarmOff());
    setIconType(State::active, Definitions::getIconNameAlarmOn());
}

AlarmHandler::~AlarmHandler() = default;

void AlarmHandler::changeState(bool state, const ArgumentList& arguments)
{
    changeState(state, EventType::alarm, arguments, m_alarmId);
}

void AlarmHandler::changeState(bool state, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::alarm, arguments, root, urlArguments, m_alarmId);
}

void AlarmHandler::changeState(bool state, const TextManager& textManager,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::alarm, arguments, textManager, urlArguments, m_alarmId);
}

void AlarmHandler::changeDescription(const QString& description)
{
    // The word "fault" stands in the warning of alarms too.
    qWarning() << "Description from a fault can't change:" << description;
}
