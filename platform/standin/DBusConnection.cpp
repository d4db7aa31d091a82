#include "Platform/DBusConnection.h"

#include "DBusTracker.h"

QDBusConnection DBusConnection::getQDBusConnection()
{
    return DBusTracker::instance().connection();
}
