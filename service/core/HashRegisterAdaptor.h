#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusVariant>

namespace eventlistd
{

class BusObject;
class EventlistService;

/// The object "/HashRegister" on the bus. The slot is a method of this name; what it means stands
/// in interfaces/Interface.RegisterHash.xml.
class HashRegisterAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.RegisterHash")
public:
    /// \param object   what stands on the bus; it owns this
    /// \param service  must outlive this
    HashRegisterAdaptor(BusObject* object, EventlistService& service);

public Q_SLOTS:
    QDBusVariant registerEventHash(const QString& hash);

private:
    BusObject& m_object;
    EventlistService& m_service;
};

} // namespace eventlistd
