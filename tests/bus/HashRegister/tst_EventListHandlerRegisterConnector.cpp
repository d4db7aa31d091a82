#include "HashRegister/EventListHandlerRegisterConnector.h"

#include "TestSupport/Waiting.h"
#include "bus/CentralServiceTest.h"

#include "Platform/PropertyManagerConst.h"

#include <QMetaMethod>
#include <QSignalSpy>

#include <atomic>
#include <thread>

using Connector = EventListHandlerRegisterConnector;

namespace
{
const QString registerEventHash = QStringLiteral("registerEventHash");
} // namespace

class tst_EventListHandlerRegisterConnector : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void tellsTheServiceAHash_data();
    void tellsTheServiceAHash();
    void addressesTheModuleThatItIsGiven();
    void blocksUntilTheServiceHasAnswered();
    void staysSilentAboutEveryAnswerInAVariant_data();
    void staysSilentAboutEveryAnswerInAVariant();
    void warnsTwiceWhenTheCallFails_data();
    void warnsTwiceWhenTheCallFails();
    void warnsTwiceWithoutService();
    void worksAgainAfterRestarts();
    void neverSendsItsSignal();

private:
    // An answer as the service sends it: no error, no value.
    bool answerWell()
    {
        const QJsonObject nothing{{QStringLiteral("variant"), QStringLiteral("s")},
                                  {QStringLiteral("value"), QString()}};
        return m_service.answerVariant(registerEventHash, QStringLiteral("(isv)"),
                                       QJsonArray{0, QString(), nothing});
    }
};

void tst_EventListHandlerRegisterConnector::tellsTheServiceAHash_data()
{
    QTest::addColumn<QString>("hash");
    QTest::newRow("hash") << QStringLiteral("3fa9c1");
    QTest::newRow("empty") << QString();
    QTest::newRow("not looked at") << QStringLiteral("no hash / at all ü");
}

void tst_EventListHandlerRegisterConnector::tellsTheServiceAHash()
{
    QFETCH(QString, hash);
    QVERIFY(answerWell());
    Connector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);

    connector.registerEventHash(hash);

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].path, QStringLiteral("/HashRegister"));
    QCOMPARE(received[0].interface, QStringLiteral("Interface.RegisterHash"));
    QCOMPARE(received[0].member, registerEventHash);
    QCOMPARE(received[0].destination, ForeignService::centralServiceName());
    QCOMPARE(received[0].signature, QStringLiteral("s"));
    QCOMPARE(received[0].arguments, QJsonArray{hash});
    QVERIFY(received[0].isReplyExpected);
    QCOMPARE(connectionErrors.size(), 0);
}

void tst_EventListHandlerRegisterConnector::addressesTheModuleThatItIsGiven()
{
    ForeignService other(m_bus,
                         PropertyManagerConst::getDBusPrefix() + QStringLiteral(".Recorder"));
    QVERIFY2(other.start(), other.errorText());
    QVERIFY(other.answerVariant(registerEventHash, QStringLiteral("s"), QString()));
    QObject owner;
    auto* const connector = new Connector(QStringLiteral("Recorder"), &owner);
    QCOMPARE(connector->parent(), &owner);

    connector->registerEventHash(QStringLiteral("3fa9c1"));

    QCOMPARE(other.received().size(), 1);
    QCOMPARE(other.received()[0].path, QStringLiteral("/HashRegister"));
    QCOMPARE(m_service.received().size(), 0);
}

void tst_EventListHandlerRegisterConnector::blocksUntilTheServiceHasAnswered()
{
    QVERIFY(m_service.hold(registerEventHash));
    std::atomic<bool> hasReturned{false};
    std::thread module([&] {
        Connector connector;
        connector.registerEventHash(QStringLiteral("3fa9c1"));
        hasReturned = true;
    });
    const bool isCalled = waitUntil([this] { return m_service.countSoFar() == 1; });
    const bool isWaiting = !hasReturned;
    const int released = m_service.release(
        QStringLiteral("v"), {QJsonObject{{QStringLiteral("variant"), QStringLiteral("s")},
                                          {QStringLiteral("value"), QString()}}});
    module.join();
    QVERIFY(isCalled);
    QVERIFY(isWaiting);
    QCOMPARE(released, 1);
    QVERIFY(hasReturned);
}

