#pragma once

#include "TestSupport/ChildProcess.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// The real central service in a process and a folder of its own. It talks to the bus to which
/// DBUS_SYSTEM_BUS_ADDRESS points, that is to the PrivateBus of the test.
///
/// Threads: the thread that made it.
class EventlistdProcess
{
public:
    EventlistdProcess();

    /// Starts the service and waits until it says that it is ready.
    /// \param furtherArguments  are added to those for the database, the spool folder and the texts
    /// Failure: false, and errorText() says why.
    bool start(const QStringList& furtherArguments = QStringList());

    /// Ends the service in good order. False when it had to be killed.
    bool stop();

    /// Ends the service by SIGKILL.
    void kill();

    /// Kills the service and starts it again with the same arguments and the same database.
    bool restart();

    /// Lets the service stand still; thaw() lets it go on.
    bool freeze();
    void thaw();

    /// True also while it is frozen.
    bool isRunning() const;
    /// 0 while it does not run.
    qint64 processId() const;

    /// What went wrong last, for QVERIFY2. Valid until the next call.
    const char* errorText() const;

    /// All that the service has written to its standard error so far.
    QByteArray log();

    /// Where the service keeps its list.
    QString databasePath() const;

    /// The program: $EVENTLISTHANDLER_EVENTLISTD, else the one in $PATH.
    static QString program();

    /// Its texts: $EVENTLISTHANDLER_TEXTS, else those that were installed with the program.
    static QString textFolder();

private:
    const QTemporaryDir m_folder;
    QStringList m_arguments;
    ChildProcess m_process;
    QByteArray m_log;
    QByteArray m_errorText;
};
