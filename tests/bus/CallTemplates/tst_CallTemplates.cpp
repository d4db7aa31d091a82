#include "Common/DBusTools/DBusConnectorBase.h"

#include "TestSupport/Waiting.h"
#include "bus/CentralServiceTest.h"

#include "Platform/DBusConnection.h"
#include "Platform/DBusConnectionParameter.h"
#include "Platform/PropertyManagerConst.h"

#include <QJsonDocument>
#include <QSignalSpy>
#include <QThread>

namespace
{
// The templates are compiled into this program, as into that of a module that derives a connector.
class PumpConnector : public DBusConnectorBase
{
    Q_OBJECT
public:
    PumpConnector()
        : DBusConnectorBase(QStringLiteral("EventlistHandler"), QStringLiteral("Pump"),
                            QStringLiteral("Interface.Pump"), nullptr, defaultMode)
    {
    }
    explicit PumpConnector(const QString& moduleName, const QString& objectName)
        : DBusConnectorBase(moduleName, objectName, QStringLiteral("Interface.Pump"), nullptr,
                            defaultMode)
    {
    }

    using DBusConnectorBase::asyncCallHelper;
    using DBusConnectorBase::syncCallHelper;
    using DBusConnectorBase::syncCallNoBlock;

    int connectCount = 0;
    QThread* connectThread = nullptr;

protected Q_SLOTS:
    void connectServices() override
    {
        ++connectCount;
        connectThread = QThread::currentThread();
    }
};

const QString start = QStringLiteral("start");
} // namespace

class tst_CallTemplates : public CentralServiceTest
{
    Q_OBJECT
private Q_SLOTS:
    void composesTheAddressOfItsObject();
    void composesTheSameAddressFromAParameterObject();
    void isNeverValidWithANameThatDBusForbids_data();
    void isNeverValidWithANameThatDBusForbids();
    void sendsEachArgumentAsTheTypeOfItsValue_data();
    void sendsEachArgumentAsTheTypeOfItsValue();
    void sendsTenArguments();

    void asynchronousCallExpectsAReply();
    void asynchronousCallHandsOutTheAnswer();
    void asynchronousCallHandsOutTheErrorOfTheService();
    void asynchronousCallToAnAbsentServiceWarnsOnceAndGivesNull();
    void pendingReplyOutlivesItsConnectorAndCanBeTracked();

    void nonBlockingCallIsMarkedAsExpectingNoReply();
    void nonBlockingCallLogsNothingWhenTheServiceRefuses();
    void nonBlockingCallToAnAbsentServiceWarnsTwice();

    void blockingCallReadsTheReplyInsideTheVariant();
    void blockingCallWithoutAStructureGivesAnEmptyReply_data();
    void blockingCallWithoutAStructureGivesAnEmptyReply();
    void blockingCallThatFailsWarnsTwice_data();
    void blockingCallThatFailsWarnsTwice();
    void blockingCallToAnAbsentServiceWarnsTwice();

    void countsTheCallsThatWereRefused();
    void isValidAgainWhenTheServiceIsBack();
    void connectsItsServicesOnlyFromInitObjectOn();
    void connectsItsServicesOnceForEachBusConnection();
};

void tst_CallTemplates::composesTheAddressOfItsObject()
{
    const PumpConnector connector;
    QCOMPARE(connector.getServiceName(),
             PropertyManagerConst::getDBusPrefix() + QStringLiteral(".EventlistHandler"));
    QCOMPARE(connector.getDBusPath(), QStringLiteral("/Pump"));

    connector.syncCallNoBlock(start);

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].destination, connector.getServiceName());
    QCOMPARE(received[0].path, QStringLiteral("/Pump"));
    QCOMPARE(received[0].interface, QStringLiteral("Interface.Pump"));
    QCOMPARE(received[0].member, start);
}

void tst_CallTemplates::composesTheSameAddressFromAParameterObject()
{
    QObject owner;
    const auto parameter = DBusConnectionParameter::createFromTavikInternal(
        QStringLiteral("EventlistHandler"), QStringLiteral("Pump"),
        QStringLiteral("Interface.Pump"));
    const auto* const connector =
        new DBusConnectorBase(parameter, &owner, DBusConnectorBase::defaultMode);
    QCOMPARE(connector->parent(), &owner);
    QCOMPARE(connector->getServiceName(), PumpConnector().getServiceName());
    QCOMPARE(connector->getDBusPath(), QStringLiteral("/Pump"));
    QVERIFY(connector->isDBusInterfaceValid());
}

