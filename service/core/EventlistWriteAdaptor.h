#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusMessage>
#include <QStringList>

namespace eventlistd
{

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
    EventlistWriteAdaptor(QObject* object, EventlistService& service);

public Q_SLOTS:
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QString& description,
                  const QStringList& keywords, const QString& user, const QString& additionalData,
                  const QString& alarmId, const QDBusMessage& message);
    void deleteEventlist(const QDBusMessage& message);
    void suppressEventProcessing(bool suppress, const QDBusMessage& message);

private:
    EventlistService& m_service;
};

} // namespace eventlistd
