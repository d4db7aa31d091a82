#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"

#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include "Platform/DBusConnectionSignalPollingHandler.h"

#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

using Connector = AlarmlistHandlerDBusConnectorRead;
using PollingHandler = QSharedPointer<DBusConnectionSignalPollingHandler>;

PRIVATE_MEMBER(listHandlerOf, PollingHandler Connector::*, &Connector::m_alarmlistPollingHandler)
PRIVATE_MEMBER(alarmHandlerOf, PollingHandler Connector::*,
               &Connector::m_alarmInAlarmlistPollingHandler)
PRIVATE_MEMBER(activeAlarmHandlerOf, PollingHandler Connector::*,
               &Connector::m_activeAlarmInAlarmlistPollingHandler)
PRIVATE_MEMBER(faultHandlerOf, PollingHandler Connector::*,
               &Connector::m_faultInAlarmlistPollingHandler)
PRIVATE_MEMBER(activeFaultHandlerOf, PollingHandler Connector::*,
               &Connector::m_activeFaultInAlarmlistPollingHandler)
PRIVATE_MEMBER(detectorHandlerOf, PollingHandler Connector::*,
               &Connector::m_centralDetectorPollingHandler)

namespace
{

struct Flag
{
    const char* name;
    bool (Connector::*isChanged)(bool&);
    PollingHandler Connector::* (*handler)();
};

const Flag flags[] = {
    {"changedFlagAlarmInAlarmlist", &Connector::changedFlagAlarmInAlarmlist, &alarmHandlerOf},
    {"changedFlagActiveAlarmInAlarmlist", &Connector::changedFlagActiveAlarmInAlarmlist,
     &activeAlarmHandlerOf},
    {"changedFlagFaultInAlarmlist", &Connector::changedFlagFaultInAlarmlist, &faultHandlerOf},
    {"changedFlagActiveFaultInAlarmlist", &Connector::changedFlagActiveFaultInAlarmlist,
     &activeFaultHandlerOf},
    {"changedFlagCentralDetector", &Connector::changedFlagCentralDetector, &detectorHandlerOf},
};

} // namespace

class tst_AlarmlistHandlerDBusConnectorRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void declaresItsSignalsInTheirOrder();
    void addressesTheReadObject();
    void makesItsHandlersForPollingOnly();
    void flagsNoChangeAndLeavesTheStateAlone_data();
    void flagsNoChangeAndLeavesTheStateAlone();
    void flagsNoChangeOfTheListAtFirst();
    void refusesToBePolledInSignalMode_data() { flagsNoChangeAndLeavesTheStateAlone_data(); }
    void refusesToBePolledInSignalMode();
    void refusesToBePolledWithoutAHandler_data() { flagsNoChangeAndLeavesTheStateAlone_data(); }
    void refusesToBePolledWithoutAHandler();
    void asksEachFlagOfItsOwnHandler();
    void warnsForEachSignalThatItCannotSubscribeTo();
    void subscribesToNothingInPollingMode();
    void refusesAQueryWithoutABus_data();
    void refusesAQueryWithoutABus();

private:
    void expectRefusedPoll(const char* text)
    {
        m_warnings.expect(
            QString::fromLatin1(text), QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
            QStringLiteral("AlarmlistHandlerDBusConnectorRead::checkPollingModeAccess"));
    }

    WarningRecorder m_warnings;
};

void tst_AlarmlistHandlerDBusConnectorRead::declaresItsSignalsInTheirOrder()
{
    const QMetaObject& metaObject = Connector::staticMetaObject;
    QStringList methods;
    for (int i = metaObject.methodOffset(); i < metaObject.methodCount(); ++i)
    {
        const QMetaMethod method = metaObject.method(i);
        methods.append(QString::fromLatin1(method.methodSignature() + " " +
                                           method.parameterNames().join(' ')));
        QCOMPARE(method.access(), method.methodType() == QMetaMethod::Signal
                                      ? QMetaMethod::Public
                                      : QMetaMethod::Protected);
    }

    QCOMPARE(methods, QStringList({QStringLiteral("changedAlarmlist() "),
                                   QStringLiteral("changedAlarmInAlarmlist(bool) bState"),
                                   QStringLiteral("changedActiveAlarmInAlarmlist(bool) bState"),
                                   QStringLiteral("changedFaultInAlarmlist(bool) bState"),
                                   QStringLiteral("changedActiveFaultInAlarmlist(bool) bState"),
                                   QStringLiteral("changedCentralDetector(bool) bState"),
                                   QStringLiteral("connectServices() "),
                                   QStringLiteral("disconnectServices() ")}));
}

void tst_AlarmlistHandlerDBusConnectorRead::addressesTheReadObject()
{
    const Connector connector(false);

    QVERIFY(connector.getServiceName().endsWith(QStringLiteral(".EventlistHandler")));
    QCOMPARE(connector.getDBusPath(), QStringLiteral("/AlarmlistRead"));
}

