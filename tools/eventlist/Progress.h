#pragma once

#include <QElapsedTimer>
#include <QString>

/// Tells a human who waits what is going on: one line on the standard error, from the second second
/// on, that goes when this goes. Without a terminal there it does nothing.
class Progress
{
public:
    /// \param what  "reading the event list"
    explicit Progress(const QString& what);
    ~Progress();
    Q_DISABLE_COPY(Progress)

    /// Called again and again while the work goes on.
    /// \param done  what has been done so far, such as "12000 events"; may be empty
    void tell(const QString& done = QString());

private:
    const QString m_what;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceShown;
};
