#include "Common/TestConnector.h"

#include "TestSupport/ChildProcess.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/WarningRecorder.h"

#include <QElapsedTimer>
#include <QTest>

/// A bus or a service that stands still: who waits for it, and how long.
class tst_ConnectorStandstill : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void doesNotBlockWhileTheBusStandsStill();
    void waitsOnceForAnUnknownModuleWhileTheBusStandsStill();
    void doesNotBlockWhileTheServiceStandsStill();
    void waitsBrieflyForABusThatStandsStillAtTheStart();

private:
    PrivateBus m_bus;
    ForeignService m_service{m_bus, ForeignService::centralServiceName()};
    WarningRecorder m_warnings;
};

namespace
{
/// What a connector takes at most that may wait for the bus: one second, and what a busy machine adds.
constexpr int longestFirstWaitMs = 3000;
} // namespace

void tst_ConnectorStandstill::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
}

void tst_ConnectorStandstill::init()
{
    m_warnings.start();
    QVERIFY2(m_service.reset(), m_service.errorText());
}

void tst_ConnectorStandstill::cleanup()
{
    m_bus.thaw();
    m_service.thaw();
    VERIFY_WARNINGS(m_warnings);
}

void tst_ConnectorStandstill::doesNotBlockWhileTheBusStandsStill()
{
    const TestConnector known;
    QVERIFY(known.isDBusInterfaceValid());
    QVERIFY2(m_bus.freeze(), m_bus.errorText());
    QElapsedTimer timer;
    timer.start();
    const QSharedPointer<TestConnector> further = TestConnector::createAndConnect();
    const TestConnector otherObject(QStringLiteral("Valve"));
    const bool isValid = further->isDBusInterfaceValid() && otherObject.isDBusInterfaceValid();
    further->send(QStringLiteral("log"));
    const qint64 elapsed = timer.elapsed();
    m_bus.thaw();

    QVERIFY2(elapsed < 500, QByteArray::number(elapsed));
    QVERIFY(isValid);
    QCOMPARE(m_service.received().size(), 1);
}

void tst_ConnectorStandstill::waitsOnceForAnUnknownModuleWhileTheBusStandsStill()
{
    const TestConnector known;
    QVERIFY(known.isDBusInterfaceValid());
    const QString module = QStringLiteral("NeverAskedFor");
    QVERIFY2(m_bus.freeze(), m_bus.errorText());
    QElapsedTimer timer;
    timer.start();
    const TestConnector first(QStringLiteral("Pump"), module);
    const bool isFirstValid = first.isDBusInterfaceValid();
    const qint64 elapsedFirst = timer.restart();
    const TestConnector second(QStringLiteral("Pump"), module);
    const bool isSecondValid = second.isDBusInterfaceValid();
    const qint64 elapsedSecond = timer.elapsed();
    m_bus.thaw();

    QVERIFY2(elapsedFirst < longestFirstWaitMs, QByteArray::number(elapsedFirst));
    QVERIFY2(elapsedSecond < 500, QByteArray::number(elapsedSecond));
    QVERIFY(!isFirstValid && !isSecondValid);
    // The bus goes on, and both hear of the module.
    QVERIFY(m_service.own(QString(ForeignService::centralServiceName())
                              .replace(QLatin1String("EventlistHandler"), QString(module))));
    QVERIFY(
        waitUntil([&] { return first.isDBusInterfaceValid() && second.isDBusInterfaceValid(); }));
}

void tst_ConnectorStandstill::doesNotBlockWhileTheServiceStandsStill()
{
    m_service.freeze();
    QElapsedTimer timer;
    timer.start();
    const QSharedPointer<TestConnector> connector = TestConnector::createAndConnect();
    connector->send(QStringLiteral("log"));
    const qint64 elapsed = timer.elapsed();
    m_service.thaw();

    QVERIFY2(elapsed < 500, QByteArray::number(elapsed));
    QCOMPARE(m_service.received().size(), 1);
}

void tst_ConnectorStandstill::waitsBrieflyForABusThatStandsStillAtTheStart()
{
    QVERIFY2(m_bus.freeze(), m_bus.errorText());
    ChildProcess module;
    const bool isStarted = module.startAndWait(QStringLiteral(CONNECTOR_PROCESS), {});
    module.write("constructed\nvalid\n");
    const QByteArray elapsed = module.readOutputLine();
    const QByteArray answer = module.readOutputLine();
    m_bus.thaw();

    QVERIFY(isStarted);
    QCOMPARE(answer, QByteArray("0"));
    // One second, and not the 25 that the bus itself would be waited for. The constructor alone: how
    // long a process takes to start is no matter of the connector.
    QVERIFY2(elapsed.toInt() >= 1000 && elapsed.toInt() < longestFirstWaitMs, elapsed);
    QVERIFY(waitUntil([&] {
        module.write("valid\n");
        return module.readOutputLine() == "1";
    }));
}

QTEST_GUILESS_MAIN(tst_ConnectorStandstill)
#include "tst_ConnectorStandstill.moc"
