#pragma once

#include "TestSupport/EventMatcher.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/RecordedEvent.h"
#include "TestSupport/Waiting.h"

#include <QVector>

#include <chrono>

/// A central service that takes events and keeps no list: for tests of what a module reports. It is
/// a process of its own, so a module that blocks, hangs or crashes does not take it along.
/// \code
/// PrivateBus m_bus;
/// RecordingCentralService m_service{m_bus};
///
/// void tst_Pump::initTestCase()
/// {
///     QVERIFY2(m_bus.start(), m_bus.errorText());
///     QVERIFY2(m_service.start(), m_service.errorText());
/// }
/// \endcode
/// It answers every call with an empty reply until a rule of ForeignService says otherwise. Where
/// the lists themselves matter, an EventlistdProcess is the service.
///
/// Threads: the thread that made it. Its operations block until the service has answered.
class RecordingCentralService : public ForeignService
{
public:
    /// Starts nothing yet. The bus must outlive the service.
    explicit RecordingCentralService(const PrivateBus& bus);

    /// The events that have arrived, in order, after all that this process has sent.
    /// A further call to the service, such as an acknowledgement, is no event and left out: received()
    /// has all messages.
    QVector<RecordedEvent> events();

    /// Hands out the events and forgets them, with all other records: for the next step of a test.
    /// Unlike clear() it waits for what this process has sent.
    QVector<RecordedEvent> takeEvents();

    /// What has arrived until now, for events of another process.
    QVector<RecordedEvent> eventsSoFar();

    /// Waits until an event is there that matches: for events of another process.
    /// Failure: false when the deadline has passed, and errorText() shows what came instead.
    bool waitForEvent(const EventMatcher& matcher,
                      std::chrono::milliseconds deadline = defaultDeadline);

    /// What went wrong last, for QVERIFY2 and QFail. Valid until the next call.
    const char* errorText() const;

private:
    QByteArray m_report;
};
