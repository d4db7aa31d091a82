#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDebug>

AlarmlistHandlerDBusConnectorWrite::AlarmlistHandlerDBusConnectorWrite(bool)
    : DBusConnectorBase(EventlistHandlerDefinitions::getModuleName(),
                        EventlistHandlerDefinitions::getObjectNameAlarmlistWrite(),
                        EventlistHandlerDefinitions::getInterfaceNameAlarmlistWrite(), nullptr,
                        defaultMode)
{
}

AlarmlistHandlerDBusConnectorWrite::~AlarmlistHandlerDBusConnectorWrite() = default;

QSharedPointer<AlarmlistHandlerDBusConnectorWrite>
AlarmlistHandlerDBusConnectorWrite::createAndConnect()
{
    QSharedPointer<AlarmlistHandlerDBusConnectorWrite> connector(
        new AlarmlistHandlerDBusConnectorWrite(false));
    if (connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return connector;
    }
    connector->initObject();
    return connector;
}

void AlarmlistHandlerDBusConnectorWrite::acknowledgeVisualAlarm(const QStringList& alarms,
                                                                const QString& user)
{
    syncCallNoBlock(QStringLiteral("acknowledgeVisualAlarm"), alarms, user);
}

void AlarmlistHandlerDBusConnectorWrite::acknowledgeCentralDetector(const QString& user)
{
    syncCallNoBlock(QStringLiteral("acknowledgeCentralDetector"), user);
}