void tst_EventListHandlerRegisterConnector::staysSilentAboutEveryAnswerInAVariant_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonArray>("values");
    const auto row = [](const char* name, const char* signature, const QJsonValue& value) {
        QTest::newRow(name) << QString::fromLatin1(signature) << QJsonArray{value};
    };
    const QJsonObject nothing{{QStringLiteral("variant"), QStringLiteral("s")},
                              {QStringLiteral("value"), QString()}};
    row("error inside of the reply", "(isv)",
        QJsonArray{9, QStringLiteral("No such hash"), nothing});
    row("no structure", "s", QStringLiteral("ok"));
    row("another structure", "(ii)", QJsonArray{1, 2});
    row("list", "av", QJsonArray{nothing});
}

void tst_EventListHandlerRegisterConnector::staysSilentAboutEveryAnswerInAVariant()
{
    QFETCH(QString, signature);
    QFETCH(QJsonArray, values);
    QVERIFY(m_service.answerVariant(registerEventHash, signature, values.at(0)));
    Connector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    connector.registerEventHash(QStringLiteral("3fa9c1"));
    QCOMPARE(m_service.received().size(), 1);
    QCOMPARE(connectionErrors.size(), 0);
}

void tst_EventListHandlerRegisterConnector::warnsTwiceWhenTheCallFails_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("warning");
    QTest::newRow("with a text") << QStringLiteral("Registry is \"full\"")
                                 << QStringLiteral("\"D-Bus call to method registerEventHash "
                                                   "failed: Registry is \\\"full\\\"!\"");
    QTest::newRow("without a text")
        << QString() << QStringLiteral("\"D-Bus call to method registerEventHash failed: !\"");
}

void tst_EventListHandlerRegisterConnector::warnsTwiceWhenTheCallFails()
{
    QFETCH(QString, text);
    QFETCH(QString, warning);
    QVERIFY(m_service.answerError(registerEventHash, QStringLiteral("org.example.Full"), text));
    Connector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(warning, QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }
    connector.registerEventHash(QStringLiteral("3fa9c1"));
    QCOMPARE(connectionErrors.size(), 1);
    // Nothing is repeated.
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventListHandlerRegisterConnector::warnsTwiceWithoutService()
{
    Connector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(quoted(connector.getInvalidDBusInterfaceMessage()),
                          QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }
    connector.registerEventHash(QStringLiteral("3fa9c1"));
    QCOMPARE(connectionErrors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(1));
}

void tst_EventListHandlerRegisterConnector::worksAgainAfterRestarts()
{
    Connector connector;
    QVERIFY(takeServiceAway());
    QVERIFY(bringServiceBack());
    QVERIFY(takeBusAway());
    QVERIFY(bringBusBack());
    QVERIFY(waitUntilValid(connector));
    QVERIFY(answerWell());
    connector.registerEventHash(QStringLiteral("3fa9c1"));
    QCOMPARE(m_service.received().size(), 1);
}

void tst_EventListHandlerRegisterConnector::neverSendsItsSignal()
{
    QVERIFY(answerWell());
    Connector connector;
    QSignalSpy spy(&connector, &Connector::newSignal);
    connector.registerEventHash(QStringLiteral("3fa9c1"));
    QVERIFY(emitSignal(QStringLiteral("/Hash3fa9c1"), QStringLiteral("Interface.Event"),
                       QStringLiteral("availableEventIcon"), QStringLiteral("s"),
                       {QStringLiteral("Icon")}));
    QVERIFY(takeWhatWasSent());
    QCOMPARE(spy.size(), 0);

    const QMetaObject& metaObject = Connector::staticMetaObject;
    QCOMPARE(metaObject.methodCount() - metaObject.methodOffset(), 1);
    QCOMPARE(metaObject.method(metaObject.methodOffset()).methodSignature(),
             QByteArray("newSignal(QString,QString)"));
}

QTEST_GUILESS_MAIN(tst_EventListHandlerRegisterConnector)
#include "tst_EventListHandlerRegisterConnector.moc"