void tst_AlarmlistHandlerDBusConnectorRead::makesItsHandlersForPollingOnly()
{
    for (const bool pollingMode : {false, true})
    {
        const Connector connector(pollingMode);

        QCOMPARE((connector.*listHandlerOf()).isNull(), !pollingMode);
        for (const Flag& flag : flags)
        {
            QCOMPARE((connector.*flag.handler()).isNull(), !pollingMode);
        }
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::flagsNoChangeAndLeavesTheStateAlone_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("state");
    int index = 0;
    for (const Flag& flag : flags)
    {
        QTest::addRow("%s, true before", flag.name) << index << true;
        QTest::addRow("%s, false before", flag.name) << index << false;
        ++index;
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::flagsNoChangeAndLeavesTheStateAlone()
{
    QFETCH(int, index);
    QFETCH(bool, state);
    Connector connector(true);
    bool reported = state;

    QVERIFY(!(connector.*flags[index].isChanged)(reported));

    QCOMPARE(reported, state);
}

void tst_AlarmlistHandlerDBusConnectorRead::flagsNoChangeOfTheListAtFirst()
{
    Connector connector(true);

    QVERIFY(!connector.changedFlagAlarmlist());
}

void tst_AlarmlistHandlerDBusConnectorRead::refusesToBePolledInSignalMode()
{
    QFETCH(int, index);
    QFETCH(bool, state);
    Connector connector(false);
    bool reported = state;
    expectRefusedPoll("PollingMode not active");
    expectRefusedPoll("PollingMode not active");

    QVERIFY(!(connector.*flags[index].isChanged)(reported));
    QVERIFY(!connector.changedFlagAlarmlist());

    QCOMPARE(reported, state);
}

void tst_AlarmlistHandlerDBusConnectorRead::refusesToBePolledWithoutAHandler()
{
    QFETCH(int, index);
    QFETCH(bool, state);
    Connector connector(true);
    bool reported = state;
    (connector.*flags[index].handler()).reset();
    (connector.*listHandlerOf()).reset();
    expectRefusedPoll("Nollpointer access");
    expectRefusedPoll("Nollpointer access");

    QVERIFY(!(connector.*flags[index].isChanged)(reported));
    QVERIFY(!connector.changedFlagAlarmlist());

    QCOMPARE(reported, state);
}

void tst_AlarmlistHandlerDBusConnectorRead::asksEachFlagOfItsOwnHandler()
{
    for (const Flag& missing : flags)
    {
        Connector connector(true);
        (connector.*missing.handler()).reset();
        bool state = false;

        for (const Flag& flag : flags)
        {
            if (&flag == &missing)
            {
                expectRefusedPoll("Nollpointer access");
            }
            QVERIFY(!(connector.*flag.isChanged)(state));
        }
    }
}

void tst_AlarmlistHandlerDBusConnectorRead::warnsForEachSignalThatItCannotSubscribeTo()
{
    for (const char* const text : {"Cannot connect to signal 'changedAlarmlist'!",
                                   "Cannot connect to signal 'changedAlarmInAlarmlist'!",
                                   "Cannot connect to signal 'changedActiveAlarmInAlarmlist'!",
                                   "Cannot connect to signal 'changedFaultInAlarmlist'!",
                                   "Cannot connect to signal 'changedActiveFaultInAlarmlist'!",
                                   "Cannot connect to signal 'changedCentralDetector'!"})
    {
        m_warnings.expect(QString::fromLatin1(text),
                          QStringLiteral("AlarmlistHandlerDBusConnectorRead"),
                          QStringLiteral("AlarmlistHandlerDBusConnectorRead::connectServices"));
    }

    const QSharedPointer<Connector> connector = Connector::createAndConnect();

    QVERIFY(!connector.isNull());
    QVERIFY((connector.data()->*listHandlerOf()).isNull());
}

void tst_AlarmlistHandlerDBusConnectorRead::subscribesToNothingInPollingMode()
{
    Connector connector(true);

    connector.initObject();

    QVERIFY(!connector.changedFlagAlarmlist());
}

void tst_AlarmlistHandlerDBusConnectorRead::refusesAQueryWithoutABus_data()
{
    QTest::addColumn<bool>("isWholeList");

    QTest::newRow("getCompleteAlarmlist") << true;
    QTest::newRow("getAlarmState") << false;
}

void tst_AlarmlistHandlerDBusConnectorRead::refusesAQueryWithoutABus()
{
    QFETCH(bool, isWholeList);
    Connector connector(false);
    QSignalSpy errors(&connector, &DBusConnectorBase::dBusConnectionError);
    expectRefusedQuery(m_warnings, connector);

    QVERIFY((isWholeList ? connector.getCompleteAlarmlist(QString())
                         : connector.getAlarmState(QString()))
                .isNull());

    QCOMPARE(errors.count(), 1);
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandlerDBusConnectorRead)
#include "tst_AlarmlistHandlerDBusConnectorRead.moc"
