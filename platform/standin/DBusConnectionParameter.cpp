#include "Platform/DBusConnectionParameter.h"

DBusConnectionParameter::DBusConnectionParameter(const QString& moduleName,
                                                 const QString& objectName,
                                                 const QString& interfaceName)
    : m_moduleName(moduleName), m_objectName(objectName), m_interfaceName(interfaceName)
{
}

DBusConnectionParameter::~DBusConnectionParameter() = default;

DBusConnectionParameter DBusConnectionParameter::createFromTavikInternal(
    const QString& moduleName, const QString& objectName, const QString& interfaceName)
{
    return DBusConnectionParameter(moduleName, objectName, interfaceName);
}
