#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include "EventWrite/EventlistHandlerWrite.h"
#include "unit/UnitTest.h"

#include <QSignalSpy>
#include <QTest>

#include <functional>

using SourceHashType = EventlistHandlerEnums::SourceHashType;
using Connector = EventlistHandlerDBusConnectorWrite;
using Operation = std::function<void(Connector&)>;

Q_DECLARE_METATYPE(Operation)

class tst_EventlistHandlerDBusConnectorWrite : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void addsNothingToTheMetaObjectOfItsBase();
    void ignoresThePollingMode();
    void warnsTwiceAndReturnsWithoutABus_data();
    void warnsTwiceAndReturnsWithoutABus();
    void suppressesAndDeletesThroughTheFrontEnd();

private:
    WarningRecorder m_warnings;
};

void tst_EventlistHandlerDBusConnectorWrite::addsNothingToTheMetaObjectOfItsBase()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;

    QCOMPARE(metaObject.className(), "EventlistHandlerDBusConnectorWrite");
    QCOMPARE(metaObject.superClass(), &DBusConnectorBase::staticMetaObject);
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
}

void tst_EventlistHandlerDBusConnectorWrite::ignoresThePollingMode()
{
    for (const bool pollingMode : {false, true})
    {
        const QSharedPointer<Connector> connector = Connector::createAndConnect(pollingMode);

        QVERIFY(!connector.isNull());
        QVERIFY(connector->parent() == nullptr);
        QVERIFY(connector->getServiceName().endsWith(QStringLiteral(".EventlistHandler")));
        QCOMPARE(connector->getDBusPath(), QStringLiteral("/EventlistWrite"));
    }
}

void tst_EventlistHandlerDBusConnectorWrite::warnsTwiceAndReturnsWithoutABus_data()
{
    QTest::addColumn<Operation>("operation");

    QTest::newRow("an event") << Operation([](Connector& connector) {
        connector.logEvent(EventlistHandlerEnums::EventType::alarm,
                           EventlistHandlerEnums::State::active, QString(), QString(), QString(),
                           QStringList(), QString(), QString(), QJsonObject(), QString(), QString(),
                           SourceHashType::noSourceHash);
    });
    QTest::newRow("an event as it travels") << Operation([](Connector& connector) {
        connector.logEvent(QStringList(), QString(), QString(), QVariant(), QStringList(),
                           QString(), QString(), QJsonObject(), QString(), QString(),
                           SourceHashType::noSourceHash);
    });
    QTest::newRow("deletion") << Operation(
        [](Connector& connector) { connector.deleteEventlist(); });
    QTest::newRow("suppression") << Operation(
        [](Connector& connector) { connector.suppressEventProcessing(true); });
}

void tst_EventlistHandlerDBusConnectorWrite::warnsTwiceAndReturnsWithoutABus()
{
    QFETCH(Operation, operation);
    // One that was made by hand, and one that went through the second step.
    Connector plain(false);
    const QSharedPointer<Connector> connected = Connector::createAndConnect(false);
    for (Connector* const connector : {&plain, connected.data()})
    {
        QSignalSpy errors(connector, &DBusConnectorBase::dBusConnectionError);
        expectRefusedCall(m_warnings, *connector);

        operation(*connector);

        QCOMPARE(errors.count(), 1);
        QCOMPARE(connector->getRefusedCallCount(), quint64(1));
    }
}

void tst_EventlistHandlerDBusConnectorWrite::suppressesAndDeletesThroughTheFrontEnd()
{
    QObject parent;
    auto* const frontEnd = new EventlistHandlerWrite(&parent);
    QCOMPARE(frontEnd->parent(), &parent);
    const Connector connector(false);
    expectRefusedCall(m_warnings, connector);
    expectRefusedCall(m_warnings, connector);

    frontEnd->suppressEventProcessing();
    frontEnd->deleteEventlist();
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerDBusConnectorWrite)
#include "tst_EventlistHandlerDBusConnectorWrite.moc"
