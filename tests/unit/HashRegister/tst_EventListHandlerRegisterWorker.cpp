#include "HashRegister/EventListHandlerRegisterWorker.h"

#include "TestSupport/PrivateMember.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/Watchdog.h"
#include "unit/UnitTest.h"

#include "Platform/PropertyManagerConst.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <memory>

using Worker = EventListHandlerRegisterWorker;

PRIVATE_MEMBER(isConnectedOf, std::atomic<bool> Worker::*, &Worker::m_connected)

class tst_EventListHandlerRegisterWorker : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void declaresOneSignalAndOnePrivateSlot();
    void isNotConnectedAtFirst();
    void warnsWithTheWholeAddressWhenItCannotConnect_data();
    void warnsWithTheWholeAddressWhenItCannotConnect();
    void triesAnewAtEachCallUntilItIsConnected();
    void makesTheAttemptOnItsOwnThread();
    void makesTheAttemptAtOnceWithoutAThread();
    void passesTheIconOnWithItsHash_data();
    void passesTheIconOnWithItsHash();

private:
    void expectFailedAttempt(const QString& service, const QString& path)
    {
        m_warnings.expect(QString(QLatin1String("Unable to connect to DBus process ") +
                                  quoted(service) + QLatin1Char(' ') + quoted(path) +
                                  QLatin1String(" \"Interface.Event\" \"availableEventIcon\"")),
                          QStringLiteral("EventListHandlerRegisterWorker"),
                          QStringLiteral("EventListHandlerRegisterWorker::connect"));
    }
    const QString m_service =
        PropertyManagerConst::getDBusPrefix() + QStringLiteral(".EventlistHandler");
    const QString m_module = QStringLiteral("EventlistHandler");
    WarningRecorder m_warnings;
};

void tst_EventListHandlerRegisterWorker::declaresOneSignalAndOnePrivateSlot()
{
    const QMetaObject& metaObject = Worker::staticMetaObject;

    QCOMPARE(metaObject.methodCount() - metaObject.methodOffset(), 2);
    const QMetaMethod signal = metaObject.method(metaObject.methodOffset());
    const QMetaMethod slot = metaObject.method(metaObject.methodOffset() + 1);
    QCOMPARE(signal.methodSignature(), QByteArray("newSignal(QString,QString)"));
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(slot.methodSignature(), QByteArray("receiver(QString)"));
    QCOMPARE(slot.access(), QMetaMethod::Private);
}

void tst_EventListHandlerRegisterWorker::isNotConnectedAtFirst()
{
    const Worker worker(QStringLiteral("3fa9c1"), m_module);

    QVERIFY(!worker.isConnected());
    QVERIFY(worker.parent() == nullptr);
}

void tst_EventListHandlerRegisterWorker::warnsWithTheWholeAddressWhenItCannotConnect_data()
{
    QTest::addColumn<QString>("hash");
    QTest::addColumn<QString>("module");
    QTest::addColumn<QString>("path");

    QTest::newRow("a hash") << QStringLiteral("3fa9c1") << m_module
                            << QStringLiteral("/Hash3fa9c1");
    QTest::newRow("the global object") << QString() << m_module << QStringLiteral("/HashGlobal");
    QTest::newRow("another module")
        << QStringLiteral("a") << QStringLiteral("Recorder") << QStringLiteral("/Hasha");
    QTest::newRow("a hash that is no path")
        << QStringLiteral("ä \"x\"/") << m_module << QStringLiteral("/Hashä \"x\"/");
}

void tst_EventListHandlerRegisterWorker::warnsWithTheWholeAddressWhenItCannotConnect()
{
    QFETCH(QString, hash);
    QFETCH(QString, module);
    QFETCH(QString, path);
    Worker worker(hash, module);
    expectFailedAttempt(QString(PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + module),
                        path);

    worker.connect();

    QVERIFY(!worker.isConnected());
}

void tst_EventListHandlerRegisterWorker::triesAnewAtEachCallUntilItIsConnected()
{
    Worker worker(QStringLiteral("3fa9c1"), m_module);
    expectFailedAttempt(m_service, QStringLiteral("/Hash3fa9c1"));
    expectFailedAttempt(m_service, QStringLiteral("/Hash3fa9c1"));

    worker.connect();
    worker.connect();
    (worker.*isConnectedOf()) = true;
    // Not even an attempt, which would warn.
    worker.connect();

    QVERIFY(worker.isConnected());
}

void tst_EventListHandlerRegisterWorker::makesTheAttemptOnItsOwnThread()
{
    const Watchdog watchdog(defaultDeadline, "connect() to a worker on another thread");
    QThread thread;
    thread.start();
    auto* const worker = new Worker(QStringLiteral("3fa9c1"), m_module);
    worker->moveToThread(&thread);
    QObject::connect(&thread, &QThread::finished, worker, &QObject::deleteLater);
    expectFailedAttempt(m_service, QStringLiteral("/Hash3fa9c1"));

    worker->connect();

    // It returned behind the attempt: the warning is there already.
    QVERIFY(m_warnings.verify());
    QVERIFY(!worker->isConnected());
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_EventListHandlerRegisterWorker::makesTheAttemptAtOnceWithoutAThread()
{
    const Watchdog watchdog(defaultDeadline, "connect() to a worker without a thread");
    Worker worker(QStringLiteral("3fa9c1"), m_module);
    worker.moveToThread(nullptr);
    expectFailedAttempt(m_service, QStringLiteral("/Hash3fa9c1"));

    worker.connect();

    QVERIFY(!worker.isConnected());
}

void tst_EventListHandlerRegisterWorker::passesTheIconOnWithItsHash_data()
{
    QTest::addColumn<QString>("hash");

    QTest::newRow("a hash") << QStringLiteral("3fa9c1");
    QTest::newRow("the global object") << QString();
}

void tst_EventListHandlerRegisterWorker::passesTheIconOnWithItsHash()
{
    QFETCH(QString, hash);
    Worker worker(hash, m_module);
    QSignalSpy icons(&worker, &Worker::newSignal);

    QVERIFY(QMetaObject::invokeMethod(&worker, "receiver",
                                      Q_ARG(QString, QStringLiteral("EventlistAlarmOn"))));

    QCOMPARE(icons.count(), 1);
    QCOMPARE(icons.first(), QVariantList({hash, QStringLiteral("EventlistAlarmOn")}));
}

QTEST_GUILESS_MAIN(tst_EventListHandlerRegisterWorker)
#include "tst_EventListHandlerRegisterWorker.moc"
