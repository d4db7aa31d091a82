#pragma once

#include "TestSupport/Waiting.h"

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <chrono>

/// A process that a test starts, disturbs and ends. It never outlives the test: it is killed by the
/// destructor, and by the kernel when the test itself dies.
///
/// Threads: the thread that made it, which has to live as long as the process: the kernel ends the
///          process together with that thread.
class ChildProcess : public QProcess
{
    Q_OBJECT
public:
    /// Starts nothing yet.
    explicit ChildProcess(QObject* parent = nullptr);
    ~ChildProcess() override;

    /// Starts the program and waits until it runs.
    /// Failure: false, and errorString() says why.
    bool startAndWait(const QString& program, const QStringList& arguments);

    /// True also while it is frozen.
    bool isRunning() const;

    /// The next line of the standard output, or of the standard error, without its line end.
    /// Failure: null when the process has ended or the deadline has passed before a line was whole.
    QByteArray readOutputLine(std::chrono::milliseconds deadline = defaultDeadline);
    QByteArray readErrorLine(std::chrono::milliseconds deadline = defaultDeadline);

    /// Ends the process by SIGTERM and waits for its end; what does not end in time is killed.
    /// \returns false when it had to be killed.
    bool stop(std::chrono::milliseconds deadline = defaultDeadline);

    /// Ends the process by SIGKILL, which it cannot notice, and waits for its end.
    void killHard();

    /// Stops the process where it stands (SIGSTOP) and waits until it stands still.
    bool freeze();

    /// Lets a frozen process go on.
    void thaw();

protected:
    /// Binds the life of the child to that of this process.
    void setupChildProcess() override;

private:
    QByteArray readLineOf(ProcessChannel channel, std::chrono::milliseconds deadline);

    const qint64 m_parentId;
};
