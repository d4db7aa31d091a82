#include "Alarmlist/AlarmlistHandler.h"
#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "EventHandlers/AlarmHandler.h"
#include "EventRead/EventHandlerRead.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "EventWrite/EventHandlerWrite.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/SpoolFolder.h"
#include "bus/CentralServiceTest.h"

#include <QDateTime>
#include <QJsonObject>
#include <QSignalSpy>

// These stand in front of the library's own: in this program no connector can be made.

QSharedPointer<EventlistHandlerDBusConnectorRead>
EventlistHandlerDBusConnectorRead::createAndConnect(bool)
{
    return {};
}

QSharedPointer<EventlistHandlerDBusConnectorWrite>
EventlistHandlerDBusConnectorWrite::createAndConnect(bool)
{
    return {};
}

QSharedPointer<AlarmlistHandlerDBusConnectorWrite>
AlarmlistHandlerDBusConnectorWrite::createAndConnect()
{
    return {};
}

using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;

class tst_MissingConnector : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void readerWarnsInItsConstructorAndAtEachQueryInOtherWords();
    void routerLosesTheEventWithOneWarning();
    void routerOnTheFileRoadDoesNotLookForAConnector();
    void acknowledgementDoesNothingAndWritesNoEntry();
};

void tst_MissingConnector::readerWarnsInItsConstructorAndAtEachQueryInOtherWords()
{
    const QString file = QStringLiteral("EventHandlerRead");
    m_warnings.expect(QStringLiteral("Invalid pointer to connector!"), file,
                      QStringLiteral("EventHandlerRead::EventHandlerRead"));
    for (const char* const operation :
         {"getCompleteEventlist", "getListOfEventTypes", "getPartOfEventlistFilteredByStartEndTime",
          "getPartOfEventlistFilteredByStartEndUnixTime", "getPartOfEventlistFilteredById",
          "getPartOfEventlistFilteredByKeywords", "getPartOfEventlistFilteredByModuleName",
          "getPartOfEventlistFilteredByEventType"})
    {
        m_warnings.expect(QStringLiteral("Invalid pointer to connector"), file,
                          QStringLiteral("EventHandlerRead::") + QLatin1String(operation));
    }
    const QString context;
    const QDateTime time;

    EventHandlerRead reader(nullptr);
    QSignalSpy changed(&reader, &EventHandlerRead::changedEventlist);

    QVERIFY(reader.getCompleteEventlist(context).isNull());
    QVERIFY(reader.getListOfEventTypes(context).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByStartEndTime(context, time, time, {}, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByStartEndUnixTime(context, 0, 0, {}, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredById(context, 0, 0, {}, 0, false).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByKeywords(context, {}, time, time, 0).isNull());
    QVERIFY(reader.getPartOfEventlistFilteredByModuleName(context, {}, time, time, 0).isNull());
    QVERIFY(reader
                .getPartOfEventlistFilteredByEventType(
                    context, {EventlistHandlerEnums::EventType::alarm}, time, time, 0)
                .isNull());
    QVERIFY(emitSignal(QStringLiteral("/EventlistRead"), QStringLiteral("Interface.EventlistRead"),
                       QStringLiteral("changedEventlist")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(changed.size(), 0);
    QCOMPARE(m_service.received().size(), 0);
}

void tst_MissingConnector::routerLosesTheEventWithOneWarning()
{
    SpoolFolder spool;
    FakeTextManager texts(FakeTextManager::pumpTexts());
    AlarmHandler alarm(QStringLiteral("PumpControl"), texts,
                       QStringLiteral("PumpControl/PumpName3"), QStringList());
    m_warnings.expect(QStringLiteral("Invalid pointer to connector!"),
                      QStringLiteral("EventHandlerWrite"),
                      QStringLiteral("EventHandlerWrite::logEvent"));
    alarm.changeState(true, Arguments());
    // The state has moved all the same.
    alarm.changeState(true, Arguments());
    QVERIFY(spool.entries().isEmpty());
    QCOMPARE(m_service.received().size(), 0);
}

void tst_MissingConnector::routerOnTheFileRoadDoesNotLookForAConnector()
{
    SpoolFolder spool;
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QStringLiteral("pump"));
    router.logEvent(EventlistHandlerEnums::EventType::alarm, EventlistHandlerEnums::State::active,
                    QString(), QStringList(), QVariantMap(), QString(), QString(), QJsonObject(),
                    QString(), QString(), EventlistHandlerEnums::noSourceHash);
    QCOMPARE(spool.entries(), QStringList{QStringLiteral("pump.event.json")});
}

void tst_MissingConnector::acknowledgementDoesNothingAndWritesNoEntry()
{
    FakeTextManager texts;
    AlarmlistHandler handler(QStringLiteral("Panel"), texts, nullptr);
    m_warnings.expect(QStringLiteral("Invalid pointer to alarm list write dbus connector!"),
                      QStringLiteral("AlarmlistHandler"),
                      QStringLiteral("AlarmlistHandler::acknowledgeAlarms"));
    handler.acknowledgeAlarms(QStringList{QStringLiteral("{a}")}, QStringLiteral("anna"),
                              QString());
    // The entry's own producer has no connector either: it would have warned in other words.
    QCOMPARE(m_service.received().size(), 0);
}

QTEST_GUILESS_MAIN(tst_MissingConnector)
#include "tst_MissingConnector.moc"
