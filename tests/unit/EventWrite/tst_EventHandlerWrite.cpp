#include "EventWrite/EventHandlerWrite.h"

#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include <QFileInfo>
#include <QTest>

#include <memory>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;

PRIVATE_MEMBER(fileCount, int*, &EventlistHandlerEventToFile::sm_EventFileNameCnt)
PRIVATE_MEMBER(connectorOf, QSharedPointer<EventlistHandlerDBusConnectorWrite> EventHandlerWrite::*,
               &EventHandlerWrite::m_connector)
PRIVATE_MEMBER(isToFile, bool EventHandlerWrite::*, &EventHandlerWrite::m_bEventToFile)
PRIVATE_MEMBER(fileNameOf, QString EventHandlerWrite::*, &EventHandlerWrite::m_eventToFileName)

namespace
{

QString numbered(int number)
{
    return QLatin1String("logEvent") + QString::number(number) + QLatin1String(".event.json");
}

void logPump(EventHandlerWrite& router, const QVariantMap& texts = QVariantMap())
{
    router.logEvent(EventType::fault, State::active, QStringLiteral("an icon"),
                    {QStringLiteral("Error"), QStringLiteral("Firmware")}, texts,
                    QStringLiteral("a user"), QStringLiteral("an event id"),
                    QJsonObject{{QStringLiteral("meta"), QStringLiteral("data")}},
                    QStringLiteral("an alarm"), QStringLiteral("hashes"), SourceHashType(5));
}

} // namespace

class tst_EventHandlerWrite : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        m_warnings.start();
        *fileCount() = 0;
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void hasNoOperationsForOthersToCallByName();
    void beginsOnTheBusRoad();
    void passesItsParentOn();
    void losesAnEventThatTheBusCannotTake();
    void losesAnEventWithoutAConnector();
    void neverLooksAtTheConnectorOnTheFileRoad_data();
    void neverLooksAtTheConnectorOnTheFileRoad();
    void putsEachFieldIntoItsPlace();
    void writesTheTextsAsJsonTextInsideTheJson_data();
    void writesTheTextsAsJsonTextInsideTheJson();
    void turnsToNumberedFilesForAnEmptyNameAndNeverBack();
    void changesOnlyTheNameWhenItIsToldAgain();
    void leavesOtherRoutersOnTheirRoad();
    void writesNothingWhenItIsDestroyed();
    void makesTheSpoolFolderAlsoForTheBusRoad();

private:
    SpoolFolder m_spool;
    WarningRecorder m_warnings;
};

void tst_EventHandlerWrite::hasNoOperationsForOthersToCallByName()
{
    const QMetaObject& metaObject = EventHandlerWrite::staticMetaObject;

    QCOMPARE(metaObject.className(), "EventHandlerWrite");
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(metaObject.propertyCount(), metaObject.propertyOffset());
}

void tst_EventHandlerWrite::beginsOnTheBusRoad()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);

    QVERIFY(!(router.*isToFile()));
    QVERIFY((router.*fileNameOf()).isNull());
    QVERIFY(!(router.*connectorOf()).isNull());
}

void tst_EventHandlerWrite::passesItsParentOn()
{
    QObject parent;
    const auto* const router = new EventHandlerWrite(QStringLiteral("PumpControl"), &parent);

    QCOMPARE(router->parent(), &parent);
}

void tst_EventHandlerWrite::losesAnEventThatTheBusCannotTake()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    expectRefusedCall(m_warnings, *(router.*connectorOf()));

    logPump(router);

    QVERIFY(m_spool.entries().isEmpty());
    QVERIFY(!(router.*isToFile()));
}

void tst_EventHandlerWrite::losesAnEventWithoutAConnector()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    (router.*connectorOf()).reset();
    m_warnings.expect(QStringLiteral("Invalid pointer to connector!"),
                      QStringLiteral("EventHandlerWrite"),
                      QStringLiteral("EventHandlerWrite::logEvent"));

    logPump(router);

    QVERIFY(m_spool.entries().isEmpty());
    QVERIFY(!(router.*isToFile()));
}

void tst_EventHandlerWrite::neverLooksAtTheConnectorOnTheFileRoad_data()
{
    QTest::addColumn<bool>("hasConnector");

    QTest::newRow("one without a bus") << true;
    QTest::newRow("none at all") << false;
}