void tst_CallTemplates::isNeverValidWithANameThatDBusForbids_data()
{
    QTest::addColumn<QString>("moduleName");
    QTest::addColumn<QString>("objectName");
    QTest::newRow("blank in the module name") << QStringLiteral("Event list") << start;
    QTest::newRow("module name that begins with a digit") << QStringLiteral("1pump") << start;
    QTest::newRow("empty module name") << QString() << start;
    QTest::newRow("module name of 256 characters") << QString(256, QLatin1Char('a')) << start;
    QTest::newRow("U+0000 in the module name") << QString(QChar(0)) << start;
    QTest::newRow("minus sign in the object name")
        << QStringLiteral("EventlistHandler") << QStringLiteral("my-pump");
    QTest::newRow("slash at the end of the object name")
        << QStringLiteral("EventlistHandler") << QStringLiteral("Pump/");
}

void tst_CallTemplates::isNeverValidWithANameThatDBusForbids()
{
    QFETCH(QString, moduleName);
    QFETCH(QString, objectName);
    const PumpConnector connector(moduleName, objectName);
    QVERIFY(!connector.isDBusInterfaceValid());
    expectRefusedCall(connector);
    QVERIFY(connector.syncCallNoBlock(start).isError());
}

void tst_CallTemplates::sendsEachArgumentAsTheTypeOfItsValue_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QString>("json");
    const auto text = [](const char* ascii) { return QString::fromLatin1(ascii); };
    QTest::newRow("text") << QVariant(QStringLiteral("Überdruck")) << text("s")
                          << QStringLiteral("[\"Überdruck\"]");
    QTest::newRow("empty text") << QVariant(QString()) << text("s") << text("[\"\"]");
    QTest::newRow("list of texts")
        << QVariant(QStringList{text("a"), text("b")}) << text("as") << text("[[\"a\",\"b\"]]");
    QTest::newRow("empty list") << QVariant(QStringList()) << text("as") << text("[[]]");
    QTest::newRow("int") << QVariant(-3) << text("i") << text("[-3]");
    QTest::newRow("long long") << QVariant(Q_INT64_C(4294967296)) << text("x")
                               << text("[4294967296]");
    QTest::newRow("bool") << QVariant(true) << text("b") << text("[true]");
    QTest::newRow("double") << QVariant(1.5) << text("d") << text("[1.5]");
    QTest::newRow("map") << QVariant(QVariantMap{{text("key"), text("x")}}) << text("a{sv}")
                         << text("[{\"key\":{\"value\":\"x\",\"variant\":\"s\"}}]");
}

void tst_CallTemplates::sendsEachArgumentAsTheTypeOfItsValue()
{
    QFETCH(QVariant, value);
    QFETCH(QString, signature);
    QFETCH(QString, json);

    PumpConnector().syncCallNoBlock(start, value);

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].signature, signature);
    QCOMPARE(QString::fromUtf8(QJsonDocument(received[0].arguments).toJson(QJsonDocument::Compact)),
             json);
}

void tst_CallTemplates::sendsTenArguments()
{
    const QStringList list;
    PumpConnector().syncCallNoBlock(start, start, list, list, list, list, Q_INT64_C(1),
                                    Q_INT64_C(2), list, 3, true);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].signature, QStringLiteral("sasasasasxxasib"));
}

void tst_CallTemplates::asynchronousCallExpectsAReply()
{
    const DBusPendingReply::SharedPointer reply = PumpConnector().asyncCallHelper(start, start);
    QVERIFY(!reply.isNull());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QVERIFY(received[0].isReplyExpected);
    QCOMPARE(received[0].signature, QStringLiteral("s"));
}

void tst_CallTemplates::asynchronousCallHandsOutTheAnswer()
{
    QVERIFY(m_service.answer(start, QStringLiteral("si"), {QStringLiteral("done"), 7}));
    const PumpConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.asyncCallHelper(start);
    QVERIFY(!reply.isNull());
    QSignalSpy finished(reply.data(), &DBusPendingReply::finished);

    QTRY_COMPARE(finished.size(), 1);

    QVERIFY(reply->isFinished());
    QVERIFY(!reply->isError());
    QCOMPARE(reply->values(), (QVariantList{QStringLiteral("done"), 7}));
}

void tst_CallTemplates::asynchronousCallHandsOutTheErrorOfTheService()
{
    QVERIFY(m_service.answerError(start, QStringLiteral("org.example.Stuck"),
                                  QStringLiteral("The pump is stuck")));
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);

    const DBusPendingReply::SharedPointer reply = connector.asyncCallHelper(start);

    QVERIFY(!reply.isNull());
    reply->waitForFinished();
    QVERIFY(reply->isError());
    QCOMPARE(reply->error().name(), QStringLiteral("org.example.Stuck"));
    QCOMPARE(reply->error().message(), QStringLiteral("The pump is stuck"));
    QVERIFY(reply->values().isEmpty());
    QCOMPARE(connectionErrors.size(), 0);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_CallTemplates::asynchronousCallToAnAbsentServiceWarnsOnceAndGivesNull()
{
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    expectRefusedQuery(connector);

    QVERIFY(connector.asyncCallHelper(start, start).isNull());

    QCOMPARE(connectionErrors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(1));
}

