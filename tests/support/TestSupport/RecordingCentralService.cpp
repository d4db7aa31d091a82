#include "TestSupport/RecordingCentralService.h"

#include <algorithm>

namespace
{
QVector<RecordedEvent> eventsAmong(const QVector<RecordedMessage>& messages)
{
    QVector<RecordedEvent> events;
    for (const RecordedMessage& message : messages)
    {
        if (message.kind == QLatin1String("call") && message.member == QLatin1String("logEvent"))
        {
            events.append(RecordedEvent::fromCall(message));
        }
    }
    return events;
}
} // namespace

RecordingCentralService::RecordingCentralService(const PrivateBus& bus)
    : ForeignService(bus, centralServiceName())
{
}

QVector<RecordedEvent> RecordingCentralService::events()
{
    return eventsAmong(received());
}

QVector<RecordedEvent> RecordingCentralService::takeEvents()
{
    const QVector<RecordedEvent> result = events();
    clear();
    return result;
}

QVector<RecordedEvent> RecordingCentralService::eventsSoFar()
{
    return eventsAmong(receivedSoFar());
}

bool RecordingCentralService::waitForEvent(const EventMatcher& matcher,
                                           std::chrono::milliseconds deadline)
{
    QVector<RecordedEvent> events;
    const auto hasCome = [&] {
        events = eventsSoFar();
        return std::any_of(events.cbegin(), events.cend(),
                           [&](const RecordedEvent& event) { return matcher.matches(event); });
    };
    if (waitUntil(hasCome, deadline))
    {
        m_report.clear();
        return true;
    }
    m_report = compareEvents(events, {matcher});
    return false;
}

const char* RecordingCentralService::errorText() const
{
    return m_report.isEmpty() ? ForeignService::errorText() : m_report.constData();
}
