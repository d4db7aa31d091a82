#include "EventWrite/EventlistHandlerWrite.h"

#include "bus/CentralServiceTest.h"

class tst_EventlistHandlerWrite : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void deletesTheEventlist();
    void alwaysSendsTrueToSuppressEventProcessing();
    void warnsTwiceWithoutService();
    void worksAgainWhenTheBusIsBack();
    void belongsToItsParent();
};

void tst_EventlistHandlerWrite::deletesTheEventlist()
{
    EventlistHandlerWrite(nullptr).deleteEventlist();
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(),
             QByteArray("call /EventlistWrite Interface.EventlistWrite.deleteEventlist \"\" [] no "
                        "reply expected"));
}

void tst_EventlistHandlerWrite::alwaysSendsTrueToSuppressEventProcessing()
{
    EventlistHandlerWrite front(nullptr);
    front.suppressEventProcessing();
    front.suppressEventProcessing();
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    for (const RecordedMessage& message : received)
    {
        QCOMPARE(message.toText(),
                 QByteArray("call /EventlistWrite Interface.EventlistWrite.suppressEventProcessing "
                            "\"b\" [true] no reply expected"));
    }
}

void tst_EventlistHandlerWrite::warnsTwiceWithoutService()
{
    EventlistHandlerWrite front(nullptr);
    const EventlistHandlerDBusConnectorWrite likeItsOwn(false);
    QVERIFY(takeServiceAway());
    expectRefusedCall(likeItsOwn);
    expectRefusedCall(likeItsOwn);
    front.deleteEventlist();
    front.suppressEventProcessing();
}

void tst_EventlistHandlerWrite::worksAgainWhenTheBusIsBack()
{
    EventlistHandlerWrite front(nullptr);
    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    QVERIFY(waitUntilValid(EventlistHandlerDBusConnectorWrite(false)));
    front.deleteEventlist();
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventlistHandlerWrite::belongsToItsParent()
{
    QObject owner;
    const auto* const front = new EventlistHandlerWrite(&owner);
    QCOMPARE(front->parent(), &owner);
    const QMetaObject& metaObject = EventlistHandlerWrite::staticMetaObject;
    QCOMPARE(metaObject.methodCount(), QObject::staticMetaObject.methodCount());
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerWrite)
#include "tst_EventlistHandlerWrite.moc"
