#include "EventHandlers/FaultHandler.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDebug>
#include <QUuid>

using Definitions = EventlistHandlerDefinitions;
using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;

FaultHandler::FaultHandler(const QString& moduleName, const TextManager& textManager,
                           QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, descriptionalLeaf, description, keywords),
      m_alarmId(QUuid::createUuid().toString())
{
    setIconType(State::inactive, Definitions::getIconNameFaultOff());
    setIconType(State::active, Definitions::getIconNameFaultOn());
}

FaultHandler::FaultHandler(const QString& moduleName, const TextManager& textManager,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, description, keywords),
      m_alarmId(QUuid::createUuid().toString())
{
    setIconType(State::inactive, Definitions::getIconNameFaultOff());
    setIconType(State::active, Definitions::getIconNameFaultOn());
}

FaultHandler::~FaultHandler() = default;

void FaultHandler::changeState(bool state, const ArgumentList& arguments)
{
    changeState(state, EventType::fault, arguments, m_alarmId);
}

void FaultHandler::changeState(bool state, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::fault, arguments, root, urlArguments, m_alarmId);
}

void FaultHandler::changeState(bool state, const TextManager& textManager,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::fault, arguments, textManager, urlArguments, m_alarmId);
}

void FaultHandler::changeDescription(const QString& description)
{
    // The same words as for an alarm.
    qWarning() << "Description from a fault can't change:" << description;
}
