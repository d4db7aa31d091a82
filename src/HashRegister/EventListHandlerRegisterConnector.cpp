#include "HashRegister/EventListHandlerRegisterConnector.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/DBusConnectionParameter.h"

EventListHandlerRegisterConnector::EventListHandlerRegisterConnector(const QString& moduleName,
                                                                     QObject* parent)
    : DBusConnectorBase(DBusConnectionParameter::createFromTavikInternal(
                            moduleName, EventlistHandlerDefinitions::getObjectNameHashRegister(),
                            EventlistHandlerDefinitions::getInterfaceNameHashRegister()),
                        parent, defaultMode)
{
}

EventListHandlerRegisterConnector::EventListHandlerRegisterConnector()
    : EventListHandlerRegisterConnector(EventlistHandlerDefinitions::getModuleName(), nullptr)
{
}

EventListHandlerRegisterConnector::~EventListHandlerRegisterConnector() = default;

void EventListHandlerRegisterConnector::registerEventHash(const QString& hash)
{
    syncCallHelper(QStringLiteral("registerEventHash"), hash);
}
