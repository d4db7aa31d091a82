#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QDebug>
#include <QVector>

using PollingHandler = DBusConnectionSignalPollingHandler;

namespace
{

QSharedPointer<PollingHandler> pollingHandler(const QString& signalName,
                                              PollingHandler::SlotSignature signature)
{
    return QSharedPointer<PollingHandler>(new PollingHandler(
        EventlistHandlerDefinitions::getModuleName(),
        EventlistHandlerDefinitions::getObjectNameAlarmlistRead(), signalName, signature, false));
}

struct Subscription
{
    QString name;
    const char* qtSignal;
    const char* failure;
};

// The six signals in the order in which they are connected.
const QVector<Subscription>& subscriptions()
{
    static const QVector<Subscription> value{
        {QStringLiteral("changedAlarmlist"), SIGNAL(changedAlarmlist()),
         "Cannot connect to signal 'changedAlarmlist'!"},
        {QStringLiteral("changedAlarmInAlarmlist"), SIGNAL(changedAlarmInAlarmlist(bool)),
         "Cannot connect to signal 'changedAlarmInAlarmlist'!"},
        {QStringLiteral("changedActiveAlarmInAlarmlist"),
         SIGNAL(changedActiveAlarmInAlarmlist(bool)),
         "Cannot connect to signal 'changedActiveAlarmInAlarmlist'!"},
        {QStringLiteral("changedFaultInAlarmlist"), SIGNAL(changedFaultInAlarmlist(bool)),
         "Cannot connect to signal 'changedFaultInAlarmlist'!"},
        {QStringLiteral("changedActiveFaultInAlarmlist"),
         SIGNAL(changedActiveFaultInAlarmlist(bool)),
         "Cannot connect to signal 'changedActiveFaultInAlarmlist'!"},
        {QStringLiteral("changedCentralDetector"), SIGNAL(changedCentralDetector(bool)),
         "Cannot connect to signal 'changedCentralDetector'!"},
    };
    return value;
}

} // namespace

AlarmlistHandlerDBusConnectorRead::AlarmlistHandlerDBusConnectorRead(bool pollingMode)
    : DBusConnectorBase(EventlistHandlerDefinitions::getModuleName(),
                        EventlistHandlerDefinitions::getObjectNameAlarmlistRead(),
                        EventlistHandlerDefinitions::getInterfaceNameAlarmlistRead(), nullptr,
                        defaultMode),
      m_pollingMode(pollingMode)
{
    if (!m_pollingMode)
    {
        return;
    }
    m_alarmlistPollingHandler =
        pollingHandler(QStringLiteral("changedAlarmlist"), PollingHandler::noArgument);
    m_alarmInAlarmlistPollingHandler =
        pollingHandler(QStringLiteral("changedAlarmInAlarmlist"), PollingHandler::boolArgument);
    m_activeAlarmInAlarmlistPollingHandler = pollingHandler(
        QStringLiteral("changedActiveAlarmInAlarmlist"), PollingHandler::boolArgument);
    m_faultInAlarmlistPollingHandler =
        pollingHandler(QStringLiteral("changedFaultInAlarmlist"), PollingHandler::boolArgument);
    m_activeFaultInAlarmlistPollingHandler = pollingHandler(
        QStringLiteral("changedActiveFaultInAlarmlist"), PollingHandler::boolArgument);
    m_centralDetectorPollingHandler =
        pollingHandler(QStringLiteral("changedCentralDetector"), PollingHandler::boolArgument);
}

AlarmlistHandlerDBusConnectorRead::~AlarmlistHandlerDBusConnectorRead() = default;

QSharedPointer<AlarmlistHandlerDBusConnectorRead>
AlarmlistHandlerDBusConnectorRead::createAndConnect()
{
    QSharedPointer<AlarmlistHandlerDBusConnectorRead> connector(
        new AlarmlistHandlerDBusConnectorRead(false));
    if (connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return connector;
    }
    connector->initObject();
    return connector;
}

DBusPendingReply::SharedPointer
AlarmlistHandlerDBusConnectorRead::getCompleteAlarmlist(const QString& queryContext)
{
    return asyncCallHelper(QStringLiteral("getCompleteAlarmlist"), queryContext);
}

DBusPendingReply::SharedPointer
AlarmlistHandlerDBusConnectorRead::getAlarmState(const QString& queryContext)
{
    return asyncCallHelper(QStringLiteral("getAlarmState"), queryContext);
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagAlarmlist()
{
    if (!checkPollingModeAccess(m_alarmlistPollingHandler) ||
        !m_alarmlistPollingHandler->isSignalOccured())
    {
        return false;
    }
    m_alarmlistPollingHandler->resetAllSignals();
    return true;
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagAlarmInAlarmlist(bool& state)
{
    return takeState(m_alarmInAlarmlistPollingHandler, state);
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagActiveAlarmInAlarmlist(bool& state)
{
    return takeState(m_activeAlarmInAlarmlistPollingHandler, state);
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagFaultInAlarmlist(bool& state)
{
    return takeState(m_faultInAlarmlistPollingHandler, state);
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagActiveFaultInAlarmlist(bool& state)
{
    return takeState(m_activeFaultInAlarmlistPollingHandler, state);
}

bool AlarmlistHandlerDBusConnectorRead::changedFlagCentralDetector(bool& state)
{
    return takeState(m_centralDetectorPollingHandler, state);
}

bool AlarmlistHandlerDBusConnectorRead::checkPollingModeAccess(
    QSharedPointer<DBusConnectionSignalPollingHandler> handler)
{
    if (!m_pollingMode)
    {
        qWarning() << "PollingMode not active";
        return false;
    }
    if (handler.isNull())
    {
        qWarning() << "Nollpointer access";
        return false;
    }
    return true;
}

void AlarmlistHandlerDBusConnectorRead::connectServices()
{
    if (m_pollingMode)
    {
        return;
    }
    for (const Subscription& subscription : subscriptions())
    {
        if (!DBusConnection::getQDBusConnection().connect(getServiceName(), getDBusPath(),
                                                          QString(), subscription.name, this,
                                                          subscription.qtSignal))
        {
            qWarning() << subscription.failure;
        }
    }
}

void AlarmlistHandlerDBusConnectorRead::disconnectServices()
{
    if (m_pollingMode)
    {
        return;
    }
    for (const Subscription& subscription : subscriptions())
    {
        DBusConnection::getQDBusConnection().disconnect(getServiceName(), getDBusPath(), QString(),
                                                        subscription.name, this,
                                                        subscription.qtSignal);
    }
}

// Forgets only the occurrence that was read, so that the next call gives the next state.
bool AlarmlistHandlerDBusConnectorRead::takeState(const QSharedPointer<PollingHandler>& handler,
                                                  bool& state)
{
    if (!checkPollingModeAccess(handler) || !handler->isSignalOccured())
    {
        return false;
    }
    state = handler->getSignalParameter().toBool();
    handler->resetLastSignal();
    return true;
}
