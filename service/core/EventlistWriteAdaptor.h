#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>

namespace eventlistd
{

class BusObject;
class EventlistService;

/// The object "/EventlistWrite" on the bus. Each slot is a method of this name; what the methods
/// mean stands in interfaces/Interface.EventlistWrite.xml.
class EventlistWriteAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.EventlistWrite")
public:
    /// \param object   what stands on the bus; it owns this
    /// \param service  must outlive this
    EventlistWriteAdaptor(BusObject* object, EventlistService& service);

public Q_SLOTS:
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QString& description,
                  const QStringList& keywords, const QString& user, const QString& additionalData,
                  const QString& alarmId);
    void deleteEventlist();
    void suppressEventProcessing(bool suppress);

private:
    BusObject& m_object;
    EventlistService& m_service;
};

} // namespace eventlistd
