#include "HashRegister/EventListHandlerRegisterConnector.h"

#include "unit/UnitTest.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

using Connector = EventListHandlerRegisterConnector;

class tst_EventListHandlerRegisterConnector : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void declaresOneSignalAndNothingElse();
    void addressesTheCentralServiceByDefault();
    void addressesTheModuleThatIsGiven();
    void warnsTwiceAndReturnsWithoutABus_data();
    void warnsTwiceAndReturnsWithoutABus();

private:
    WarningRecorder m_warnings;
};

void tst_EventListHandlerRegisterConnector::declaresOneSignalAndNothingElse()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;

    QCOMPARE(metaObject.className(), "EventListHandlerRegisterConnector");
    QCOMPARE(metaObject.methodCount() - metaObject.methodOffset(), 1);
    const QMetaMethod method = metaObject.method(metaObject.methodOffset());
    QCOMPARE(method.methodSignature(), QByteArray("newSignal(QString,QString)"));
    QCOMPARE(method.parameterNames(), QList<QByteArray>({"hash", "icon"}));
}

void tst_EventListHandlerRegisterConnector::addressesTheCentralServiceByDefault()
{
    const Connector connector;

    QVERIFY(connector.getServiceName().endsWith(QStringLiteral(".EventlistHandler")));
    QCOMPARE(connector.getDBusPath(), QStringLiteral("/HashRegister"));
    QVERIFY(connector.parent() == nullptr);
}

void tst_EventListHandlerRegisterConnector::addressesTheModuleThatIsGiven()
{
    QObject parent;
    const auto* const connector = new Connector(QStringLiteral("Recorder"), &parent);

    QVERIFY(connector->getServiceName().endsWith(QStringLiteral(".Recorder")));
    QCOMPARE(connector->getDBusPath(), QStringLiteral("/HashRegister"));
    QCOMPARE(connector->parent(), &parent);
}

void tst_EventListHandlerRegisterConnector::warnsTwiceAndReturnsWithoutABus_data()
{
    QTest::addColumn<QString>("hash");

    QTest::newRow("a hash") << QStringLiteral("3fa9c1");
    QTest::newRow("an empty one") << QString();
}

void tst_EventListHandlerRegisterConnector::warnsTwiceAndReturnsWithoutABus()
{
    QFETCH(QString, hash);
    Connector connector;
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);
    QSignalSpy icons(&connector, &Connector::newSignal);
    expectRefusedCall(m_warnings, connector, QStringLiteral("syncCallHelper"));

    connector.registerEventHash(hash);

    QCOMPARE(errors.count(), 1);
    QCOMPARE(icons.count(), 0);
}

QTEST_GUILESS_MAIN(tst_EventListHandlerRegisterConnector)
#include "tst_EventListHandlerRegisterConnector.moc"
