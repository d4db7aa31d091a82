#pragma once

#include "Platform/DBusPendingReply.h"
#include "Platform/DBusReply.h"
#include "Platform/ErrorContainer.h"
#include "Platform/PlatformExport.h"

#include <QDBusAbstractInterface>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDebug>
#include <QMessageLogger>
#include <QObject>
#include <QString>

#include <atomic>
#include <memory>
#include <utility>

class DBusConnectionParameter;

/// Base of every D-Bus client of this library: the proxy of one remote object, and the three ways
/// to call it.
///
/// The remote object is named by a module, an object and an interface: bus name "<prefix>.<module
/// name>", path "/<object name>", interface as it stands. A connector is valid while the bus
/// connection is alive and somebody owns that bus name; both are followed in the background, so
/// asking costs no round trip and needs no event loop. When the bus itself was restarted, the
/// connector finds its new connection at its next call or, for its signals, through the event loop
/// of its thread.
///
/// Blocks:  the first connector of a process to a remote object waits until the bus has told
///          whether the object's service is there, at most 1 s; without a bus it does not wait.
///          Each further one to the same object waits for nothing.
/// Threads: the thread that made it. Connectors of different threads do not disturb each other.
class PLATFORM_EXPORT DBusConnectorBase : public QObject
{
    Q_OBJECT
public:
    /// Only 0 is used.
    enum ConnectionMode : int
    {
        defaultMode = 0
    };

    /// A connector that can place calls. Signals come only after initObject().
    /// \param moduleName     process that offers the object: letters, digits, "_" and "-", no digit
    ///                     first
    /// \param objectName     the object inside it: letters, digits and "_"
    /// \param interfaceName  its interface, without any prefix
    /// Failure: with a name that D-Bus forbids the connector is never valid.
    DBusConnectorBase(const QString& moduleName, const QString& objectName,
                      const QString& interfaceName, QObject* parent, ConnectionMode mode);

    /// The same with the three names in one.
    DBusConnectorBase(const DBusConnectionParameter& parameter, QObject* parent,
                      ConnectionMode mode);
    ~DBusConnectorBase() override;

    /// Second step of construction, called once: ends in the first connectServices(), which needs
    /// the finished object.
    void initObject();

    /// True when a call can be placed now.
    bool isDBusInterfaceValid() const;

    /// Why no call can be placed: the text of the warnings and of the error reply.
    QString getInvalidDBusInterfaceMessage() const;

    /// Bus name of the remote object.
    QString getServiceName() const;

    /// Path of the remote object.
    QString getDBusPath() const;

    /// How many calls of this connector were refused because it was not valid. They are lost.
    /// Threads: any.
    quint64 getRefusedCallCount() const
    {
        return m_refusedCallCount.load(std::memory_order_relaxed);
    }

Q_SIGNALS:
    /// A call was refused because the connector is not valid, or a blocking call has failed.
    void dBusConnectionError() const;

protected Q_SLOTS:
    /// Subscribes to the signals of the remote object. Called by this class alone, on the
    /// connector's thread: once by initObject(), and once for each new bus connection. A restart of
    /// the service alone needs nothing.
    virtual void connectServices();

    /// Takes back what connectServices() did.
    virtual void disconnectServices();

protected:
    /// Places a call and hands out the answer that will come.
    /// Failure: null when the connector is not valid, after one warning and dBusConnectionError().
    ///          A failure on the bus arrives in the reply.
    /// Wire:    each argument as the D-Bus type of its value.
    template<typename... Args>
    DBusPendingReply::SharedPointer asyncCallHelper(const QString& method, Args&&... args) const;

    /// Places a call and forgets it.
    /// Failure: an error reply when the connector is not valid, after two equal warnings and
    ///          dBusConnectionError(). What happens to the call on the bus is never known.
    /// Blocks:  never.
    /// Wire:    as above, marked as expecting no reply.
    template<typename... Args>
    DBusReply syncCallNoBlock(const QString& method, Args&&... args) const;

