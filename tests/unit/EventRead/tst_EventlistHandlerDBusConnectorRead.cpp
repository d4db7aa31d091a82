#include "EventRead/EventlistHandlerDBusConnectorRead.h"

#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QDateTime>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <functional>

using Connector = EventlistHandlerDBusConnectorRead;
using Query = std::function<DBusPendingReply::SharedPointer(Connector&)>;

Q_DECLARE_METATYPE(Query)

PRIVATE_MEMBER(pollingHandlerOf, QSharedPointer<DBusConnectionSignalPollingHandler> Connector::*,
               &Connector::m_eventlistPollingHandler)

class tst_EventlistHandlerDBusConnectorRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void declaresOneSignalAndTwoProtectedSlots();
    void addressesTheReadObject();
    void isFlaggedNoChangeAtFirst();
    void refusesToBePolledInSignalMode();
    void refusesToBePolledWithoutAHandler();
    void warnsWhenItCannotSubscribe();
    void subscribesToNothingInPollingMode();
    void refusesAQueryWithoutABus_data();
    void refusesAQueryWithoutABus();

private:
    void expectFailedSubscription()
    {
        m_warnings.expect(QStringLiteral("Cannot connect to signal 'changedEventlist'!"),
                          QStringLiteral("EventlistHandlerDBusConnectorRead"),
                          QStringLiteral("EventlistHandlerDBusConnectorRead::connectServices"));
    }

    WarningRecorder m_warnings;
};

void tst_EventlistHandlerDBusConnectorRead::declaresOneSignalAndTwoProtectedSlots()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;
    QStringList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i)
    {
        const QMetaMethod method = metaObject.method(i);
        methods.append(QStringLiteral("%1 %2 %3")
                           .arg(QString::fromLatin1(method.methodSignature()),
                                QString::number(method.methodType()),
                                QString::number(method.access())));
    }

    QCOMPARE(methods, QStringList({QStringLiteral("changedEventlist() 1 2"),
                                   QStringLiteral("connectServices() 2 1"),
                                   QStringLiteral("disconnectServices() 2 1")}));
}

void tst_EventlistHandlerDBusConnectorRead::addressesTheReadObject()
{
    const Connector connector(false);

    QVERIFY(connector.getServiceName().endsWith(QStringLiteral(".EventlistHandler")));
    QCOMPARE(connector.getDBusPath(), QStringLiteral("/EventlistRead"));
    QVERIFY(connector.parent() == nullptr);
    QVERIFY((connector.*pollingHandlerOf()).isNull());
}

void tst_EventlistHandlerDBusConnectorRead::isFlaggedNoChangeAtFirst()
{
    Connector connector(true);

    QVERIFY(!(connector.*pollingHandlerOf()).isNull());
    QVERIFY(!connector.changedFlagEventlist());
    QVERIFY(!connector.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::refusesToBePolledInSignalMode()
{
    Connector connector(false);
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(
            QStringLiteral("PollingMode not active"),
            QStringLiteral("EventlistHandlerDBusConnectorRead"),
            QStringLiteral("EventlistHandlerDBusConnectorRead::changedFlagEventlist"));

        QVERIFY(!connector.changedFlagEventlist());
    }
}

void tst_EventlistHandlerDBusConnectorRead::refusesToBePolledWithoutAHandler()
{
    Connector connector(true);
    (connector.*pollingHandlerOf()).reset();
    m_warnings.expect(QStringLiteral("Nollpointer access"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead"),
                      QStringLiteral("EventlistHandlerDBusConnectorRead::changedFlagEventlist"));

    QVERIFY(!connector.changedFlagEventlist());
}

void tst_EventlistHandlerDBusConnectorRead::warnsWhenItCannotSubscribe()
{
    expectFailedSubscription();

    const QSharedPointer<Connector> connector = Connector::createAndConnect(false);

    QVERIFY(!connector.isNull());
}

void tst_EventlistHandlerDBusConnectorRead::subscribesToNothingInPollingMode()
{
    const QSharedPointer<Connector> connector = Connector::createAndConnect(true);
    QSignalSpy changes(connector.data(), &Connector::changedEventlist);

    QVERIFY(!connector->changedFlagEventlist());
    QCOMPARE(changes.count(), 0);
}

void tst_EventlistHandlerDBusConnectorRead::refusesAQueryWithoutABus_data()
{
    QTest::addColumn<Query>("query");

    const QStringList none;
    QTest::newRow("getCompleteEventlist") << Query([](Connector& connector) {
        return connector.getCompleteEventlist(QStringLiteral("lang_en"));
    });
    QTest::newRow("getListOfEventTypes")
        << Query([](Connector& connector) { return connector.getListOfEventTypes(QString()); });
    QTest::newRow("getPartOfEventlist") << Query([=](Connector& connector) {
        return connector.getPartOfEventlist(QString(), none, none, none, none, QDateTime(),
                                            QDateTime(), none, -1);
    });
    QTest::newRow("getPartOfEventlistUnixTime") << Query([=](Connector& connector) {
        return connector.getPartOfEventlistUnixTime(QString(), none, none, none, none, 2, 1, none,
                                                    0);
    });
    QTest::newRow("getPartOfEventlistById") << Query([=](Connector& connector) {
        return connector.getPartOfEventlistById(QString(), none, none, none, none, 1, 2, none, 0,
                                                true);
    });
}

void tst_EventlistHandlerDBusConnectorRead::refusesAQueryWithoutABus()
{
    QFETCH(Query, query);
    Connector connector(false);
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);
    expectRefusedQuery(m_warnings, connector);

    QVERIFY(query(connector).isNull());

    QCOMPARE(errors.count(), 1);
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerDBusConnectorRead)
#include "tst_EventlistHandlerDBusConnectorRead.moc"
