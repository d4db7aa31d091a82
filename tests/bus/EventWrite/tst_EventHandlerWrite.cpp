#include "EventWrite/EventHandlerWrite.h"

#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "TestSupport/SpoolFolder.h"
#include "bus/CentralServiceTest.h"

#include <QJsonObject>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;

namespace
{
void logPlainEvent(EventHandlerWrite& router, const QString& user)
{
    router.logEvent(EventType::fault, State::active, QStringLiteral("Icon"),
                    QStringList{QStringLiteral("Error"), QStringLiteral("Firmware")},
                    QVariantMap{{QStringLiteral("lang_de"), QStringLiteral("Öl fehlt")},
                                {QStringLiteral("lang_en"), QStringLiteral("Oil is missing")}},
                    user, QStringLiteral("PumpControl/Oil"),
                    QJsonObject{{QStringLiteral("Arguments"), QJsonObject()}},
                    QStringLiteral("the alarm"), QStringLiteral("00ff"), SourceHashType(3));
}
} // namespace

class tst_EventHandlerWrite : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void takesTheBusRoadFromTheBeginning();
    void sendsNothingOnceItWritesFiles();
    void writesNoFileWhenTheServiceIsNotThere();
    void writesFilesWithoutAnyWarningWhenTheServiceIsNotThere();
    void leavesOtherRoutersOnTheBusRoad();
};

void tst_EventHandlerWrite::takesTheBusRoadFromTheBeginning()
{
    SpoolFolder spool;
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);

    logPlainEvent(router, QStringLiteral("anna"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].member, QStringLiteral("logEvent"));
    QCOMPARE(received[0].signature, QStringLiteral("assssassss"));
    QJsonArray arguments = received[0].arguments;
    QVERIFY(!arguments[1].toString().isEmpty());
    arguments[1] = QStringLiteral("time");
    QCOMPARE(
        arguments,
        (QJsonArray{
            QJsonArray{QStringLiteral("2"), QStringLiteral("1"), QStringLiteral("Icon")},
            QStringLiteral("time"), QStringLiteral("PumpControl"),
            json("{'lang_de':'Öl fehlt','lang_en':'Oil is missing'}"),
            QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}, QStringLiteral("anna"),
            json(
                "{'EventId':'PumpControl/"
                "Oil','MetaData':'{\\'Arguments\\':{}}','SourceHashType':3,'SourceHashes':'00ff'}"),
            QStringLiteral("the alarm")}));
    QVERIFY(spool.entries().isEmpty());
}

void tst_EventHandlerWrite::sendsNothingOnceItWritesFiles()
{
    SpoolFolder spool;
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QStringLiteral("first"));
    logPlainEvent(router, QString());
    router.setEventToFile(QString());
    logPlainEvent(router, QString());

    EventlistHandlerDBusConnectorWrite(false).deleteEventlist();

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].member, QStringLiteral("deleteEventlist"));
    QCOMPARE(spool.entries().size(), 2);
}

void tst_EventHandlerWrite::writesNoFileWhenTheServiceIsNotThere()
{
    SpoolFolder spool;
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    QVERIFY(takeServiceAway());
    expectRefusedCall(EventlistHandlerDBusConnectorWrite(false));
    logPlainEvent(router, QString());
    QVERIFY(spool.entries().isEmpty());
}

void tst_EventHandlerWrite::writesFilesWithoutAnyWarningWhenTheServiceIsNotThere()
{
    SpoolFolder spool;
    QVERIFY(takeServiceAway());
    EventHandlerWrite router(QStringLiteral("PumpControl"), nullptr);
    router.setEventToFile(QStringLiteral("oil"));
    logPlainEvent(router, QString());
    QCOMPARE(spool.entries(), QStringList{QStringLiteral("oil.event.json")});
}

void tst_EventHandlerWrite::leavesOtherRoutersOnTheBusRoad()
{
    SpoolFolder spool;
    EventHandlerWrite fileRouter(QStringLiteral("PumpControl"), nullptr);
    EventHandlerWrite busRouter(QStringLiteral("PumpControl"), nullptr);
    fileRouter.setEventToFile(QString());
    logPlainEvent(fileRouter, QStringLiteral("file"));
    logPlainEvent(busRouter, QStringLiteral("bus"));
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].arguments[5].toString(), QStringLiteral("bus"));
    QCOMPARE(spool.entries().size(), 1);
}

QTEST_GUILESS_MAIN(tst_EventHandlerWrite)
#include "tst_EventHandlerWrite.moc"
