#pragma once

#include "Platform/PlatformExport.h"

#include <QObject>
#include <QString>
#include <QVariant>

#include <memory>

/// Listens for one D-Bus signal by itself and stores what arrived, so that its owner can ask later.
/// Needs no event loop and no QCoreApplication. The subscription outlives a restart of the service
/// and of the bus.
///
/// Occurrences are kept in the order of their arrival. Of a signal without argument one is kept; of
/// a signal with an argument the newest 4096, and what is dropped is the oldest.
/// Threads: the arrival of a signal and the operations here may meet; two threads must not poll one
///          handler.
class PLATFORM_EXPORT DBusConnectionSignalPollingHandler : public QObject
{
    Q_OBJECT
public:
    /// The shape of the signal. A signal of another shape is not stored.
    enum SlotSignature : int
    {
        noArgument = 0,
        boolArgument = 1
    };

    /// \param moduleName  module that sends the signal, "EventlistHandler" for the central service
    /// \param objectName  object inside that module
    /// \param signalName  D-Bus name of the signal; it is taken from any interface of the object
    /// \param flag        has no meaning here
    /// Failure: one warning, and silence for ever, when D-Bus forbids one of the names.
    DBusConnectionSignalPollingHandler(const QString& moduleName, const QString& objectName,
                                       const QString& signalName, SlotSignature signature,
                                       bool flag);
    ~DBusConnectionSignalPollingHandler() override;

    /// True while an occurrence is stored.
    bool isSignalOccured();

    /// The argument of the oldest stored occurrence; invalid when none is stored or the signal has
    /// no argument.
    QVariant getSignalParameter();

    /// Forgets exactly the occurrence that getSignalParameter() gave last; does nothing when that
    /// is gone already.
    void resetLastSignal();

    /// Forgets every stored occurrence.
    void resetAllSignals();

private:
    class Private;
    std::unique_ptr<Private> d;
};
