#pragma once

#include "Platform/PlatformExport.h"

#include <QString>

/// The address of a D-Bus object, as a value.
class PLATFORM_EXPORT DBusConnectionParameter
{
public:
    virtual ~DBusConnectionParameter();

    /// An object of one of the device's own modules.
    /// \param moduleName     process that offers the object
    /// \param objectName     the object inside that process
    /// \param interfaceName  interface of the object, without any prefix
    /// Threads: any.
    static DBusConnectionParameter createFromTavikInternal(const QString& moduleName,
                                                           const QString& objectName,
                                                           const QString& interfaceName);

    /// What the address was made of.
    const QString& getModuleName() const { return m_moduleName; }
    const QString& getObjectName() const { return m_objectName; }
    const QString& getInterfaceName() const { return m_interfaceName; }

private:
    DBusConnectionParameter(const QString& moduleName, const QString& objectName,
                            const QString& interfaceName);

    QString m_moduleName;
    QString m_objectName;
    QString m_interfaceName;
};
