#pragma once

#include "TestSupport/RecordedEvent.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTest>
#include <QVector>

#include <functional>

/// What a test expects of one event. Only what is said is compared; the rest of the event is free.
/// \code
/// VERIFY_EVENTS(m_service.events(),
///               {EventMatcher::alarmBegins(QStringLiteral("PumpControl/OverTemperature"))
///                    .moduleName(QStringLiteral("PumpControl"))
///                    .text(QStringLiteral("lang_en"), QStringLiteral("Overtemperature at pump 3"))
///                    .argument(QStringLiteral("%2"), QStringLiteral("97.5")),
///                EventMatcher::alarmEnds(QStringLiteral("PumpControl/OverTemperature"))});
/// \endcode
/// Works on events of both roads: RecordingCentralService::events() and SpoolFolder::events().
///
/// Threads: any, one at a time. A plain value.
class EventMatcher
{
public:
    /// Any event, as long as it is one.
    EventMatcher() = default;

    /// An event of this type, state and text url.
    static EventMatcher alarmBegins(const QString& eventId);
    static EventMatcher alarmEnds(const QString& eventId);
    static EventMatcher faultBegins(const QString& eventId);
    static EventMatcher faultEnds(const QString& eventId);
    static EventMatcher auditTrail(const QString& eventId);
    static EventMatcher otherEvent(const QString& eventId);

    /// The numbers of RecordedEvent.
    EventMatcher& type(int type);
    EventMatcher& state(int state);

    /// The field of RecordedEvent that has this name.
    EventMatcher& eventId(const QString& eventId);
    EventMatcher& moduleName(const QString& moduleName);
    EventMatcher& user(const QString& user);
    EventMatcher& icon(const QString& icon);

    /// The alarm id, which the library makes anew for each producer: mostly that of another event.
    EventMatcher& alarmId(const QString& alarmId);

    /// The finished text of one language, as a user reads it.
    EventMatcher& text(const QString& language, const QString& text);

    /// The languages of the finished texts, all of them and no other.
    EventMatcher& languages(const QStringList& languages);

    /// A keyword among others.
    EventMatcher& keyword(const QString& keyword);

    /// All keywords, in their order. The library adds "Firmware" behind those of the module.
    EventMatcher& keywords(const QStringList& keywords);

    /// What fills a placeholder.
    /// \param language  for an argument that is a text, such as a url argument
    EventMatcher& argument(const QString& placeholder, const QString& value,
                           const QString& language = QString());

    /// Whether there are no differences.
    bool matches(const RecordedEvent& event) const;

    /// One line for each field that is not as expected, such as
    /// "state: expected "begins", was "ends"". Empty for an event that matches.
    QStringList differences(const RecordedEvent& event) const;

    /// What is expected, on one line.
    QByteArray toText() const;

private:
    struct Field
    {
        QString name;
        QString expected;
        std::function<QString(const RecordedEvent&)> actual;
        bool canBeMissing;
    };

    static EventMatcher of(int type, int state, const QString& eventId);
    EventMatcher& expect(const QString& name, const QString& expected,
                         std::function<QString(const RecordedEvent&)> actual,
                         bool canBeMissing = false);

    QVector<Field> m_fields;
};

/// Whether these events, all of them and in this order, are what was expected.
/// \returns empty when they are. Otherwise one event a line: "=" for one that is right, "-" for one
///          that is missing, with the differences to the nearest event that nobody expected, and "+"
///          for one that was not expected.
QByteArray compareEvents(const QVector<RecordedEvent>& events,
                         const QVector<EventMatcher>& expected);

/// Fails the test function when the events are not those that are expected, and shows both:
/// VERIFY_EVENTS(m_service.events(), {EventMatcher::..., EventMatcher::...});
/// Not QVERIFY2, which cuts its text off.
#define VERIFY_EVENTS(events, ...)                                                                 \
    do                                                                                             \
    {                                                                                              \
        const QByteArray eventReport = compareEvents((events), __VA_ARGS__);                       \
        if (!eventReport.isEmpty())                                                                \
        {                                                                                          \
            QTest::qFail(eventReport.constData(), __FILE__, __LINE__);                             \
            return;                                                                                \
        }                                                                                          \
    }                                                                                              \
    while (false)
