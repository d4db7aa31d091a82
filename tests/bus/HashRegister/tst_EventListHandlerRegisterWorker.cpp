#include "HashRegister/EventListHandlerRegisterWorker.h"

#include "TestSupport/Waiting.h"
#include "bus/CentralServiceTest.h"

#include "Platform/PropertyManagerConst.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QThread>

#include <atomic>
#include <memory>
#include <thread>

using Worker = EventListHandlerRegisterWorker;

namespace
{
const QString hash = QStringLiteral("3fa9c1");
const QString module = QStringLiteral("EventlistHandler");
const QString interface = QStringLiteral("Interface.Event");
const QString availableEventIcon = QStringLiteral("availableEventIcon");
} // namespace

class tst_EventListHandlerRegisterWorker : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void isNotConnectedBeforeItWasAsked();
    void hearsTheIconOfItsHash();
    void hearsTheGlobalAnnouncementsWithAnEmptyHash();
    void hearsTheModuleThatItIsGiven();
    void ignoresOtherHashesInterfacesAndShapes();
    void hearsEachIconOnceHoweverOftenItConnects();
    void connectsAlsoWhileTheServiceIsNotThere();
    void failsWithAHashThatIsNoPath_data();
    void failsWithAHashThatIsNoPath();
    void connectsAfterAFailure();
    void connectsFromAnotherThread();
    void warnsWithTheSameCallSiteFromAnotherThread();
    void waitsForTheEventLoopOfItsThread();
    void hearsOnAfterARestartOfTheServiceAndNotOfTheBus();
    void hearsNothingAfterItsEnd();
    void declaresOneSignalAndOnePrivateSlot();

private:
    bool announce(const QString& path, const QString& icon)
    {
        return emitSignal(path, interface, availableEventIcon, QStringLiteral("s"), {icon});
    }

    void expectFailure(const QString& path)
    {
        m_warnings.expect(QStringLiteral("Unable to connect to DBus process %1 %2 "
                                         "\"Interface.Event\" \"availableEventIcon\"")
                              .arg(quoted(ForeignService::centralServiceName()), quoted(path)),
                          QStringLiteral("EventListHandlerRegisterWorker"),
                          QStringLiteral("EventListHandlerRegisterWorker::connect"));
    }
};

void tst_EventListHandlerRegisterWorker::isNotConnectedBeforeItWasAsked()
{
    Worker worker(hash, module);
    QVERIFY(!worker.isConnected());
    QCOMPARE(worker.parent(), nullptr);
    QSignalSpy spy(&worker, &Worker::newSignal);
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 0);
}

void tst_EventListHandlerRegisterWorker::hearsTheIconOfItsHash()
{
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(worker.isConnected());
    QVERIFY(takeWhatWasSent());

    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Öl / \"Icon\"")));
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QString()));

    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 2);
    QCOMPARE(spy[0], (QVariantList{hash, QStringLiteral("Öl / \"Icon\"")}));
    QCOMPARE(spy[1], (QVariantList{hash, QString()}));
}

void tst_EventListHandlerRegisterWorker::hearsTheGlobalAnnouncementsWithAnEmptyHash()
{
    Worker worker(QString(), module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/HashGlobal"), QStringLiteral("Icon")));
    QVERIFY(announce(QStringLiteral("/Hash"), QStringLiteral("Other")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy[0], (QVariantList{QString(), QStringLiteral("Icon")}));
}

void tst_EventListHandlerRegisterWorker::hearsTheModuleThatItIsGiven()
{
    ForeignService other(m_bus,
                         PropertyManagerConst::getDBusPrefix() + QStringLiteral(".Recorder"));
    QVERIFY2(other.start(), other.errorText());
    Worker worker(hash, QStringLiteral("Recorder"));
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(worker.isConnected());
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("of another service")));
    QVERIFY(other.emitSignal(QStringLiteral("/Hash3fa9c1"), interface, availableEventIcon,
                             QStringLiteral("s"), {QStringLiteral("Icon")}));
    QTRY_COMPARE(spy.size(), 1);
    QCOMPARE(spy[0], (QVariantList{hash, QStringLiteral("Icon")}));
}

void tst_EventListHandlerRegisterWorker::ignoresOtherHashesInterfacesAndShapes()
{
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c2"), QStringLiteral("Icon")));
    QVERIFY(announce(QStringLiteral("/Hash/3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(emitSignal(QStringLiteral("/Hash3fa9c1"),
                       QStringLiteral("org.eventlist.Interface.Event"), availableEventIcon,
                       QStringLiteral("s"), {QString()}));
    QVERIFY(emitSignal(QStringLiteral("/Hash3fa9c1"), interface, availableEventIcon,
                       QStringLiteral("i"), {5}));
    QVERIFY(emitSignal(QStringLiteral("/Hash3fa9c1"), interface, availableEventIcon));
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("marker")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy[0][1].toString(), QStringLiteral("marker"));
}

