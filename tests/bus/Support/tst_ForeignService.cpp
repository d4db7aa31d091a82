#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/WarningRecorder.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QSignalSpy>
#include <QTest>

namespace
{
const QString serviceName = QStringLiteral("org.example.Pump");
const QString connectionName = QStringLiteral("sender");

QDBusMessage call(const char* member, const QVariantList& arguments = {})
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(serviceName, QStringLiteral("/Pump"),
                                       QStringLiteral("Interface.Pump"), QLatin1String(member));
    message.setArguments(arguments);
    return message;
}
} // namespace

class tst_ForeignService : public QObject
{
    Q_OBJECT
public:
    Q_SIGNAL void levelChanged(bool isHigh, const QString& tank);

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cleanupTestCase() { QDBusConnection::disconnectFromBus(connectionName); }

    void recordsACallWithSignatureArgumentsAndFlag();
    void recordsWhetherAReplyIsExpected();
    void recordsWhetherTheServiceMayBeStarted();
    void recordsEveryPathAndInterface();
    void recordsValuesOfEachType_data();
    void recordsValuesOfEachType();
    void recordsASignalForItself();
    void keepsTheOrder();
    void showsThatNothingWasSent();
    void forgetsItsRecords();

    void answersEmptyWithoutARule();
    void answersWithValues();
    void answersWithAVariant();
    void answersWithAnError_data();
    void answersWithAnError();
    void answersNothing();
    void answersLater();
    void refusesARuleWithMistakes_data();
    void refusesARuleWithMistakes();

    void sendsASignal();
    void sendsASignalSeveralTimes();

    void ownsItsNameUntilItEnds();
    void takesAndGivesBackANameWhileItRuns();
    void doesNotStartWhenItsNameIsTaken();
    void startsAnewWithoutRecordsAndRules();
    void isAsGoodAsNewAfterAReset();
    void standsStillAndGoesOn();
    void keepsItsRecordsOverARestartOfTheBus();
    void saysThatItDoesNotAnswer();

    void theMonitorSeesTheTrafficOfOthers();

private:
    QDBusConnection sender() const { return QDBusConnection(connectionName); }
    QDBusMessage askFor(const char* member, int timeoutMs = int(defaultDeadline.count())) const
    {
        return sender().call(call(member), QDBus::Block, timeoutMs);
    }

    WarningRecorder m_warnings;
    PrivateBus m_bus;
    ForeignService m_service{m_bus, serviceName};
};

void tst_ForeignService::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY(m_bus.connect(connectionName).isConnected());
}

void tst_ForeignService::init()
{
    m_warnings.start();
    const bool isUsable = m_service.isRunning() && m_bus.hasOwner(serviceName);
    QVERIFY2(isUsable ? m_service.reset() : m_service.restart(), m_service.errorText());
}

void tst_ForeignService::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_ForeignService::recordsACallWithSignatureArgumentsAndFlag()
{
    const QStringList attributes{QStringLiteral("0"), QStringLiteral("1"), QString()};
    QVERIFY(sender().send(call("logEvent", {attributes, QStringLiteral("Übertemperatur"), 7})));

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 1);
    const RecordedMessage message = received.at(0);
    QCOMPARE(message.kind, QStringLiteral("call"));
    QCOMPARE(message.sender, sender().baseService());
    QCOMPARE(message.destination, serviceName);
    QCOMPARE(message.path, QStringLiteral("/Pump"));
    QCOMPARE(message.interface, QStringLiteral("Interface.Pump"));
    QCOMPARE(message.member, QStringLiteral("logEvent"));
    QCOMPARE(message.signature, QStringLiteral("assi"));
    QCOMPARE(message.arguments, (QJsonArray{QJsonArray::fromStringList(attributes),
                                            QStringLiteral("Übertemperatur"), 7}));
    QVERIFY(!message.isReplyExpected);
    QVERIFY(message.isAutoStartAllowed);
    QVERIFY(message.serial > 0);
    QCOMPARE(message.toText(), QByteArray("call /Pump Interface.Pump.logEvent \"assi\" "
                                          "[[\"0\",\"1\",\"\"],\"Übertemperatur\",7] "
                                          "no reply expected"));
}

