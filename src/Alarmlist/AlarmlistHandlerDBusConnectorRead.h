#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerExport.h"

#include "Platform/DBusPendingReply.h"

#include <QSharedPointer>
#include <QString>

class DBusConnectionSignalPollingHandler;

/// D-Bus client of the central service's alarm list: bus name of the module "EventlistHandler",
/// path "/AlarmlistRead", interface "Interface.AlarmlistRead". Places the two queries of the alarm
/// list, and tells six kinds of change.
///
/// The news come in one of two ways, chosen at construction. In signal mode, the mode of
/// createAndConnect(), the six signals are emitted, which needs the event loop of this thread. In
/// polling mode, the mode of AlarmlistHandlerDBusConnectorRead(true), they never are, and the owner
/// asks the six changedFlag functions when it suits him; that needs no event loop.
///
/// A signal tells a change, not a state: a panel that starts asks getAlarmState() first.
/// Failure: a query is null when the service is not there, after one warning; an error of the
///          service stands in the reply.
/// Wire:    a D-Bus method of the function's name with the one argument queryContext, s, which is
///          handed on as it is; D-Bus signals of the names of the Qt signals, taken from any
///          interface.
/// Blocks:  in polling mode the constructor, at most 1 s, until the subscriptions are on their way
///          to the bus; otherwise see DBusConnectorBase.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT AlarmlistHandlerDBusConnectorRead : public DBusConnectorBase
{
    Q_OBJECT
public:
    /// A connector that can place queries and be polled. For signals use createAndConnect().
    /// \param pollingMode  true for polling mode, for good
    explicit AlarmlistHandlerDBusConnectorRead(bool pollingMode);
    ~AlarmlistHandlerDBusConnectorRead() override;

    /// Makes a connector in signal mode, finished and subscribed.
    static QSharedPointer<AlarmlistHandlerDBusConnectorRead> createAndConnect();

    /// Asks for the whole alarm list.
    DBusPendingReply::SharedPointer getCompleteAlarmlist(const QString& queryContext);

    /// Asks for the states that the five signals with a state report.
    DBusPendingReply::SharedPointer getAlarmState(const QString& queryContext);

    /// Polling mode: true once when the list has changed since the last call, however often.
    /// Failure: false in signal mode, after a warning.
    bool changedFlagAlarmlist();

    /// Polling mode: true when a change was reported that was not asked for yet. Changes are given
    /// one at each call, oldest first, so ask until it is false; of more than 4096 not yet asked for
    /// the oldest are gone.
    /// \param state  receives the state that was reported; untouched when the result is false
    /// Failure: false in signal mode, after a warning.
    bool changedFlagAlarmInAlarmlist(bool& state);
    bool changedFlagActiveAlarmInAlarmlist(bool& state);
    bool changedFlagFaultInAlarmlist(bool& state);
    bool changedFlagActiveFaultInAlarmlist(bool& state);
    bool changedFlagCentralDetector(bool& state);

    /// True when this connector polls and the handler is there; warns otherwise.
    bool checkPollingModeAccess(QSharedPointer<DBusConnectionSignalPollingHandler> handler);

Q_SIGNALS:
    void changedAlarmlist();                         ///< the alarm list has changed
    void changedAlarmInAlarmlist(bool bState);       ///< whether an alarm stands in the list
    void changedActiveAlarmInAlarmlist(bool bState); ///< whether an active alarm stands in the list
    void changedFaultInAlarmlist(bool bState);       ///< whether a fault stands in the list
    void changedActiveFaultInAlarmlist(bool bState); ///< whether an active fault stands in the list
    void changedCentralDetector(bool bState);        ///< state of the central detector

protected Q_SLOTS:
    void connectServices() override;
    void disconnectServices() override;

private:
    bool takeState(const QSharedPointer<DBusConnectionSignalPollingHandler>& handler, bool& state);

    bool m_pollingMode;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_alarmlistPollingHandler;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_alarmInAlarmlistPollingHandler;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_activeAlarmInAlarmlistPollingHandler;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_faultInAlarmlistPollingHandler;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_activeFaultInAlarmlistPollingHandler;
    QSharedPointer<DBusConnectionSignalPollingHandler> m_centralDetectorPollingHandler;
};
