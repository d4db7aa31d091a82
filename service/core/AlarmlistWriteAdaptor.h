#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QStringList>

namespace eventlistd
{

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
    AlarmlistWriteAdaptor(QObject* object, EventlistService& service);

public Q_SLOTS:
    void acknowledgeVisualAlarm(const QStringList& alarms, const QString& user,
                                const QDBusMessage& message);
    void acknowledgeCentralDetector(const QString& user, const QDBusMessage& message);

private:
    EventlistService& m_service;
};

} // namespace eventlistd
