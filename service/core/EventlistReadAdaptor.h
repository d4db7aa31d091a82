#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantMap>

namespace eventlistd
{

class BusObject;
class EventFilterBuilder;
class EventlistService;

/// The object "/EventlistRead" on the bus. Each slot is a method and each signal a signal of this
/// name; what they mean stands in interfaces/Interface.EventlistRead.xml.
class EventlistReadAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.EventlistRead")
public:
    /// \param object   what stands on the bus; it owns this
    /// \param service  must outlive this
    EventlistReadAdaptor(BusObject* object, EventlistService& service);

public Q_SLOTS:
    QVariantMap getCompleteEventlist(const QString& queryContext);
    QVariantMap getListOfEventTypes(const QString& queryContext);
    QVariantMap getPartOfEventlist(const QString& queryContext, const QStringList& eventTypeFilter,
                                   const QStringList& secondFilter,
                                   const QStringList& moduleNameFilter,
                                   const QStringList& keywordFilter, const QString& startTime,
                                   const QString& endTime, const QStringList& extraList,
                                   int extraNumber);
    QVariantMap
    getPartOfEventlistUnixTime(const QString& queryContext, const QStringList& eventTypeFilter,
                               const QStringList& secondFilter, const QStringList& moduleNameFilter,
                               const QStringList& keywordFilter, qlonglong startTime,
                               qlonglong endTime, const QStringList& extraList, int extraNumber);
    QVariantMap
    getPartOfEventlistById(const QString& queryContext, const QStringList& eventTypeFilter,
                           const QStringList& secondFilter, const QStringList& moduleNameFilter,
                           const QStringList& keywordFilter, qlonglong startId, qlonglong endId,
                           const QStringList& extraList, int extraNumber, bool extraFlag);

Q_SIGNALS:
    void changedEventlist();

private:
    QVariantMap answer(const EventFilterBuilder& filter);

    BusObject& m_object;
    EventlistService& m_service;
};

} // namespace eventlistd
