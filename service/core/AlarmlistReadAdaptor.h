#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace eventlistd
{

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
    AlarmlistReadAdaptor(QObject* object, EventlistService& service);

    /// The connection over which refusals are answered.
    void setConnection(const QDBusConnection& connection) { m_connection = connection; }

public Q_SLOTS:
    QVariantMap getCompleteAlarmlist(const QString& queryContext, const QDBusMessage& message);
    QVariantMap getAlarmState(const QString& queryContext);

Q_SIGNALS:
    void changedAlarmlist();
    void changedAlarmInAlarmlist(bool bState);
    void changedActiveAlarmInAlarmlist(bool bState);
    void changedFaultInAlarmlist(bool bState);
    void changedActiveFaultInAlarmlist(bool bState);
    void changedCentralDetector(bool bState);

private:
    EventlistService& m_service;
    QDBusConnection m_connection{QString()};
};

} // namespace eventlistd
