#pragma once

#include "TestSupport/EventMatcher.h"

#include <ostream>
#include <string>

/// The matchers of this kit for those who test with GoogleTest instead of QtTest. Header only: it
/// is the one header of the kit that needs gmock, and only where it is included.
/// \code
/// EXPECT_THAT(service.events(), ElementsAre(isEvent(EventMatcher::alarmBegins(url)),
///                                           isEvent(EventMatcher::alarmEnds(url))));
/// \endcode
#include <gmock/gmock.h>

/// An EventMatcher in the form that GoogleTest asks for.
class GoogleTestEventMatcher
{
public:
    /// Tells GoogleTest what this is.
    using is_gtest_matcher = void;

    /// Keeps a copy.
    explicit GoogleTestEventMatcher(const EventMatcher& matcher) : m_matcher(matcher) {}

    /// What GoogleTest calls; a test does not.
    bool MatchAndExplain(const RecordedEvent& event, testing::MatchResultListener* listener) const
    {
        const QStringList differences = m_matcher.differences(event);
        *listener << differences.join(QLatin1String("; ")).toStdString();
        return differences.isEmpty();
    }

    /// Likewise.
    void DescribeTo(std::ostream* stream) const
    {
        *stream << "is an event with " << m_matcher.toText().toStdString();
    }

    /// Likewise.
    void DescribeNegationTo(std::ostream* stream) const
    {
        *stream << "is no event with " << m_matcher.toText().toStdString();
    }

private:
    const EventMatcher m_matcher;
};

inline testing::Matcher<const RecordedEvent&> isEvent(const EventMatcher& matcher)
{
    return GoogleTestEventMatcher(matcher);
}

/// How GoogleTest shows an event.
inline void PrintTo(const RecordedEvent& event, std::ostream* stream)
{
    *stream << event.toText().toStdString();
}
