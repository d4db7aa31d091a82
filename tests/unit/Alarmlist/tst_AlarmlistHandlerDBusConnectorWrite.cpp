#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"

#include "unit/UnitTest.h"

#include <QSignalSpy>
#include <QTest>

using Connector = AlarmlistHandlerDBusConnectorWrite;

class tst_AlarmlistHandlerDBusConnectorWrite : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void addressesTheWriteObject();
    void hasNoMetaObjectOfItsOwn();
    void warnsTwiceAndReturnsWithoutABus_data();
    void warnsTwiceAndReturnsWithoutABus();

private:
    WarningRecorder m_warnings;
};

void tst_AlarmlistHandlerDBusConnectorWrite::addressesTheWriteObject()
{
    for (const bool pollingMode : {false, true})
    {
        const Connector connector(pollingMode);

        QVERIFY(connector.getServiceName().endsWith(QStringLiteral(".EventlistHandler")));
        QCOMPARE(connector.getDBusPath(), QStringLiteral("/AlarmlistWrite"));
    }
}

void tst_AlarmlistHandlerDBusConnectorWrite::hasNoMetaObjectOfItsOwn()
{
    QCOMPARE(Connector(false).metaObject()->className(), "DBusConnectorBase");
}

void tst_AlarmlistHandlerDBusConnectorWrite::warnsTwiceAndReturnsWithoutABus_data()
{
    QTest::addColumn<bool>("isCentralDetector");

    QTest::newRow("acknowledgeVisualAlarm") << false;
    QTest::newRow("acknowledgeCentralDetector") << true;
}

void tst_AlarmlistHandlerDBusConnectorWrite::warnsTwiceAndReturnsWithoutABus()
{
    QFETCH(bool, isCentralDetector);
    const QSharedPointer<Connector> connector = Connector::createAndConnect();
    QVERIFY(!connector.isNull());
    QSignalSpy errors(connector.data(), &DBusConnectorBase::dBusConnectionError);
    expectRefusedCall(m_warnings, *connector);

    if (isCentralDetector)
    {
        connector->acknowledgeCentralDetector(QStringLiteral("operator"));
    }
    else
    {
        connector->acknowledgeVisualAlarm(QStringList(), QStringLiteral("operator"));
    }

    QCOMPARE(errors.count(), 1);
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandlerDBusConnectorWrite)
#include "tst_AlarmlistHandlerDBusConnectorWrite.moc"
