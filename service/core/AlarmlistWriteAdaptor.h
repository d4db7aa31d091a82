#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

namespace eventlistd
{

class BusObject;
class EventlistService;

/// The object "/AlarmlistWrite" on the bus. Each slot is a method of this name; what the methods
/// mean stands in interfaces/Interface.AlarmlistWrite.xml.
class AlarmlistWriteAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.AlarmlistWrite")
public:
    /// \param object   what stands on the bus; it owns this
    /// \param service  must outlive this
    AlarmlistWriteAdaptor(BusObject* object, EventlistService& service);

public Q_SLOTS:
    void acknowledgeVisualAlarm(const QStringList& alarms, const QString& user);
    void acknowledgeCentralDetector(const QString& user);

private:
    BusObject& m_object;
    EventlistService& m_service;
};

} // namespace eventlistd
