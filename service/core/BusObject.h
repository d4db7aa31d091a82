#pragma once

#include <QDBusContext>
#include <QDBusMessage>
#include <QObject>

namespace eventlistd
{

/// An object on the bus. Its adaptor learns from it who calls; a slot with the message among its
/// arguments would take calls with any further arguments as well.
class BusObject : public QObject, public QDBusContext
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// The unique name of the present caller. Only within a call from the bus.
    QString caller() const { return message().service(); }
};

} // namespace eventlistd
