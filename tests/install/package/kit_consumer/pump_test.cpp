#include "EventHandlers/AlarmHandler.h"
#include "TestSupport/EventlistdProcess.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/GoogleTestMatchers.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/RecordingCentralService.h"

#include <QCoreApplication>

namespace
{
const QString hot = QStringLiteral("PumpControl/OverTemperature");

// One bus for the whole process, because its address is read once.
PrivateBus& bus()
{
    static PrivateBus instance;
    return instance;
}
} // namespace

TEST(Pump, RaisesItsAlarmOnce)
{
    RecordingCentralService service(bus());
    ASSERT_TRUE(service.start()) << service.errorText();
    const FakeTextManager texts(FakeTextManager::pumpTexts());
    AlarmHandler alarm(QStringLiteral("pump"), texts, hot, {});

    alarm.changeState(true, {});
    alarm.changeState(true, {});
    alarm.changeState(false, {});

    const QVector<RecordedEvent> events = service.events();
    EXPECT_THAT(events, testing::ElementsAre(isEvent(EventMatcher::alarmBegins(hot)),
                                             isEvent(EventMatcher::alarmEnds(hot))));
    ASSERT_EQ(events.size(), 2);

    // A failure is readable, too.
    testing::StringMatchResultListener listener;
    EXPECT_FALSE(testing::ExplainMatchResult(isEvent(EventMatcher::faultEnds(hot)), events.first(),
                                             &listener));
    EXPECT_EQ(listener.str(),
              "type: expected \"fault\", was \"alarm\"; state: expected \"ends\", was \"begins\"");
    EXPECT_EQ(testing::PrintToString(events.first()).substr(0, 12), "alarm begins");
}

TEST(Pump, WorksBesideTheServiceItself)
{
    EventlistdProcess service;
    ASSERT_TRUE(service.start()) << service.errorText();
    EXPECT_TRUE(bus().hasOwner(ForeignService::centralServiceName()));
}

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    if (!bus().start())
    {
        qFatal("%s", bus().errorText());
    }
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