void tst_CallTemplates::pendingReplyOutlivesItsConnectorAndCanBeTracked()
{
    QVERIFY(m_service.hold(start));
    DBusPendingReply::SharedPointer reply;
    {
        const PumpConnector connector;
        reply = connector.asyncCallHelper(start);
    }
    const QWeakPointer<DBusPendingReply> observer = reply;
    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    QVERIFY(!reply->isFinished());

    QCOMPARE(m_service.release(QStringLiteral("s"), {QStringLiteral("late")}), 1);

    QTRY_VERIFY(reply->isFinished());
    QCOMPARE(reply->values(), QVariantList{QStringLiteral("late")});
    reply.reset();
    QVERIFY(observer.isNull());
}

void tst_CallTemplates::nonBlockingCallIsMarkedAsExpectingNoReply()
{
    const DBusReply reply = PumpConnector().syncCallNoBlock(start, true);
    QVERIFY(!reply.isError());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QVERIFY(!received[0].isReplyExpected);
    QVERIFY(received[0].isAutoStartAllowed);
    QCOMPARE(received[0].signature, QStringLiteral("b"));
}

void tst_CallTemplates::nonBlockingCallLogsNothingWhenTheServiceRefuses()
{
    QVERIFY(m_service.answerError(start, QStringLiteral("org.example.Stuck"),
                                  QStringLiteral("The pump is stuck")));
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);

    const DBusReply reply = connector.syncCallNoBlock(start, start);

    QCOMPARE(m_service.received().size(), 1);
    QVERIFY(!reply.isError());
    QVERIFY(reply.getErrorText().isEmpty());
    QCOMPARE(connectionErrors.size(), 0);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_CallTemplates::nonBlockingCallToAnAbsentServiceWarnsTwice()
{
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    expectRefusedCall(connector);

    const DBusReply reply = connector.syncCallNoBlock(start, QStringList(), start);

    QVERIFY(reply.isError());
    QCOMPARE(reply.getErrorCode(), ErrorContainer::getDefaultErrorCode());
    QCOMPARE(reply.getErrorText(), connector.getInvalidDBusInterfaceMessage());
    QCOMPARE(connectionErrors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(1));
}

void tst_CallTemplates::blockingCallReadsTheReplyInsideTheVariant()
{
    const QJsonObject value{{QStringLiteral("variant"), QStringLiteral("s")},
                            {QStringLiteral("value"), QStringLiteral("the value")}};
    QVERIFY(m_service.answerVariant(start, QStringLiteral("(isv)"),
                                    QJsonArray{42, QStringLiteral("refused"), value}));
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);

    const DBusReply reply = connector.syncCallHelper(start, start);

    QCOMPARE(reply.getErrorCode(), 42);
    QCOMPARE(reply.getErrorText(), QStringLiteral("refused"));
    QCOMPARE(reply.getValue(), QVariant(QStringLiteral("the value")));
    QCOMPARE(connectionErrors.size(), 0);
    QVERIFY(m_service.received()[0].isReplyExpected);
}

void tst_CallTemplates::blockingCallWithoutAStructureGivesAnEmptyReply_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonArray>("values");
    const auto row = [](const char* name, const char* signature, const QJsonValue& value) {
        QTest::newRow(name) << QString::fromLatin1(signature) << QJsonArray{value};
    };
    row("text", "s", QStringLiteral("x"));
    row("number", "i", 3);
    row("list", "as", QJsonArray{QStringLiteral("x")});
    row("dictionary", "a{sv}", QJsonObject());
    row("array of variants", "av", QJsonArray());
    row("structure of another shape", "(ss)", QJsonArray{QStringLiteral("x"), QStringLiteral("y")});
    row("structure of one number", "(i)", QJsonArray{1});
    row("array of structures", "a(isv)", QJsonArray());
}

void tst_CallTemplates::blockingCallWithoutAStructureGivesAnEmptyReply()
{
    QFETCH(QString, signature);
    QFETCH(QJsonArray, values);
    QVERIFY(m_service.answerVariant(start, signature, values.at(0)));

    const DBusReply reply = PumpConnector().syncCallHelper(start);

    QVERIFY(!reply.isError());
    QVERIFY(reply.getErrorText().isEmpty());
    QVERIFY(!reply.getValue().isValid());
}

