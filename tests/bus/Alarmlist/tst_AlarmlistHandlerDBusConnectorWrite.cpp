#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"

#include "bus/CentralServiceTest.h"

#include <QSignalSpy>

using Connector = AlarmlistHandlerDBusConnectorWrite;

class tst_AlarmlistHandlerDBusConnectorWrite : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void acknowledgesAlarms_data();
    void acknowledgesAlarms();
    void acknowledgesTheCentralDetector();
    void logsNothingWhenTheServiceRefuses();
    void warnsTwiceForEachCallWithoutService();
    void usesTheMetaObjectOfItsBase();
};

void tst_AlarmlistHandlerDBusConnectorWrite::acknowledgesAlarms_data()
{
    QTest::addColumn<QStringList>("alarms");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QByteArray>("arguments");
    QTest::newRow("two alarms") << QStringList{QStringLiteral("{a}"), QStringLiteral("{b}")}
                                << QStringLiteral("anna")
                                << QByteArray("[[\"{a}\",\"{b}\"],\"anna\"]");
    QTest::newRow("no alarm") << QStringList() << QStringLiteral("anna")
                              << QByteArray("[[],\"anna\"]");
    QTest::newRow("no user") << QStringList{QStringLiteral("{a}")} << QString()
                             << QByteArray("[[\"{a}\"],\"\"]");
}

void tst_AlarmlistHandlerDBusConnectorWrite::acknowledgesAlarms()
{
    QFETCH(QStringList, alarms);
    QFETCH(QString, user);
    QFETCH(QByteArray, arguments);
    Connector::createAndConnect()->acknowledgeVisualAlarm(alarms, user);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(),
             "call /AlarmlistWrite Interface.AlarmlistWrite.acknowledgeVisualAlarm \"ass\" " +
                 arguments + " no reply expected");
    QCOMPARE(received[0].destination, ForeignService::centralServiceName());
}

void tst_AlarmlistHandlerDBusConnectorWrite::acknowledgesTheCentralDetector()
{
    Connector(true).acknowledgeCentralDetector(QStringLiteral("anna"));
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].toText(),
             QByteArray("call /AlarmlistWrite Interface.AlarmlistWrite.acknowledgeCentralDetector "
                        "\"s\" [\"anna\"] no reply expected"));
}

void tst_AlarmlistHandlerDBusConnectorWrite::logsNothingWhenTheServiceRefuses()
{
    QVERIFY(m_service.answerError(QStringLiteral("acknowledgeVisualAlarm"),
                                  QStringLiteral("org.example.Unknown"), QStringLiteral("No")));
    Connector connector(false);
    connector.acknowledgeVisualAlarm(QStringList{QStringLiteral("?")}, QString());
    QCOMPARE(m_service.received().size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_AlarmlistHandlerDBusConnectorWrite::warnsTwiceForEachCallWithoutService()
{
    const auto connector = Connector::createAndConnect();
    QSignalSpy connectionErrors(connector.data(), &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    expectRefusedCall(*connector);
    expectRefusedCall(*connector);
    connector->acknowledgeVisualAlarm(QStringList(), QString());
    connector->acknowledgeCentralDetector(QString());
    QCOMPARE(connectionErrors.size(), 2);
    QCOMPARE(connector->getRefusedCallCount(), quint64(2));
}

void tst_AlarmlistHandlerDBusConnectorWrite::usesTheMetaObjectOfItsBase()
{
    const Connector connector(false);
    QCOMPARE(connector.metaObject(), &DBusConnectorBase::staticMetaObject);
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandlerDBusConnectorWrite)
#include "tst_AlarmlistHandlerDBusConnectorWrite.moc"
