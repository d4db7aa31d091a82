#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QDBusVariant>

namespace eventlistd
{

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
    HashRegisterAdaptor(QObject* object, EventlistService& service);

public Q_SLOTS:
    QDBusVariant registerEventHash(const QString& hash, const QDBusMessage& message);

private:
    EventlistService& m_service;
};

} // namespace eventlistd
