#include "TestSupport/RecordingCentralService.h"

#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/EventHandler.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/WarningRecorder.h"

#include "Platform/DBusConnection.h"

#include <QDBusMessage>

class tst_RecordingCentralService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void showsTheEventsOfAModule();
    void showsThatNothingWasLogged();
    void leavesOtherCallsOut();
    void handsEventsOutOnce();
    void waitsForAnEventOfAnotherProcess();
    void showsWhatCameInsteadOfTheAwaitedEvent();

private:
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    WarningRecorder m_warnings;
    PrivateBus m_bus;
    RecordingCentralService m_service{m_bus};
};

void tst_RecordingCentralService::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
}

void tst_RecordingCentralService::init()
{
    m_warnings.start();
    QVERIFY2(m_service.reset(), m_service.errorText());
}

void tst_RecordingCentralService::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_RecordingCentralService::showsTheEventsOfAModule()
{
    AlarmHandler alarm(QStringLiteral("PumpControl"), m_texts,
                       QStringLiteral("PumpControl/OverTemperature"), {QStringLiteral("Error")});
    const QList<EventlistHandlerStructs::stDescriptionArgument> pump = {
        {QStringLiteral("%1"), QStringLiteral("PumpControl/PumpName3")}};

    alarm.changeState(true, m_texts, pump, {{QStringLiteral("%2"), QStringLiteral("97.5")}});
    alarm.changeState(false, m_texts, pump, {{QStringLiteral("%2"), QStringLiteral("40")}});

    const QVector<RecordedEvent> events = m_service.events();
    VERIFY_EVENTS(events, {EventMatcher::alarmBegins(QStringLiteral("PumpControl/OverTemperature"))
                               .moduleName(QStringLiteral("PumpControl"))
                               .text(QStringLiteral("lang_de"),
                                     QStringLiteral("Übertemperatur an Pumpe 3, Wert 97.5"))
                               .languages({QStringLiteral("lang_de"), QStringLiteral("lang_en")})
                               .argument(QStringLiteral("%1"), QStringLiteral("pump 3"),
                                         QStringLiteral("lang_en"))
                               .argument(QStringLiteral("%2"), QStringLiteral("97.5"))
                               .keywords({QStringLiteral("Error"), QStringLiteral("Firmware")}),
                           EventMatcher::alarmEnds(QStringLiteral("PumpControl/OverTemperature"))
                               .argument(QStringLiteral("%2"), QStringLiteral("40"))
                               .alarmId(events.value(0).alarmId)});
}

void tst_RecordingCentralService::showsThatNothingWasLogged()
{
    AlarmHandler alarm(QStringLiteral("PumpControl"), m_texts,
                       QStringLiteral("PumpControl/OverTemperature"), {});

    alarm.changeState(false, {});

    VERIFY_EVENTS(m_service.events(), {});
}

void tst_RecordingCentralService::leavesOtherCallsOut()
{
    const QDBusMessage call = QDBusMessage::createMethodCall(
        m_service.busName(), QStringLiteral("/EventlistWrite"),
        QStringLiteral("Interface.EventlistWrite"), QStringLiteral("deleteEventlist"));
    QVERIFY(DBusConnection::getQDBusConnection().send(call));

    VERIFY_EVENTS(m_service.events(), {});
    QCOMPARE(m_service.received().size(), 1);
}

void tst_RecordingCentralService::handsEventsOutOnce()
{
    EventHandler events(QStringLiteral("PumpControl"), m_texts,
                        QStringLiteral("PumpControl/PumpName3"), {});
    events.logEvent({});

    QCOMPARE(m_service.takeEvents().size(), 1);
    VERIFY_EVENTS(m_service.takeEvents(), {});
}

void tst_RecordingCentralService::waitsForAnEventOfAnotherProcess()
{
    EventHandler events(QStringLiteral("PumpControl"), m_texts,
                        QStringLiteral("PumpControl/PumpName3"), {});
    events.logEvent({});

    QVERIFY2(
        m_service.waitForEvent(EventMatcher::otherEvent(QStringLiteral("PumpControl/PumpName3"))),
        m_service.errorText());
    QCOMPARE(m_service.eventsSoFar().size(), 1);
}

void tst_RecordingCentralService::showsWhatCameInsteadOfTheAwaitedEvent()
{
    EventHandler events(QStringLiteral("PumpControl"), m_texts,
                        QStringLiteral("PumpControl/PumpName3"), {});
    events.logEvent({});
    QCOMPARE(m_service.events().size(), 1);

    const bool hasCome =
        m_service.waitForEvent(EventMatcher::faultEnds(QStringLiteral("PumpControl/PumpName3")),
                               std::chrono::milliseconds(1));

    QVERIFY(!hasCome);
    QCOMPARE(QByteArray(m_service.errorText()),
             QByteArray("Events: = as expected, - missing, + not expected\n"
                        "  - type \"fault\", state \"ends\", event id \"PumpControl/PumpName3\"\n"
                        "        type: expected \"fault\", was \"other event\"\n"
                        "        state: expected \"ends\", was \"neutral\"\n"
                        "  + other event neutral: PumpControl/PumpName3 \"pump 3\" (module "
                        "PumpControl, keywords Firmware, user \"\", alarm id \"\")"));
}

QTEST_GUILESS_MAIN(tst_RecordingCentralService)
#include "tst_RecordingCentralService.moc"
