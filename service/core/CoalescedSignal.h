#pragma once

#include <QObject>
#include <QTimer>

namespace eventlistd
{

/// Tells of changes: the first at once, those after it together, at most once in an interval, and
/// always once more behind the last one.
class CoalescedSignal : public QObject
{
    Q_OBJECT
public:
    explicit CoalescedSignal(int intervalMs, QObject* parent = nullptr);

    /// Something has changed.
    void touch();

Q_SIGNALS:
    void changed();

private:
    void onTimeout();

    QTimer m_timer;
    bool m_isPending = false;
};

} // namespace eventlistd
