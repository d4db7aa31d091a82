#include "Common/TestConnector.h"

#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"
#include "TestSupport/WarningRecorder.h"

#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QWeakPointer>

class tst_DBusPendingReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void isUnfinishedUntilTheAnswerIsThere();
    void handsOutTheValues();
    void tellsItsEndOnceToEveryListener();
    void tellsItsEndToALateListener();
    void reportsAnError();
    void reportsACallThatWasNeverPlaced();
    void reportsTheLossOfTheService();
    void reportsTheLossOfTheBus();
    void canBeReleasedBeforeTheAnswer();
    void isTrackedByWeakPointers();

private:
    PrivateBus m_bus;
    ForeignService m_service{m_bus, ForeignService::centralServiceName()};
    WarningRecorder m_warnings;
};

void tst_DBusPendingReply::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
}

void tst_DBusPendingReply::init()
{
    m_warnings.start();
    QVERIFY(m_service.answer(QStringLiteral("state"), QStringLiteral("sai"),
                             {QStringLiteral("running"), QJsonArray{1, 2}}));
    QVERIFY(m_service.hold(QStringLiteral("later")));
}

void tst_DBusPendingReply::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_DBusPendingReply::isUnfinishedUntilTheAnswerIsThere()
{
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("later"));
    QVERIFY(!reply.isNull());

    QVERIFY(!reply->isFinished());
    QVERIFY(!reply->isError());
    QVERIFY(reply->values().isEmpty());
    QCOMPARE(reply->error().type(), QDBusError::NoError);

    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    QCOMPARE(m_service.release(QStringLiteral("s"), {QStringLiteral("now")}), 1);
    reply->waitForFinished();
    QVERIFY(reply->isFinished());
    QCOMPARE(reply->values(), QVariantList{QStringLiteral("now")});
}

void tst_DBusPendingReply::handsOutTheValues()
{
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("state"));
    reply->waitForFinished();

    QVERIFY(!reply->isError());
    QCOMPARE(reply->values().size(), 2);
    QCOMPARE(reply->values().at(0), QVariant(QStringLiteral("running")));
    QCOMPARE(qdbus_cast<QList<int>>(reply->values().at(1)), QList<int>({1, 2}));
}

void tst_DBusPendingReply::tellsItsEndOnceToEveryListener()
{
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("later"));
    QSignalSpy first(reply.data(), &DBusPendingReply::finished);
    QSignalSpy second(reply.data(), &DBusPendingReply::finished);
    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    QCOMPARE(m_service.release(), 1);

    QVERIFY(waitUntil([&] { return first.size() == 1; }));
    QCoreApplication::processEvents();
    QCOMPARE(first.size(), 1);
    QCOMPARE(second.size(), 1);
    QVERIFY(reply->isFinished());
}

void tst_DBusPendingReply::tellsItsEndToALateListener()
{
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("state"));
    reply->waitForFinished();
    QSignalSpy ends(reply.data(), &DBusPendingReply::finished);

    QCOMPARE(ends.size(), 0);
    QVERIFY(waitUntil([&] { return ends.size() == 1; }));
}

void tst_DBusPendingReply::reportsAnError()
{
    QVERIFY(m_service.answerError(QStringLiteral("state"), QStringLiteral("org.example.Refused"),
                                  QStringLiteral("not now")));
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("state"));
    reply->waitForFinished();

    QVERIFY(reply->isError());
    QCOMPARE(reply->error().name(), QStringLiteral("org.example.Refused"));
    QCOMPARE(reply->error().message(), QStringLiteral("not now"));
    QVERIFY(reply->values().isEmpty());
}

void tst_DBusPendingReply::reportsACallThatWasNeverPlaced()
{
    DBusPendingReply reply(QDBusConnection(QString()).asyncCall(QDBusMessage::createMethodCall(
        QStringLiteral("org.example"), QStringLiteral("/"), QString(), QStringLiteral("state"))));
    QSignalSpy ends(&reply, &DBusPendingReply::finished);

    QVERIFY(reply.isFinished());
    QVERIFY(reply.isError());
    QCOMPARE(reply.error().type(), QDBusError::Disconnected);
    QVERIFY(waitUntil([&] { return ends.size() == 1; }));
}

void tst_DBusPendingReply::reportsTheLossOfTheService()
{
    const TestConnector connector;
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("later"));
    QSignalSpy ends(reply.data(), &DBusPendingReply::finished);
    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    QVERIFY(m_service.restart());

    QVERIFY(waitUntil([&] { return ends.size() == 1; }));
    QCOMPARE(reply->error().type(), QDBusError::NoReply);
}

void tst_DBusPendingReply::reportsTheLossOfTheBus()
{
    const TestConnector connector;
    QVERIFY(waitUntil([&] { return connector.isDBusInterfaceValid(); }));
    const DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("later"));
    QVERIFY(!reply.isNull());
    QSignalSpy ends(reply.data(), &DBusPendingReply::finished);
    QVERIFY(m_bus.restart() && m_service.reconnect());

    QVERIFY(waitUntil([&] { return ends.size() == 1; }));
    QVERIFY(reply->isError());
}

void tst_DBusPendingReply::canBeReleasedBeforeTheAnswer()
{
    const TestConnector connector;
    QVERIFY(waitUntil([&] { return connector.isDBusInterfaceValid(); }));
    DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("later"));
    QSignalSpy ends(reply.data(), &DBusPendingReply::finished);
    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    reply.clear();
    QVERIFY(m_service.release() >= 1);

    QVERIFY(m_service.synchronise(DBusConnection::getQDBusConnection()));
    QCoreApplication::processEvents();
    QCOMPARE(ends.size(), 0);
}

void tst_DBusPendingReply::isTrackedByWeakPointers()
{
    const TestConnector connector;
    DBusPendingReply::SharedPointer reply = connector.ask(QStringLiteral("state"));
    const QWeakPointer<DBusPendingReply> weak = reply.toWeakRef();
    const QPointer<DBusPendingReply> tracked(reply.data());

    QVERIFY(!weak.isNull() && !tracked.isNull());
    reply.clear();
    QVERIFY(weak.isNull() && tracked.isNull());
}

QTEST_GUILESS_MAIN(tst_DBusPendingReply)
#include "tst_DBusPendingReply.moc"