    /// Places a call and waits for the answer, one D-Bus variant that holds a DBusReply.
    /// Failure: an error reply after two equal warnings and dBusConnectionError(), when the
    ///          connector is not valid or the call has failed. An answer of another shape is an
    ///          empty reply.
    /// Blocks:  until the answer is there, at most 25 s. A service that calls back into this thread
    ///          meanwhile waits as long.
    template<typename... Args>
    DBusReply syncCallHelper(const QString& method, Args&&... args) const;

    /// The proxy of the remote object. Never null. Shared with the other connectors of this
    /// process, not owned.
    QDBusAbstractInterface* m_dBusInterface = nullptr;

    /// Hears of a new bus connection. A class that overrides it for events of its own calls this as
    /// well.
    void customEvent(QEvent* event) override;

private:
    void warn(const QString& text, int line, const char* function) const;
    DBusReply refuse(int line, const char* function) const;

    class Private;
    const std::unique_ptr<Private> d;
    mutable std::atomic<quint64> m_refusedCallCount{0};
};

// The templates are compiled into the code of a module. The call site is spelled out, because a
// module's own build may leave it out of its warnings or give this file another name.

inline void DBusConnectorBase::warn(const QString& text, int line, const char* function) const
{
    QMessageLogger("Common/DBusTools/DBusConnectorBase.h", line, function).warning() << text;
}

inline DBusReply DBusConnectorBase::refuse(int line, const char* function) const
{
    m_refusedCallCount.fetch_add(1, std::memory_order_relaxed);
    const QString text = getInvalidDBusInterfaceMessage();
    // Required: the synchronous calls warn twice with the same text, the asynchronous one once.
    warn(text, line, function);
    warn(text, line, function);
    DBusReply reply;
    reply.setError(ErrorContainer::getDefaultErrorCode(), text);
    dBusConnectionError();
    return reply;
}

template<typename... Args>
DBusPendingReply::SharedPointer DBusConnectorBase::asyncCallHelper(const QString& method,
                                                                   Args&&... args) const
{
    if (!isDBusInterfaceValid())
    {
        m_refusedCallCount.fetch_add(1, std::memory_order_relaxed);
        warn(getInvalidDBusInterfaceMessage(), __LINE__, Q_FUNC_INFO);
        dBusConnectionError();
        return {};
    }
    return DBusPendingReply::SharedPointer(
        new DBusPendingReply(m_dBusInterface->asyncCall(method, std::forward<Args>(args)...)));
}

template<typename... Args>
DBusReply DBusConnectorBase::syncCallNoBlock(const QString& method, Args&&... args) const
{
    if (!isDBusInterfaceValid())
    {
        return refuse(__LINE__, Q_FUNC_INFO);
    }
    m_dBusInterface->call(QDBus::NoBlock, method, std::forward<Args>(args)...);
    return {};
}

template<typename... Args>
DBusReply DBusConnectorBase::syncCallHelper(const QString& method, Args&&... args) const
{
    if (!isDBusInterfaceValid())
    {
        return refuse(__LINE__, Q_FUNC_INFO);
    }
    DBusReply reply;
    const QDBusReply<QDBusVariant> answer =
        m_dBusInterface->call(QDBus::AutoDetect, method, std::forward<Args>(args)...);
    if (!answer.isValid())
    {
        const QString text = QStringLiteral("D-Bus call to method ") + method +
                             QStringLiteral(" failed: ") + answer.error().message() +
                             QLatin1Char('!');
        warn(text, __LINE__, Q_FUNC_INFO);
        warn(text, __LINE__, Q_FUNC_INFO);
        reply.setError(ErrorContainer::getDefaultErrorCode(), text);
        dBusConnectionError();
        return reply;
    }
    answer.value().variant().template value<QDBusArgument>() >> reply;
    return reply;
}
