#pragma once

#include "Support/Senders.h"

#include "Platform/DBusConnection.h"

#include <QByteArray>
#include <QDBusAbstractInterface>

/// A proxy of an object of the service with nothing in it but QtDBus.
class BareProxy : public QDBusAbstractInterface
{
public:
    BareProxy(const QString& path, const QString& interface)
        : BareProxy(path, std::make_unique<QByteArray>(interface.toUtf8()))
    {
    }

private:
    // QtDBus keeps the pointer to the name.
    BareProxy(const QString& path, std::unique_ptr<QByteArray> interface)
        : QDBusAbstractInterface(Senders::serviceName(), path, interface->constData(),
                                 DBusConnection::getQDBusConnection(), nullptr),
          m_interface(std::move(interface))
    {
    }

    const std::unique_ptr<QByteArray> m_interface;
};
