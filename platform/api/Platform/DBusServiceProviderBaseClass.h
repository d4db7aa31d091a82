#pragma once

#include "Platform/PlatformExport.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <memory>

/// Base of an object that a module offers on the bus, under the bus name of the module
/// ("<prefix>.<module name>") and the path "/<object name>". What of the object can be seen there
/// is decided by the register options and by the class that derives from it.
///
/// The object is published when its thread's event loop turns for the first time after
/// construction, so that nobody calls a half-built object, and again by itself after the bus was
/// lost and found. It is withdrawn first thing in the destructor. One object per path and process.
/// Threads: the thread on which it was made, which needs an event loop.
class PLATFORM_EXPORT DBusServiceProviderBaseClass : public QObject
{
    Q_OBJECT
public:
    /// \param moduleName     name of this process on the bus: letters, digits, "_" and "-", no digit
    ///                     first
    /// \param objectName     object inside it: letters, digits and "_"
    /// \param interfaceName  interface of the object, without any prefix
    /// \param flag           true takes the bus name of the module as well; false offers the object
    ///                     alone
    /// \param options        what is exported
    /// Failure: one warning when the bus is missing, when the path is taken already in this
    ///          process, or when the bus name belongs to another process or is refused. The object
    ///          lives on, unreachable; a missing bus and a taken name are tried again when the bus
    ///          or the name comes free.
    DBusServiceProviderBaseClass(const QString& moduleName, const QString& objectName,
                                 const QString& interfaceName, bool flag,
                                 const QFlags<QDBusConnection::RegisterOption>& options);
    ~DBusServiceProviderBaseClass() override;

    /// The module name given to the constructor.
    QString getModuleName() const;

protected:
    /// Publishes the object. A class that overrides it for events of its own calls this as well.
    void customEvent(QEvent* event) override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
