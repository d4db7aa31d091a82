#pragma once

#include "Platform/PlatformExport.h"

#include <QDBusConnection>

/// The one bus connection of this process.
class PLATFORM_EXPORT DBusConnection
{
public:
    /// The connection to use now: the system bus, found by libdbus' own rules, so that
    /// DBUS_SYSTEM_BUS_ADDRESS leads to another one. After the bus was lost and found again this is
    /// another connection than before: fetch it anew for each use and keep no copy.
    /// Failure: without a bus the connection that is returned is not connected.
    /// Blocks:  the first call of a process waits for the first attempt to connect, at most 1 s;
    ///          later ones never.
    /// Threads: any.
    static QDBusConnection getQDBusConnection();
};