void tst_EventHandlerWrite::neverLooksAtTheConnectorOnTheFileRoad()
{
    QFETCH(bool, hasConnector);
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    if (!hasConnector)
    {
        (router.*connectorOf()).reset();
    }

    router.setEventToFile(QString());
    logPump(router);

    QCOMPARE(m_spool.entries(), QStringList(numbered(0)));
}

void tst_EventHandlerWrite::putsEachFieldIntoItsPlace()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QString());

    logPump(router, {{QStringLiteral("lang_en"), QStringLiteral("Door open")}});

    QCOMPARE(eventWithoutTime(m_spool, numbered(0)),
             QByteArray(R"({"AlarmID":"an alarm","Description":"{\"lang_en\":\"Door open\"}",)"
                        R"("EventId":"an event id","EventType":2,"IconType":"an icon",)"
                        R"("KeywordName":"Error;Firmware","MetaData":{"meta":"data"},)"
                        R"("ModuleName":"PumpControl","SourceHashType":5,)"
                        R"("SourceHashes":"hashes","State":1,"User":"a user"})"));
}

void tst_EventHandlerWrite::writesTheTextsAsJsonTextInsideTheJson_data()
{
    QTest::addColumn<QVariantMap>("texts");
    QTest::addColumn<QString>("description");

    QTest::newRow("none") << QVariantMap() << QStringLiteral("{}");
    QTest::newRow("sorted, not ASCII")
        << QVariantMap{{QStringLiteral("lang_en"), QStringLiteral("pump \"3\"")},
                       {QStringLiteral("lang_de"), QStringLiteral("Übertemperatur")}}
        << QStringLiteral(R"({"lang_de":"Übertemperatur","lang_en":"pump \"3\""})");
}

void tst_EventHandlerWrite::writesTheTextsAsJsonTextInsideTheJson()
{
    QFETCH(QVariantMap, texts);
    QFETCH(QString, description);
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QString());

    logPump(router, texts);

    QCOMPARE(m_spool.read(numbered(0)).value(QStringLiteral("Description")),
             QJsonValue(description));
}

void tst_EventHandlerWrite::turnsToNumberedFilesForAnEmptyNameAndNeverBack()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);

    router.setEventToFile(QStringLiteral("bootlog"));
    router.setEventToFile(QString());
    logPump(router);
    logPump(router);

    QCOMPARE(m_spool.entries(), QStringList({numbered(0), numbered(1)}));
}

void tst_EventHandlerWrite::changesOnlyTheNameWhenItIsToldAgain()
{
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);

    router.setEventToFile(QStringLiteral("first"));
    logPump(router);
    router.setEventToFile(QStringLiteral("second"));
    logPump(router);

    QCOMPARE(m_spool.entries(), QStringList({QStringLiteral("first.event.json"),
                                             QStringLiteral("second.event.json")}));
    QCOMPARE(*fileCount(), 0);
}

void tst_EventHandlerWrite::leavesOtherRoutersOnTheirRoad()
{
    EventHandlerWrite onFileRoad(QStringLiteral("PumpControl"), nullptr);
    EventHandlerWrite onBusRoad(QStringLiteral("PumpControl"), nullptr);
    onFileRoad.setEventToFile(QString());
    expectRefusedCall(m_warnings, *(onBusRoad.*connectorOf()));

    logPump(onBusRoad);
    logPump(onFileRoad);

    QCOMPARE(m_spool.entries(), QStringList(numbered(0)));
}

void tst_EventHandlerWrite::writesNothingWhenItIsDestroyed()
{
    auto router = std::make_unique<EventHandlerWrite>(QStringLiteral("PumpControl"), nullptr);
    router->setEventToFile(QString());
    logPump(*router);
    const QByteArray before = m_spool.readBytes(numbered(0));

    router.reset();

    QCOMPARE(m_spool.entries(), QStringList(numbered(0)));
    QCOMPARE(m_spool.readBytes(numbered(0)), before);
}

void tst_EventHandlerWrite::makesTheSpoolFolderAlsoForTheBusRoad()
{
    m_spool.remove();

    const EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);

    QVERIFY(QFileInfo(m_spool.path()).isDir());
}

QTEST_GUILESS_MAIN(tst_EventHandlerWrite)
#include "tst_EventHandlerWrite.moc"
