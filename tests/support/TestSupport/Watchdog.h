#pragma once

#include <QByteArray>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

/// Ends a process that hangs, with a message that says what it was doing: for processes that are not
/// QtTest programs, and for the part of a test that calls what may block for ever. A test function as
/// a whole is watched by QtTest itself.
///
/// Threads: the thread that made it.
class Watchdog
{
public:
    /// Ends the process by abort() when this object still lives after that time.
    /// \param activity  what the process is doing, for the message on the standard error
    explicit Watchdog(std::chrono::milliseconds deadline, const QByteArray& activity);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

private:
    void watch();

    // Fixed at construction.
    const std::chrono::milliseconds m_deadline;
    const QByteArray m_activity;
    // Guarded by the mutex.
    std::mutex m_mutex;
    std::condition_variable m_ended;
    bool m_isOver = false;
    // Last, so that everything else is there when it begins.
    std::thread m_thread;
};
