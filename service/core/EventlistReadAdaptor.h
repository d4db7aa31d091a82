#pragma once

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QStringList>
#include <QVariantMap>

namespace eventlistd
{

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
    EventlistReadAdaptor(QObject* object, EventlistService& service);

    /// The connection over which refusals are answered.
    void setConnection(const QDBusConnection& connection) { m_connection = connection; }

public Q_SLOTS:
    QVariantMap getCompleteEventlist(const QString& queryContext, const QDBusMessage& message);
    QVariantMap getListOfEventTypes(const QString& queryContext);
    QVariantMap getPartOfEventlist(const QString& queryContext, const QStringList& eventTypeFilter,
                                   const QStringList& secondFilter,
                                   const QStringList& moduleNameFilter,
                                   const QStringList& keywordFilter, const QString& startTime,
                                   const QString& endTime, const QStringList& extraList,
                                   int extraNumber, const QDBusMessage& message);
    QVariantMap getPartOfEventlistUnixTime(const QString& queryContext,
                                           const QStringList& eventTypeFilter,
                                           const QStringList& secondFilter,
                                           const QStringList& moduleNameFilter,
                                           const QStringList& keywordFilter, qlonglong startTime,
                                           qlonglong endTime, const QStringList& extraList,
                                           int extraNumber, const QDBusMessage& message);
    QVariantMap
    getPartOfEventlistById(const QString& queryContext, const QStringList& eventTypeFilter,
                           const QStringList& secondFilter, const QStringList& moduleNameFilter,
                           const QStringList& keywordFilter, qlonglong startId, qlonglong endId,
                           const QStringList& extraList, int extraNumber, bool extraFlag,
                           const QDBusMessage& message);

Q_SIGNALS:
    void changedEventlist();

private:
    QVariantMap answer(const EventFilterBuilder& filter, const QDBusMessage& message);
    QVariantMap refuse(const QDBusMessage& message, const QString& error, const QString& text);

    EventlistService& m_service;
    QDBusConnection m_connection{QString()};
};

} // namespace eventlistd