void tst_ForeignService::recordsWhetherAReplyIsExpected()
{
    sender().call(call("first"), QDBus::NoBlock);
    sender().asyncCall(call("second"));
    askFor("third");

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 3);
    QVERIFY(!received.at(0).isReplyExpected);
    QVERIFY(received.at(1).isReplyExpected);
    QVERIFY(received.at(2).isReplyExpected);
}

void tst_ForeignService::recordsWhetherTheServiceMayBeStarted()
{
    QDBusMessage message = call("start");
    message.setAutoStartService(false);
    sender().send(message);
    sender().send(call("start"));

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 2);
    QVERIFY(!received.at(0).isAutoStartAllowed);
    QVERIFY(received.at(1).isAutoStartAllowed);
}

void tst_ForeignService::recordsEveryPathAndInterface()
{
    sender().send(QDBusMessage::createMethodCall(serviceName, QStringLiteral("/a/b"),
                                                 QStringLiteral("x.Y"), QStringLiteral("one")));
    sender().send(QDBusMessage::createMethodCall(serviceName, QStringLiteral("/"), QString(),
                                                 QStringLiteral("two")));

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 2);
    QCOMPARE(received.at(0).path, QStringLiteral("/a/b"));
    QCOMPARE(received.at(0).interface, QStringLiteral("x.Y"));
    QCOMPARE(received.at(1).path, QStringLiteral("/"));
    QCOMPARE(received.at(1).interface, QString());
}

void tst_ForeignService::recordsValuesOfEachType_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonValue>("recorded");

    const auto variant = [](const char* signature, const QJsonValue& value) {
        return QJsonObject{{QStringLiteral("variant"), QLatin1String(signature)},
                           {QStringLiteral("value"), value}};
    };
    const auto row = [](const char* name, const QVariant& value, const char* signature,
                        const QJsonValue& recorded) {
        QTest::newRow(name) << value << QString(QLatin1String(signature)) << recorded;
    };

    row("string", QStringLiteral("ä\"\n"), "s", QStringLiteral("ä\"\n"));
    row("empty string", QString(), "s", QStringLiteral(""));
    row("true", true, "b", true);
    row("int", -5, "i", -5);
    row("unsigned int", 4000000000u, "u", 4000000000.0);
    row("long long", qint64(1) << 40, "x", double(qint64(1) << 40));
    row("long long that JSON rounds", (qint64(1) << 53) + 1, "x",
        QStringLiteral("9007199254740993"));
    row("double", 1.5, "d", 1.5);
    row("strings", QStringList{QStringLiteral("a"), QString()}, "as",
        QJsonArray::fromStringList({QStringLiteral("a"), QString()}));
    row("no strings", QStringList(), "as", QJsonArray());
    row("bytes", QByteArray("\x01\xff"), "ay", QJsonArray{1, 255});
    row("map", QVariantMap{{QStringLiteral("k"), 1}}, "a{sv}",
        QJsonObject{{QStringLiteral("k"), variant("i", 1)}});
    row("empty map", QVariantMap(), "a{sv}", QJsonObject());
    row("variant", QVariant::fromValue(QDBusVariant(true)), "v", variant("b", true));
    row("variant in a variant",
        QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(QStringLiteral("x"))))),
        "v", variant("v", variant("s", QStringLiteral("x"))));
    row("list of maps", QVariantList{QVariantMap{{QStringLiteral("k"), QStringLiteral("v")}}}, "av",
        QJsonArray{variant("a{sv}",
                           QJsonObject{{QStringLiteral("k"), variant("s", QStringLiteral("v"))}})});
}

void tst_ForeignService::recordsValuesOfEachType()
{
    QFETCH(QVariant, value);
    sender().send(call("take", {value}));

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 1);
    QTEST(received.at(0).signature, "signature");
    QCOMPARE(received.at(0).arguments.size(), 1);
    QTEST(QJsonValue(received.at(0).arguments.at(0)), "recorded");
}

void tst_ForeignService::recordsASignalForItself()
{
    QDBusMessage signal = QDBusMessage::createTargetedSignal(serviceName, QStringLiteral("/Pump"),
                                                             QStringLiteral("Interface.Pump"),
                                                             QStringLiteral("levelChanged"));
    sender().send(signal);

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), 1);
    QCOMPARE(received.at(0).kind, QStringLiteral("signal"));
    QCOMPARE(received.at(0).member, QStringLiteral("levelChanged"));
}

