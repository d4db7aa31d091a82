#include "eventlist/ServiceExamination.h"

#include "eventlist/Diagnosis.h"
#include "eventlist/ListReply.h"
#include "eventlist/Service.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusPendingReply.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDateTime>
#include <QFile>

#include <pwd.h>

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr int patienceMs = 5000;
// Clocks of one device differ by less.
constexpr qint64 toleranceMs = 60 * 1000;

const QString& busSubject()
{
    static const QString subject = QStringLiteral("bus");
    return subject;
}
const QString& serviceSubject()
{
    static const QString subject = QStringLiteral("service");
    return subject;
}
const QString& listSubject()
{
    static const QString subject = QStringLiteral("lists");
    return subject;
}

QString serviceName()
{
    return EventlistHandlerDBusConnectorRead(false).getServiceName();
}

QString processName(uint processId)
{
    QFile file(QStringLiteral("/proc/%1/comm").arg(processId));
    return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll().trimmed())
                                          : QStringLiteral("unknown");
}

QString userName(uint userId)
{
    const passwd* entry = ::getpwuid(userId);
    return entry == nullptr ? QString::number(userId) : QString::fromLocal8Bit(entry->pw_name);
}

QDBusError call(const QString& path, const QString& interface, const QString& method,
                QVariantList& values)
{
    DBusPendingReply reply(DBusConnection::getQDBusConnection().asyncCall(
        QDBusMessage::createMethodCall(serviceName(), path, interface, method), patienceMs));
    Service::wait(reply);
    values = reply.values();
    return reply.error();
}

QString adviceFor(const QDBusError& error)
{
    if (error.type() == QDBusError::AccessDenied)
    {
        return QStringLiteral("the policy of the bus does not let this user talk to the service");
    }
    if (error.type() == QDBusError::NoReply)
    {
        return QStringLiteral("the service hangs: look at its log, then restart it");
    }
    return QStringLiteral("look at the log of the service; is it another version?");
}
} // namespace

bool ServiceExamination::run()
{
    if (!examineBus() || !examineOwner())
    {
        return false;
    }
    if (examineAnswer())
    {
        examineInterfaces();
        examineLists();
    }
    return true;
}

bool ServiceExamination::examineBus()
{
    const QString given = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    const QString bus = given.isEmpty() ? QStringLiteral("the system bus")
                                        : QStringLiteral("the bus at '%1'").arg(given);
    const QDBusConnection connection = DBusConnection::getQDBusConnection();
    if (!connection.isConnected())
    {
        m_diagnosis.fail(busSubject(), QStringLiteral("%1 cannot be reached").arg(bus),
                         QStringLiteral("start it, or set DBUS_SYSTEM_BUS_ADDRESS to the address "
                                        "of the right one"));
        return false;
    }
    m_diagnosis.good(
        busSubject(),
        QStringLiteral("%1 is reached; this is %2").arg(bus, connection.baseService()));
    return true;
}

bool ServiceExamination::examineOwner()
{
    QDBusConnectionInterface* bus = DBusConnection::getQDBusConnection().interface();
    const QString name = serviceName();
    const QDBusReply<QString> owner = bus->serviceOwner(name);
    if (!owner.isValid())
    {
        m_diagnosis.fail(serviceSubject(), QStringLiteral("nobody owns the bus name %1").arg(name),
                         QStringLiteral("start eventlistd, or look at its log for why it ended"));
        return false;
    }
    const QDBusReply<uint> processId = bus->servicePid(name);
    const QDBusReply<uint> userId = bus->serviceUid(name);
    QString text = QStringLiteral("%1 is owned by %2").arg(name, owner.value());
    text += processId.isValid()
                ? QStringLiteral(", process %1 (%2)")
                      .arg(QString::number(processId.value()), processName(processId.value()))
                : QString();
    text +=
        userId.isValid() ? QStringLiteral(", user %1").arg(userName(userId.value())) : QString();
    m_diagnosis.good(serviceSubject(), text);
    return true;
}