void tst_CallTemplates::blockingCallThatFailsWarnsTwice_data()
{
    QTest::addColumn<bool>("isError");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("message");
    QTest::newRow("error with a text")
        << true << QStringLiteral("The pump is stuck") << QStringLiteral("The pump is stuck");
    QTest::newRow("error without a text") << true << QString() << QString();
    QTest::newRow("answer that is no variant")
        << false << QStringLiteral("s")
        << QStringLiteral("Unexpected reply signature: got \"s\" (QString), expected \"v\" "
                          "(QDBusVariant)");
    QTest::newRow("answer without a value")
        << false << QString()
        << QStringLiteral("Unexpected reply signature: got \"<empty signature>\", expected \"v\" "
                          "(QDBusVariant)");
}

void tst_CallTemplates::blockingCallThatFailsWarnsTwice()
{
    QFETCH(bool, isError);
    QFETCH(QString, answer);
    QFETCH(QString, message);
    const QJsonArray values = answer.isEmpty() ? QJsonArray() : QJsonArray{start};
    QVERIFY(isError ? m_service.answerError(start, QStringLiteral("org.example.Stuck"), answer)
                    : m_service.answer(start, answer, values));
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    const QString text = QStringLiteral("D-Bus call to method start failed: %1!").arg(message);
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(quoted(text), QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }

    const DBusReply reply = connector.syncCallHelper(start, 1);

    QCOMPARE(reply.getErrorCode(), ErrorContainer::getDefaultErrorCode());
    QCOMPARE(reply.getErrorText(), text);
    QCOMPARE(connectionErrors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(0));
}

void tst_CallTemplates::blockingCallToAnAbsentServiceWarnsTwice()
{
    const PumpConnector connector;
    QSignalSpy connectionErrors(&connector, &DBusConnectorBase::dBusConnectionError);
    QVERIFY(takeServiceAway());
    const QString text = connector.getInvalidDBusInterfaceMessage();
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(quoted(text), QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallHelper"));
    }

    const DBusReply reply = connector.syncCallHelper(start);

    QCOMPARE(reply.getErrorCode(), ErrorContainer::getDefaultErrorCode());
    QCOMPARE(reply.getErrorText(), text);
    QCOMPARE(connectionErrors.size(), 1);
    QCOMPARE(connector.getRefusedCallCount(), quint64(1));
}

void tst_CallTemplates::countsTheCallsThatWereRefused()
{
    const PumpConnector connector;
    const PumpConnector other;
    QVERIFY(takeServiceAway());
    expectRefusedCall(connector);
    expectRefusedQuery(connector);
    connector.syncCallNoBlock(start);
    connector.asyncCallHelper(start);
    QCOMPARE(connector.getRefusedCallCount(), quint64(2));
    QCOMPARE(other.getRefusedCallCount(), quint64(0));
}

void tst_CallTemplates::isValidAgainWhenTheServiceIsBack()
{
    const PumpConnector connector;
    QVERIFY(takeServiceAway());
    QVERIFY(!connector.isDBusInterfaceValid());
    QVERIFY(bringServiceBack());
    QVERIFY(connector.isDBusInterfaceValid());
    QVERIFY(!connector.syncCallNoBlock(start).isError());
    QCOMPARE(m_service.received().size(), 1);
}

void tst_CallTemplates::connectsItsServicesOnlyFromInitObjectOn()
{
    PumpConnector connector;
    QVERIFY(connector.isDBusInterfaceValid());
    QVERIFY(!connector.syncCallNoBlock(start).isError());
    QCOMPARE(m_service.received().size(), 1);
    QCOMPARE(connector.connectCount, 0);

    connector.initObject();
    QCOMPARE(connector.connectCount, 1);
}

void tst_CallTemplates::connectsItsServicesOnceForEachBusConnection()
{
    PumpConnector connector;
    connector.initObject();

    // A restart of the service changes nothing for a subscription.
    QVERIFY(takeServiceAway());
    QVERIFY(bringServiceBack());
    QVERIFY(takeWhatWasSent());
    QCOMPARE(connector.connectCount, 1);

    for (int restarts = 1; restarts <= 3; ++restarts)
    {
        QVERIFY(takeBusAway());
        QVERIFY(bringBusBack());
        QTRY_COMPARE(connector.connectCount, 1 + restarts);
        QVERIFY(takeWhatWasSent());
        QCOMPARE(connector.connectCount, 1 + restarts);
        QCOMPARE(connector.connectThread, QThread::currentThread());
    }
}

QTEST_GUILESS_MAIN(tst_CallTemplates)
#include "tst_CallTemplates.moc"
