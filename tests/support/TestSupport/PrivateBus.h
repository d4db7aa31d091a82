#pragma once

#include "TestSupport/ChildProcess.h"

#include <QDBusConnection>
#include <QString>
#include <QTemporaryDir>

/// A bus daemon of this test process alone, in a folder of its own. It takes the place of the system
/// bus for this process and for all processes that it starts; the bus of the machine is never
/// touched.
///
/// It must be made before the first use of D-Bus in the process, because the address of the system
/// bus is read once: best as a field of the test class. The address is there from the beginning, the
/// daemon from start() on.
/// \code
/// class tst_Pump : public QObject { ...
///     PrivateBus m_bus;
/// void tst_Pump::initTestCase() { QVERIFY2(m_bus.start(), m_bus.errorText()); }
/// \endcode
/// Threads: the thread that made it.
class PrivateBus
{
public:
    /// How much the daemon takes from one client.
    enum class Limits
    {
        /// As a system bus: 512 match rules and 32 MiB for a message, for example.
        system,
        /// As much as the machine gives.
        none
    };

    /// What a bus can be made with.
    struct Options
    {
        Limits limits = Limits::system; ///< those of a system bus, unless a test is about more
        /// Elements for the daemon's configuration that say who may do what, such as
        /// "<policy context=\"default\">...</policy>" or "<include>/path/to.conf</include>". They come
        /// on top of what a system bus allows by itself, which is neither to own a name nor to call a
        /// service. Empty allows everything.
        QString policy;
        /// Folder with activation files ("*.service"). Empty for none.
        QString activationFolder;
    };

    /// Sets the address; start() starts the daemon.
    PrivateBus();
    explicit PrivateBus(const Options& options);
    ~PrivateBus();
    Q_DISABLE_COPY(PrivateBus)

    /// Starts the daemon and waits until it has taken a connection.
    /// Failure: false, and errorText() says why. A bus that runs already is no failure.
    bool start();

    /// Ends the daemon in good order, so that its clients are disconnected.
    void stop();

    /// Ends the daemon by SIGKILL. A client learns it from its broken connection.
    void kill();

    /// Kills the daemon and starts a new one at the same address. Names and subscriptions are gone.
    bool restart();

    /// Lets the daemon stand still, as on a congested machine; thaw() lets it go on.
    bool freeze();
    void thaw();

    /// True also while it is frozen.
    bool isRunning() const;
    /// 0 while it does not run.
    qint64 processId() const;

    /// What went wrong last, for QVERIFY2. Valid until the next call.
    const char* errorText() const;

    /// The address that clients use. It stays the same over every restart.
    QString address() const;

    /// Folder of this bus, which is removed with it. Other users may read it.
    QString folder() const;

    /// A further connection to this bus, for a second party in the same process. The caller hands
    /// its name to QDBusConnection::disconnectFromBus() in the end.
    QDBusConnection connect(const QString& connectionName) const;

    /// Whether somebody owns this bus name now.
    /// Blocks: for one answer of the daemon.
    bool hasOwner(const QString& busName) const;

private:
    bool writeConfiguration();
    bool waitUntilReady();

    const Options m_options;
    const QTemporaryDir m_folder;
    const QByteArray m_addressBefore;
    const bool m_wasAddressSet;
    ChildProcess m_daemon;
    mutable QByteArray m_errorText;
};