void tst_EventListHandlerRegisterWorker::hearsEachIconOnceHoweverOftenItConnects()
{
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    for (int i = 0; i < 3; ++i)
    {
        worker.connect();
        QVERIFY(worker.isConnected());
    }
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_EventListHandlerRegisterWorker::connectsAlsoWhileTheServiceIsNotThere()
{
    QVERIFY(takeServiceAway());
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(worker.isConnected());
    QVERIFY(bringServiceBack());
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_EventListHandlerRegisterWorker::failsWithAHashThatIsNoPath_data()
{
    QTest::addColumn<QString>("oddHash");
    QTest::newRow("blank") << QStringLiteral("3fa 9c1");
    QTest::newRow("umlaut") << QStringLiteral("Öl");
    QTest::newRow("quote") << QStringLiteral("a'b");
    QTest::newRow("rule in a rule") << QStringLiteral("a',eavesdrop='true");
    QTest::newRow("slash at the end") << QStringLiteral("3fa9c1/");
    QTest::newRow("two slashes") << QStringLiteral("a//b");
    QTest::newRow("newline") << QStringLiteral("a\nb");
    QTest::newRow("minus") << QStringLiteral("a-b");
}

void tst_EventListHandlerRegisterWorker::failsWithAHashThatIsNoPath()
{
    QFETCH(QString, oddHash);
    Worker worker(oddHash, module);
    expectFailure(QStringLiteral("/Hash") + oddHash);
    expectFailure(QStringLiteral("/Hash") + oddHash);
    worker.connect();
    QVERIFY(!worker.isConnected());
    worker.connect();
    QVERIFY(!worker.isConnected());
}

void tst_EventListHandlerRegisterWorker::connectsAfterAFailure()
{
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    QVERIFY(takeBusAway());
    expectFailure(QStringLiteral("/Hash3fa9c1"));
    worker.connect();
    QVERIFY(!worker.isConnected());

    QVERIFY(bringBusBack());
    worker.connect();
    QVERIFY(worker.isConnected());

    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_EventListHandlerRegisterWorker::connectsFromAnotherThread()
{
    QThread thread;
    thread.start();
    auto* const worker = new Worker(hash, module);
    worker->moveToThread(&thread);
    std::atomic<QThread*> heardOn{nullptr};
    std::atomic<int> heardCount{0};
    QObject::connect(
        worker, &Worker::newSignal, worker,
        [&] {
            heardOn = QThread::currentThread();
            ++heardCount;
        },
        Qt::DirectConnection);

    worker->connect();
    QVERIFY(worker->isConnected());
    worker->connect();

    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QTRY_COMPARE(heardCount.load(), 1);
    QCOMPARE(heardOn.load(), &thread);
    worker->deleteLater();
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_EventListHandlerRegisterWorker::warnsWithTheSameCallSiteFromAnotherThread()
{
    QThread thread;
    thread.start();
    auto* const worker = new Worker(QStringLiteral("a b"), module);
    worker->moveToThread(&thread);
    expectFailure(QStringLiteral("/Hasha b"));
    worker->connect();
    QVERIFY(!worker->isConnected());
    worker->deleteLater();
    thread.quit();
    QVERIFY(thread.wait());
}

void tst_EventListHandlerRegisterWorker::waitsForTheEventLoopOfItsThread()
{
    Worker worker(hash, module);
    std::atomic<bool> isCalling{false};
    std::atomic<bool> hasReturned{false};
    std::thread caller([&] {
        isCalling = true;
        worker.connect();
        hasReturned = true;
    });
    // No event of this thread runs here.
    while (!isCalling)
    {
        std::this_thread::yield();
    }
    QVERIFY(m_service.synchronise(m_bus.connect(QStringLiteral("observer"))));
    QDBusConnection::disconnectFromBus(QStringLiteral("observer"));
    const bool isEarly = hasReturned || worker.isConnected();

    const bool isDone = waitUntil([&] { return hasReturned.load(); });

    caller.join();
    QVERIFY(!isEarly);
    QVERIFY(isDone);
    QVERIFY(worker.isConnected());
}

void tst_EventListHandlerRegisterWorker::hearsOnAfterARestartOfTheServiceAndNotOfTheBus()
{
    Worker worker(hash, module);
    QSignalSpy spy(&worker, &Worker::newSignal);
    worker.connect();
    QVERIFY(takeServiceAway());
    QVERIFY(bringServiceBack());
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);

    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    QVERIFY(worker.isConnected());
    worker.connect();
    Worker newWorker(hash, module);
    QSignalSpy newSpy(&newWorker, &Worker::newSignal);
    newWorker.connect();
    QVERIFY(takeWhatWasSent());
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(newSpy.size(), 1);
    QCOMPARE(spy.size(), 1);
}

void tst_EventListHandlerRegisterWorker::hearsNothingAfterItsEnd()
{
    auto worker = std::make_unique<Worker>(hash, module);
    Worker marker(hash, module);
    worker->connect();
    marker.connect();
    QSignalSpy spy(&marker, &Worker::newSignal);
    QVERIFY(takeWhatWasSent());
    worker.reset();
    QVERIFY(announce(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Icon")));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 1);
}

void tst_EventListHandlerRegisterWorker::declaresOneSignalAndOnePrivateSlot()
{
    const QMetaObject& metaObject = Worker::staticMetaObject;
    const int offset = metaObject.methodOffset();
    QCOMPARE(metaObject.methodCount() - offset, 2);
    QCOMPARE(metaObject.method(offset).methodSignature(), QByteArray("newSignal(QString,QString)"));
    QCOMPARE(metaObject.method(offset).methodType(), QMetaMethod::Signal);
    QCOMPARE(metaObject.method(offset + 1).methodSignature(), QByteArray("receiver(QString)"));
    QCOMPARE(metaObject.method(offset + 1).access(), QMetaMethod::Private);
}

QTEST_GUILESS_MAIN(tst_EventListHandlerRegisterWorker)
#include "tst_EventListHandlerRegisterWorker.moc"
