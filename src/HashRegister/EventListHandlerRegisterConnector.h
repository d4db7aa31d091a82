#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "Definitions/EventlistHandlerExport.h"

#include <QString>

/// Tells the central service a hash. The answer, the icon of that hash, comes to an
/// EventListHandlerRegisterWorker, which listens for it.
/// Threads: the one that made it.
class EVENTLISTHANDLER_EXPORT EventListHandlerRegisterConnector : public DBusConnectorBase
{
    Q_OBJECT
public:
    /// \param moduleName  module of the service that keeps the hashes
    EventListHandlerRegisterConnector(const QString& moduleName, QObject* parent);

    /// The central service's.
    EventListHandlerRegisterConnector();
    ~EventListHandlerRegisterConnector() override;

    /// Tells the service a hash.
    /// Blocks:  until the answer is there or 25 s have passed. The one blocking call of the
    ///          library. A service that calls an object of this thread meanwhile waits as long.
    /// Failure: two equal warnings and dBusConnectionError(); the caller is not told, and nothing
    ///          is repeated.
    /// Wire:    method "registerEventHash" of the object "HashRegister", s; the answer is a
    ///          variant.
    void registerEventHash(const QString& hash);

Q_SIGNALS:
    /// Never sent here: a place to which a module may relay
    /// EventListHandlerRegisterWorker::newSignal.
    void newSignal(const QString& hash, const QString& icon);
};
