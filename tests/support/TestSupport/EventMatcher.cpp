#include "TestSupport/EventMatcher.h"

#include "TestSupport/Alignment.h"

#include <utility>

EventMatcher EventMatcher::of(int type, int state, const QString& eventId)
{
    EventMatcher matcher;
    matcher.type(type).state(state).eventId(eventId);
    return matcher;
}

EventMatcher EventMatcher::alarmBegins(const QString& eventId)
{
    return of(0, 1, eventId);
}

EventMatcher EventMatcher::alarmEnds(const QString& eventId)
{
    return of(0, 2, eventId);
}

EventMatcher EventMatcher::faultBegins(const QString& eventId)
{
    return of(2, 1, eventId);
}

EventMatcher EventMatcher::faultEnds(const QString& eventId)
{
    return of(2, 2, eventId);
}

EventMatcher EventMatcher::auditTrail(const QString& eventId)
{
    return of(1, 0, eventId);
}

EventMatcher EventMatcher::otherEvent(const QString& eventId)
{
    return of(3, 0, eventId);
}

EventMatcher& EventMatcher::expect(const QString& name, const QString& expected,
                                   std::function<QString(const RecordedEvent&)> actual,
                                   bool canBeMissing)
{
    m_fields.append({name, expected, std::move(actual), canBeMissing});
    return *this;
}

EventMatcher& EventMatcher::type(int type)
{
    return expect(QStringLiteral("type"), RecordedEvent::typeName(type),
                  [](const RecordedEvent& event) { return RecordedEvent::typeName(event.type); });
}

EventMatcher& EventMatcher::state(int state)
{
    return expect(QStringLiteral("state"), RecordedEvent::stateName(state),
                  [](const RecordedEvent& event) { return RecordedEvent::stateName(event.state); });
}

EventMatcher& EventMatcher::eventId(const QString& eventId)
{
    return expect(QStringLiteral("event id"), eventId,
                  [](const RecordedEvent& event) { return event.eventId; });
}

EventMatcher& EventMatcher::moduleName(const QString& moduleName)
{
    return expect(QStringLiteral("module"), moduleName,
                  [](const RecordedEvent& event) { return event.moduleName; });
}

EventMatcher& EventMatcher::user(const QString& user)
{
    return expect(QStringLiteral("user"), user,
                  [](const RecordedEvent& event) { return event.user; });
}

EventMatcher& EventMatcher::icon(const QString& icon)
{
    return expect(QStringLiteral("icon"), icon,
                  [](const RecordedEvent& event) { return event.icon; });
}

EventMatcher& EventMatcher::alarmId(const QString& alarmId)
{
    return expect(QStringLiteral("alarm id"), alarmId,
                  [](const RecordedEvent& event) { return event.alarmId; });
}

EventMatcher& EventMatcher::text(const QString& language, const QString& text)
{
    return expect(
        QLatin1String("text in ") + language, text,
        [language](const RecordedEvent& event) { return event.text(language); }, true);
}

EventMatcher& EventMatcher::languages(const QStringList& languages)
{
    QStringList sorted = languages;
    sorted.sort();
    return expect(QStringLiteral("languages"), sorted.join(QLatin1Char(' ')),
                  [](const RecordedEvent& event) { // keys of a JSON object are sorted
                      return event.texts.keys().join(QLatin1Char(' '));
                  });
}

EventMatcher& EventMatcher::keyword(const QString& keyword)
{
    return expect(QStringLiteral("keyword"), keyword, [keyword](const RecordedEvent& event) {
        return event.keywords.contains(keyword) ? keyword : event.keywords.join(QLatin1Char(';'));
    });
}

EventMatcher& EventMatcher::keywords(const QStringList& keywords)
{
    return expect(QStringLiteral("keywords"), keywords.join(QLatin1Char(';')),
                  [](const RecordedEvent& event) { return event.keywords.join(QLatin1Char(';')); });
}

EventMatcher& EventMatcher::argument(const QString& placeholder, const QString& value,
                                     const QString& language)
{
    const QString place =
        language.isEmpty() ? placeholder : QString(placeholder + QLatin1String(" in ") + language);
    return expect(
        QLatin1String("argument ") + place, value,
        [placeholder, language](const RecordedEvent& event) {
            return event.argument(placeholder, language);
        },
        true);
}

bool EventMatcher::matches(const RecordedEvent& event) const
{
    return differences(event).isEmpty();
}

QStringList EventMatcher::differences(const RecordedEvent& event) const
{
    if (!event.problem.isEmpty())
    {
        return {event.problem};
    }
    QStringList result;
    for (const Field& field : m_fields)
    {
        const QString actual = field.actual(event);
        // What is missing is not what is empty: of texts and arguments, null tells it.
        if (actual.isNull() && field.canBeMissing)
        {
            result.append(field.name + QLatin1String(": expected \"") + field.expected +
                          QLatin1String("\", was missing"));
        }
        else if (actual != field.expected)
        {
            result.append(field.name + QLatin1String(": expected \"") + field.expected +
                          QLatin1String("\", was \"") + actual + QLatin1Char('"'));
        }
    }
    return result;
}

QByteArray EventMatcher::toText() const
{
    QStringList parts;
    for (const Field& field : m_fields)
    {
        parts.append(field.name + QLatin1String(" \"") + field.expected + QLatin1Char('"'));
    }
    return parts.isEmpty() ? QByteArrayLiteral("any event")
                           : parts.join(QLatin1String(", ")).toUtf8();
}

namespace
{
// To the event that nobody expected and that comes nearest. Empty when all were expected.
QStringList nearestDifferences(const EventMatcher& matcher, const QVector<RecordedEvent>& events,
                               const QVector<int>& further)
{
    QStringList nearest;
    for (const int index : further)
    {
        const QStringList differences = matcher.differences(events.at(index));
        if (nearest.isEmpty() || differences.size() < nearest.size())
        {
            nearest = differences;
        }
    }
    return nearest;
}
} // namespace

QByteArray compareEvents(const QVector<RecordedEvent>& events,
                         const QVector<EventMatcher>& expected)
{
    QVector<int> further;
    bool isRight = true;
    const auto matches = [&](int i, int j) { return expected.at(i).matches(events.at(j)); };
    align(
        expected.size(), events.size(), matches, [](int, int) {}, [&](int) { isRight = false; },
        [&](int j) {
            further.append(j);
            isRight = false;
        });
    if (isRight)
    {
        return QByteArray();
    }
    QByteArray text = "Events: = as expected, - missing, + not expected";
    align(
        expected.size(), events.size(), matches,
        [&](int, int j) { text += "\n  = " + events.at(j).toText(); },
        [&](int i) {
            text += "\n  - " + expected.at(i).toText();
            for (const QString& line : nearestDifferences(expected.at(i), events, further))
            {
                text += "\n        " + line.toUtf8();
            }
        },
        [&](int j) { text += "\n  + " + events.at(j).toText(); });
    return text;
}
