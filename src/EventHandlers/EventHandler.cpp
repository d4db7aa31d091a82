#include "EventHandlers/EventHandler.h"

#include "Definitions/EventlistHandlerDefinitions.h"

using Definitions = EventlistHandlerDefinitions;
using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;

EventHandler::EventHandler(const QString& moduleName, const TextManager& textManager,
                           QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, descriptionalLeaf, description, keywords)
{
    setIconType(State::neutral, Definitions::getIconNameEvent());
    setIconType(State::inactive, Definitions::getIconNameEventOff());
    setIconType(State::active, Definitions::getIconNameEventOn());
}

EventHandler::EventHandler(const QString& moduleName, const TextManager& textManager,
                           const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, description, keywords)
{
    setIconType(State::neutral, Definitions::getIconNameEvent());
    setIconType(State::inactive, Definitions::getIconNameEventOff());
    setIconType(State::active, Definitions::getIconNameEventOn());
}

EventHandler::~EventHandler() = default;

void EventHandler::changeState(bool state, const ArgumentList& arguments)
{
    changeState(state, EventType::otherEvents, arguments, QString());
}

void EventHandler::changeState(bool state, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::otherEvents, arguments, root, urlArguments, QString());
}

void EventHandler::changeState(bool state, const TextManager& textManager,
                               const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    changeState(state, EventType::otherEvents, arguments, textManager, urlArguments, QString());
}

void EventHandler::logEvent(const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, arguments, QString(), QString());
}

void EventHandler::logEvent(QSharedPointer<ConfigurationAndProcessDataBase>& root,
                            const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, arguments, root, urlArguments, QString(),
             QString());
}

void EventHandler::logEvent(const TextManager& textManager, const ArgumentList& urlArguments,
                            const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, arguments, textManager, urlArguments,
             QString(), QString());
}

void EventHandler::logEvent(const QString& description, const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, description, arguments, QString(), QString());
}

void EventHandler::logEvent(const QString& description,
                            QSharedPointer<ConfigurationAndProcessDataBase>& root,
                            const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, description, arguments, root, urlArguments,
             QString(), QString());
}

void EventHandler::logEvent(const QString& description, const TextManager& textManager,
                            const ArgumentList& urlArguments, const ArgumentList& arguments)
{
    logEvent(EventType::otherEvents, State::neutral, description, arguments, textManager,
             urlArguments, QString(), QString());
}
