#pragma once

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace eventlistd
{

/// Turns SIGTERM and SIGINT into a signal of the event loop. One for each process.
class UnixSignals : public QObject
{
    Q_OBJECT
public:
    explicit UnixSignals(QObject* parent = nullptr);
    ~UnixSignals() override;

Q_SIGNALS:
    void endWanted();

private:
    int m_descriptor = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace eventlistd