void tst_ForeignService::keepsTheOrder()
{
    constexpr int count = 5000;
    for (int i = 0; i < count; ++i)
    {
        sender().send(call("take", {i}));
    }

    const QVector<RecordedMessage> received = m_service.received(sender());

    QCOMPARE(received.size(), count);
    QCOMPARE(m_service.countSoFar(), count);
    for (int i = 0; i < count; ++i)
    {
        QCOMPARE(received.at(i).arguments, QJsonArray{i});
    }
}

void tst_ForeignService::showsThatNothingWasSent()
{
    // Nothing arrives, and the answer to that is not a matter of time.
    QVERIFY(m_service.received(sender()).isEmpty());

    sender().send(call("take"));
    QCOMPARE(m_service.received(sender()).size(), 1);
    QCOMPARE(m_service.received(sender()).size(), 1);
}

void tst_ForeignService::forgetsItsRecords()
{
    sender().send(call("take"));
    QCOMPARE(m_service.received(sender()).size(), 1);

    m_service.clear();

    QVERIFY(m_service.received(sender()).isEmpty());
}

void tst_ForeignService::answersEmptyWithoutARule()
{
    const QDBusMessage answer = askFor("anything");

    QCOMPARE(answer.type(), QDBusMessage::ReplyMessage);
    QVERIFY(answer.arguments().isEmpty());
}

void tst_ForeignService::answersWithValues()
{
    const qint64 large = std::numeric_limits<qint64>::max();
    const QJsonArray values{QStringLiteral("a"), 5, QString::number(large), true,
                            QJsonArray{QStringLiteral("x"), QStringLiteral("y")}};
    QVERIFY2(m_service.answer(QStringLiteral("get"), QStringLiteral("sixbas"), values),
             m_service.errorText());

    const QVariantList arguments = askFor("get").arguments();

    QCOMPARE(arguments, (QVariantList{QStringLiteral("a"), 5, large, true,
                                      QStringList{QStringLiteral("x"), QStringLiteral("y")}}));
    QVERIFY(askFor("other").arguments().isEmpty());
}

void tst_ForeignService::answersWithAVariant()
{
    const QJsonArray structure{4, QStringLiteral("text"),
                               QJsonObject{{QStringLiteral("variant"), QStringLiteral("b")},
                                           {QStringLiteral("value"), true}}};
    QVERIFY2(m_service.answerVariant(QStringLiteral("get"), QStringLiteral("(isv)"), structure),
             m_service.errorText());

    const QDBusMessage answer = askFor("get");

    QCOMPARE(answer.signature(), QStringLiteral("v"));
    const QDBusArgument argument =
        answer.arguments().at(0).value<QDBusVariant>().variant().value<QDBusArgument>();
    QCOMPARE(argument.currentSignature(), QStringLiteral("(isv)"));
    int number = 0;
    QString text;
    QDBusVariant variant;
    argument.beginStructure();
    argument >> number >> text >> variant;
    argument.endStructure();
    QCOMPARE(number, 4);
    QCOMPARE(text, QStringLiteral("text"));
    QCOMPARE(variant.variant(), QVariant(true));
}

void tst_ForeignService::answersWithAnError_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("with text") << QStringLiteral("The pump is dry");
    QTest::newRow("without text") << QString();
}

