#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include <QObject>

/// The two administrative commands to the central service. Both are fire and forget: see
/// EventlistHandlerDBusConnectorWrite for what happens when the service is not there.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT EventlistHandlerWrite : public QObject
{
    Q_OBJECT
public:
    /// Connects to the service. Blocks: see DBusConnectorBase.
    explicit EventlistHandlerWrite(QObject* parent);
    ~EventlistHandlerWrite() override;

    /// Deletes the event list.
    void deleteEventlist();

    /// Makes the service take no more events. There is no way back here, on purpose: a module that
    /// ends the suppression uses EventlistHandlerDBusConnectorWrite::suppressEventProcessing.
    void suppressEventProcessing();

private:
    EventlistHandlerDBusConnectorWrite m_connector;
};
