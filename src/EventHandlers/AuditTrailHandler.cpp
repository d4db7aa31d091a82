#include "EventHandlers/AuditTrailHandler.h"

#include "Definitions/EventlistHandlerDefinitions.h"

using Definitions = EventlistHandlerDefinitions;
using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;

AuditTrailHandler::AuditTrailHandler(
    const QString& moduleName, const TextManager& textManager,
    QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf, const QString& description,
    const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, descriptionalLeaf, description, keywords)
{
    setIconType(State::neutral, Definitions::getIconNameAuditTrail());
}

AuditTrailHandler::AuditTrailHandler(const QString& moduleName, const TextManager& textManager,
                                     const QString& description, const QStringList& keywords)
    : EventHandlerBaseClass(moduleName, textManager, description, keywords)
{
    setIconType(State::neutral, Definitions::getIconNameAuditTrail());
}

AuditTrailHandler::~AuditTrailHandler() = default;

void AuditTrailHandler::logAuditTrail(const ArgumentList& arguments)
{
    logAuditTrail(QString(), arguments);
}

void AuditTrailHandler::logAuditTrail(const QString& user, const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, arguments, user, QString());
}

void AuditTrailHandler::logAuditTrail(const QString& user,
                                      QSharedPointer<ConfigurationAndProcessDataBase>& root,
                                      const ArgumentList& urlArguments,
                                      const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, arguments, root, urlArguments, user, QString());
}

void AuditTrailHandler::logAuditTrail(const QString& user, const TextManager& textManager,
                                      const ArgumentList& urlArguments,
                                      const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, arguments, textManager, urlArguments, user,
             QString());
}

void AuditTrailHandler::logAuditTrail(const QString& user, const QString& description,
                                      const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, description, arguments, user, QString());
}

void AuditTrailHandler::logAuditTrail(const QString& user, const QString& description,
                                      QSharedPointer<ConfigurationAndProcessDataBase>& root,
                                      const ArgumentList& urlArguments,
                                      const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, description, arguments, root, urlArguments,
             user, QString());
}

void AuditTrailHandler::logAuditTrail(const QString& user, const QString& description,
                                      const TextManager& textManager,
                                      const ArgumentList& urlArguments,
                                      const ArgumentList& arguments)
{
    logEvent(EventType::auditTrail, State::neutral, description, arguments, textManager,
             urlArguments, user, QString());
}