void tst_ForeignService::answersWithAnError()
{
    QFETCH(QString, text);
    const QString name = QStringLiteral("org.example.Dry");
    QVERIFY(m_service.answerError(QStringLiteral("get"), name, text));

    const QDBusMessage answer = askFor("get");

    QCOMPARE(answer.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(answer.errorName(), name);
    QCOMPARE(answer.errorMessage(), text);
}

void tst_ForeignService::answersNothing()
{
    QVERIFY(m_service.answerNothing(QStringLiteral("get")));

    const QDBusMessage answer = askFor("get", 50);

    QCOMPARE(answer.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(answer.errorName(), QStringLiteral("org.freedesktop.DBus.Error.NoReply"));
    QCOMPARE(m_service.received(sender()).size(), 1);
}

void tst_ForeignService::answersLater()
{
    QVERIFY(m_service.hold(QStringLiteral("get")));
    QDBusPendingReply<QString> first = sender().asyncCall(call("get"));
    QDBusPendingReply<QString> second = sender().asyncCall(call("get"));
    QCOMPARE(m_service.received(sender()).size(), 2);
    QVERIFY(!first.isFinished());

    QCOMPARE(m_service.release(QStringLiteral("s"), {QStringLiteral("late")}), 2);

    first.waitForFinished();
    second.waitForFinished();
    QCOMPARE(first.value(), QStringLiteral("late"));
    QCOMPARE(second.value(), QStringLiteral("late"));
    QCOMPARE(m_service.release(), 0);
}

void tst_ForeignService::refusesARuleWithMistakes_data()
{
    QTest::addColumn<QString>("signature");
    QTest::addColumn<QJsonArray>("values");

    QTest::newRow("too few values") << QStringLiteral("ss") << QJsonArray{QStringLiteral("a")};
    QTest::newRow("too many values") << QString() << QJsonArray{QStringLiteral("a")};
    QTest::newRow("wrong type") << QStringLiteral("i") << QJsonArray{QStringLiteral("word")};
    QTest::newRow("no signature") << QStringLiteral("z") << QJsonArray{QStringLiteral("a")};
    QTest::newRow("short structure") << QStringLiteral("(is)") << QJsonArray{QJsonArray{1}};
}

void tst_ForeignService::refusesARuleWithMistakes()
{
    QFETCH(QString, signature);
    QFETCH(QJsonArray, values);

    QVERIFY(!m_service.answer(QStringLiteral("get"), signature, values));

    QVERIFY(qstrlen(m_service.errorText()) > 0);
    QCOMPARE(askFor("get").type(), QDBusMessage::ReplyMessage);
}

void tst_ForeignService::sendsASignal()
{
    QSignalSpy spy(this, &tst_ForeignService::levelChanged);
    QVERIFY(sender().connect(serviceName, QStringLiteral("/Pump"), QString(),
                             QStringLiteral("levelChanged"), this,
                             SIGNAL(levelChanged(bool, QString))));

    QVERIFY2(m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                  QStringLiteral("levelChanged"), QStringLiteral("bs"),
                                  {true, QStringLiteral("north")}),
             m_service.errorText());

    QTRY_COMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0), (QVariantList{true, QStringLiteral("north")}));
    QVERIFY(sender().disconnect(serviceName, QStringLiteral("/Pump"), QString(),
                                QStringLiteral("levelChanged"), this,
                                SIGNAL(levelChanged(bool, QString))));
}

void tst_ForeignService::sendsASignalSeveralTimes()
{
    QSignalSpy spy(this, &tst_ForeignService::levelChanged);
    QVERIFY(sender().connect(serviceName, QStringLiteral("/Pump"), QString(),
                             QStringLiteral("levelChanged"), this,
                             SIGNAL(levelChanged(bool, QString))));

    QVERIFY(m_service.emitSignal(QStringLiteral("/Pump"), QStringLiteral("Interface.Pump"),
                                 QStringLiteral("levelChanged"), QStringLiteral("bs"),
                                 {false, QString()}, 100));

    QTRY_COMPARE(spy.count(), 100);
    sender().disconnect(serviceName, QStringLiteral("/Pump"), QString(),
                        QStringLiteral("levelChanged"), this, SIGNAL(levelChanged(bool, QString)));
}

void tst_ForeignService::ownsItsNameUntilItEnds()
{
    QVERIFY(m_bus.hasOwner(serviceName));
    QVERIFY(m_service.uniqueName().startsWith(QLatin1Char(':')));

    QVERIFY(m_service.stop());

    QVERIFY(!m_service.isRunning());
    QTRY_VERIFY(!m_bus.hasOwner(serviceName));
}

void tst_ForeignService::takesAndGivesBackANameWhileItRuns()
{
    const QString other = QStringLiteral("org.example.Valve");
    QVERIFY2(m_service.own(other), m_service.errorText());
    QVERIFY(m_bus.hasOwner(other));

    QVERIFY(m_service.disown(serviceName));
    QVERIFY(!m_bus.hasOwner(serviceName));
    QVERIFY(m_bus.hasOwner(other));
    QVERIFY(m_service.isRunning());
}

void tst_ForeignService::doesNotStartWhenItsNameIsTaken()
{
    ForeignService second(m_bus, serviceName);

    QVERIFY(!second.start());

    QVERIFY2(QByteArray(second.errorText()).contains("has another owner"), second.errorText());
    QVERIFY(!second.isRunning());
}