bool ServiceExamination::examineAnswer()
{
    QVariantList values;
    const QDBusError error = call(QStringLiteral("/"), QStringLiteral("org.freedesktop.DBus.Peer"),
                                  QStringLiteral("Ping"), values);
    m_isAnswering = !error.isValid();
    if (!m_isAnswering)
    {
        m_diagnosis.fail(serviceSubject(),
                         QStringLiteral("it does not answer: %1").arg(error.message()),
                         adviceFor(error));
    }
    return m_isAnswering;
}

void ServiceExamination::examineInterfaces()
{
    const QVector<QPair<QString, QString>> objects = {
        {Names::getObjectNameEventlistRead(), Names::getInterfaceNameEventlistRead()},
        {Names::getObjectNameEventlistWrite(), Names::getInterfaceNameEventlistWrite()},
        {Names::getObjectNameAlarmlistRead(), Names::getInterfaceNameAlarmlistRead()},
        {Names::getObjectNameAlarmlistWrite(), Names::getInterfaceNameAlarmlistWrite()},
        {Names::getObjectNameHashRegister(), Names::getInterfaceNameHashRegister()}};
    QStringList found;
    for (const auto& object : objects)
    {
        const QString path = QLatin1Char('/') + object.first;
        QVariantList values;
        const QDBusError error = call(path, QStringLiteral("org.freedesktop.DBus.Introspectable"),
                                      QStringLiteral("Introspect"), values);
        if (error.isValid())
        {
            m_diagnosis.fail(
                serviceSubject(),
                QStringLiteral("the object %1 does not answer: %2").arg(path, error.message()),
                adviceFor(error));
        }
        else if (!values.value(0).toString().contains(
                     QStringLiteral("<interface name=\"%1\"").arg(object.second)))
        {
            m_diagnosis.fail(
                serviceSubject(),
                QStringLiteral("the object %1 does not have the interface %2")
                    .arg(path, object.second),
                QStringLiteral("is it another version, or another service under this name?"));
        }
        else
        {
            found.append(path);
        }
    }
    if (found.size() == objects.size())
    {
        m_diagnosis.good(serviceSubject(), QStringLiteral("its objects have their interfaces: %1")
                                               .arg(found.join(QStringLiteral(", "))));
    }
}

void ServiceExamination::examineLists()
{
    EventlistHandlerDBusConnectorRead events(false);
    const auto newest =
        events.getPartOfEventlistById(QString(), {}, {}, {}, {}, 0, 0, {}, 1, false);
    ListReply list;
    QString problem = newest.isNull() ? Service::absence(events) : QString();
    if (!newest.isNull())
    {
        Service::wait(*newest);
        problem = Service::readList(*newest, list);
    }
    AlarmlistHandlerDBusConnectorRead alarms(false);
    const auto alarmList = alarms.getCompleteAlarmlist(QString());
    ListReply alarmRows;
    if (problem.isEmpty() && !alarmList.isNull())
    {
        Service::wait(*alarmList);
        problem = Service::readList(*alarmList, alarmRows);
    }
    if (!problem.isEmpty())
    {
        m_diagnosis.fail(listSubject(), problem,
                         QStringLiteral("look at the log of the service; is it another version?"));
        return;
    }
    const QString id =
        list.size() == 0 ? QString() : list.value(0, Names::getListColumnNameEventlistId());
    m_diagnosis.good(
        listSubject(),
        id.isEmpty() ? QStringLiteral("the event list is empty, the alarm list has %1 rows")
                           .arg(alarmRows.size())
                     : QStringLiteral("the newest event has the id %1, the alarm list has %2 rows")
                           .arg(id, QString::number(alarmRows.size())));
    const qint64 aheadMs = id.isEmpty() ? 0
                                        : list.number(0, Names::getListColumnNameTimestampUtc()) -
                                              QDateTime::currentMSecsSinceEpoch();
    if (aheadMs > toleranceMs)
    {
        m_diagnosis.warn(
            listSubject(),
            QStringLiteral("the newest event lies %1 s in the future").arg(aheadMs / 1000),
            QStringLiteral("the clock of this device was set back, or that of a sender "
                           "is wrong"));
    }
}
