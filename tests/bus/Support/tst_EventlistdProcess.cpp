#include "TestSupport/EventlistdProcess.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

class tst_EventlistdProcess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void ownsItsNameWhenItIsReady();
    void keepsItsDatabaseOverARestart();
    void standsStillAndGoesOn();
    void saysWhyItDoesNotStart();

private:
    WarningRecorder m_warnings;
    PrivateBus m_bus;
};

void tst_EventlistdProcess::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
}

void tst_EventlistdProcess::ownsItsNameWhenItIsReady()
{
    EventlistdProcess service;
    QVERIFY2(service.start(), service.errorText());
    QVERIFY(service.log().contains("eventlistd: ready"));
    QVERIFY(m_bus.hasOwner(ForeignService::centralServiceName()));

    QVERIFY(service.stop());
    QVERIFY(!m_bus.hasOwner(ForeignService::centralServiceName()));
}

void tst_EventlistdProcess::keepsItsDatabaseOverARestart()
{
    EventlistdProcess service;
    QVERIFY2(service.start(), service.errorText());
    const qint64 processId = service.processId();
    const QString database = service.databasePath();
    QVERIFY(QFileInfo::exists(database));

    QVERIFY2(service.restart(), service.errorText());

    QVERIFY(service.processId() != processId);
    QCOMPARE(service.databasePath(), database);
    QVERIFY(m_bus.hasOwner(ForeignService::centralServiceName()));
}

void tst_EventlistdProcess::standsStillAndGoesOn()
{
    EventlistdProcess service;
    QVERIFY2(service.start(), service.errorText());

    QVERIFY(service.freeze());
    QVERIFY(m_bus.hasOwner(ForeignService::centralServiceName()));
    service.thaw();

    QVERIFY(service.stop());
}

void tst_EventlistdProcess::saysWhyItDoesNotStart()
{
    EventlistdProcess service;

    QVERIFY(!service.start({QStringLiteral("--no-such-option")}));

    QVERIFY2(QByteArray(service.errorText()).contains("no-such-option"), service.errorText());
    QVERIFY(!service.isRunning());
}

QTEST_GUILESS_MAIN(tst_EventlistdProcess)
#include "tst_EventlistdProcess.moc"