void tst_ForeignService::startsAnewWithoutRecordsAndRules()
{
    QVERIFY(m_service.answer(QStringLiteral("get"), QStringLiteral("s"), {QStringLiteral("old")}));
    QCOMPARE(askFor("get").arguments(), QVariantList{QStringLiteral("old")});
    const qint64 processId = m_service.processId();

    QVERIFY2(m_service.restart(), m_service.errorText());

    QVERIFY(m_service.processId() != processId);
    QVERIFY(m_bus.hasOwner(serviceName));
    QVERIFY(m_service.received(sender()).isEmpty());
    QVERIFY(askFor("get").arguments().isEmpty());
}

void tst_ForeignService::isAsGoodAsNewAfterAReset()
{
    QVERIFY(m_service.answer(QStringLiteral("get"), QStringLiteral("s"), {QStringLiteral("old")}));
    QVERIFY(m_service.hold(QStringLiteral("wait")));
    QDBusPendingCall pending = sender().asyncCall(call("wait"));
    askFor("get");
    QCOMPARE(m_service.received(sender()).size(), 2);

    QVERIFY2(m_service.reset(), m_service.errorText());

    QVERIFY(m_service.received(sender()).isEmpty());
    QCOMPARE(m_service.release(), 0);
    QVERIFY(!pending.isFinished());
    QVERIFY(askFor("get").arguments().isEmpty());
    QCOMPARE(m_service.received(sender()).size(), 1);
}

void tst_ForeignService::standsStillAndGoesOn()
{
    QVERIFY(m_service.freeze());
    QVERIFY(m_bus.hasOwner(serviceName));
    QDBusPendingCall pending = sender().asyncCall(call("get"));
    QCOMPARE(askFor("get", 50).type(), QDBusMessage::ErrorMessage);
    QVERIFY(!pending.isFinished());

    m_service.thaw();

    pending.waitForFinished();
    QVERIFY(!pending.isError());
    QCOMPARE(m_service.received(sender()).size(), 2);
}

void tst_ForeignService::keepsItsRecordsOverARestartOfTheBus()
{
    sender().send(call("before"));
    QCOMPARE(m_service.received(sender()).size(), 1);
    QDBusConnection::disconnectFromBus(connectionName);

    QVERIFY2(m_bus.restart(), m_bus.errorText());
    QVERIFY(!m_bus.hasOwner(serviceName));
    QVERIFY2(m_service.reconnect(), m_service.errorText());
    QVERIFY(m_bus.connect(connectionName).isConnected());

    QVERIFY(m_bus.hasOwner(serviceName));
    sender().send(call("after"));
    const QVector<RecordedMessage> received = m_service.received(sender());
    QCOMPARE(received.size(), 2);
    QCOMPARE(received.at(0).member, QStringLiteral("before"));
    QCOMPARE(received.at(1).member, QStringLiteral("after"));
}

void tst_ForeignService::saysThatItDoesNotAnswer()
{
    m_service.kill();
    m_warnings.expectMatch(QStringLiteral(
        "ForeignService: \"The service does not answer over the sender's connection: .*\""));

    QVERIFY(m_service.received(sender()).isEmpty());

    QVERIFY(!m_service.own(QStringLiteral("org.example.Valve")));
    QCOMPARE(QByteArray(m_service.errorText()), QByteArray("The service does not run"));
    QCOMPARE(m_service.countSoFar(), -1);
}

void tst_ForeignService::theMonitorSeesTheTrafficOfOthers()
{
    BusMonitor monitor(m_bus);
    QVERIFY2(monitor.start(), monitor.errorText());

    QVERIFY(!m_bus.hasOwner(QStringLiteral("org.example.Valve")));
    askFor("get");

    const auto countOf = [&monitor](const char* kind, const char* member) {
        int count = 0;
        for (const RecordedMessage& message : monitor.receivedSoFar())
        {
            count +=
                int(message.kind == QLatin1String(kind) && message.member == QLatin1String(member));
        }
        return count;
    };
    QTRY_COMPARE(countOf("call", "get"), 1);
    QCOMPARE(countOf("call", "NameHasOwner"), 1);
    QTRY_VERIFY(countOf("reply", "") >= 2);
    QVERIFY(m_service.received(sender()).size() == 1);
}

QTEST_GUILESS_MAIN(tst_ForeignService)
#include "tst_ForeignService.moc"
