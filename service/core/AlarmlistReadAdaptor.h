#pragma once

#include <QDBusAbstractAdaptor>
#include <QVariantMap>

namespace eventlistd
{

class BusObject;
class EventlistService;

/// The object "/AlarmlistRead" on the bus. Each slot is a method and each signal a signal of this
/// name; what they mean stands in interfaces/Interface.AlarmlistRead.xml.
class AlarmlistReadAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.AlarmlistRead")
public:
    /// \param object   what stands on the bus; it owns this
    /// \param service  must outlive this
    AlarmlistReadAdaptor(BusObject* object, EventlistService& service);

public Q_SLOTS:
    QVariantMap getCompleteAlarmlist(const QString& queryContext);
    QVariantMap getAlarmState(const QString& queryContext);

Q_SIGNALS:
    void changedAlarmlist();
    void changedAlarmInAlarmlist(bool bState);
    void changedActiveAlarmInAlarmlist(bool bState);
    void changedFaultInAlarmlist(bool bState);
    void changedActiveFaultInAlarmlist(bool bState);
    void changedCentralDetector(bool bState);

private:
    BusObject& m_object;
    EventlistService& m_service;
};

} // namespace eventlistd
