#include "Alarmlist/AlarmlistHandler.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include <QTest>

#include <memory>

PRIVATE_MEMBER(connectorOf, QSharedPointer<AlarmlistHandlerDBusConnectorWrite> AlarmlistHandler::*,
               &AlarmlistHandler::m_connector)
PRIVATE_MEMBER(auditTrailOf, AuditTrailHandler AlarmlistHandler::*,
               &AlarmlistHandler::m_auditTrailHandler)

namespace
{

} // namespace

class tst_AlarmlistHandler : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        m_texts.setTexts(text("GlobalAuditTrailTexts/AlarmsAcknowledged"),
                         text("Quittiert: %1 durch %2"), text("Acknowledged: %1 by %2"));
        m_handler = std::make_unique<AlarmlistHandler>(text("Panel"), m_texts, nullptr);
        ((*m_handler).*auditTrailOf()).setEventToFile(text("audit"));
        m_warnings.start();
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void hasNoOperationsForOthersToCallByName();
    void logsTheAttemptAlsoWhenTheAcknowledgementIsLost_data();
    void logsTheAttemptAlsoWhenTheAcknowledgementIsLost();
    void fillsATextThatUsesOnePlaceOnly();
    void doesNothingWithoutAConnector();
    void tellsTheServiceBeforeItLogs();

private:
    SpoolFolder m_spool;
    FakeTextManager m_texts;
    std::unique_ptr<AlarmlistHandler> m_handler;
    WarningRecorder m_warnings;
};

void tst_AlarmlistHandler::hasNoOperationsForOthersToCallByName()
{
    const QMetaObject& metaObject = AlarmlistHandler::staticMetaObject;
    QObject parent;
    const auto* const handler = new AlarmlistHandler(text("Panel"), m_texts, &parent);

    QCOMPARE(metaObject.className(), "AlarmlistHandler");
    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(handler->parent(), &parent);
}

void tst_AlarmlistHandler::logsTheAttemptAlsoWhenTheAcknowledgementIsLost_data()
{
    QTest::addColumn<QStringList>("alarms");
    QTest::addColumn<QString>("user");

    QTest::newRow("two alarms") << QStringList({text("{a}"), text("{b}")}) << text("operator");
    QTest::newRow("no alarm") << QStringList() << text("operator");
    QTest::newRow("no user") << QStringList(text("{a}")) << QString();
}

void tst_AlarmlistHandler::logsTheAttemptAlsoWhenTheAcknowledgementIsLost()
{
    QFETCH(QStringList, alarms);
    QFETCH(QString, user);
    expectRefusedCall(m_warnings, *((*m_handler).*connectorOf()));

    m_handler->acknowledgeAlarms(alarms, user, text("pump 3"));

    QCOMPARE(eventWithoutTime(m_spool, text("audit.event.json")),
             QByteArray(R"({"AlarmID":"","Description":)"
                        "\"{\\\"lang_de\\\":\\\"Quittiert: pump 3 durch Panel\\\","
                        "\\\"lang_en\\\":\\\"Acknowledged: pump 3 by Panel\\\"}\","
                        R"("EventId":"GlobalAuditTrailTexts/AlarmsAcknowledged","EventType":1,)"
                        R"("IconType":"EventlistAuditTrail","KeywordName":"AlarmAck;Firmware",)"
                        R"("MetaData":{"Arguments":{"%1":{"type":"string","value":"pump 3"},)"
                        R"("%2":{"type":"string","value":"Panel"}},)"
                        R"("DescriptionScheme":{"lang_de":"Quittiert: %1 durch %2",)"
                        R"("lang_en":"Acknowledged: %1 by %2"}},"ModuleName":"Panel",)"
                        R"("SourceHashType":0,"SourceHashes":"","State":0,"User":)")
                 .append(quoted(user).toUtf8())
                 .append('}'));
}

void tst_AlarmlistHandler::fillsATextThatUsesOnePlaceOnly()
{
    m_texts.setTexts(text("GlobalAuditTrailTexts/AlarmsAcknowledged"),
                     {{text("lang_en"), text("by %2")}});
    expectRefusedCall(m_warnings, *((*m_handler).*connectorOf()));

    m_handler->acknowledgeAlarms({}, QString(), text("pump 3"));

    const QJsonObject event = m_spool.read(text("audit.event.json"));
    QCOMPARE(event.value(text("Description")), QJsonValue(text(R"({"lang_en":"by Panel"})")));
    QCOMPARE(event.value(text("MetaData")).toObject().value(text("Arguments")).toObject().keys(),
             QStringList({text("%1"), text("%2")}));
}

void tst_AlarmlistHandler::doesNothingWithoutAConnector()
{
    ((*m_handler).*connectorOf()).reset();
    m_warnings.expect(text("Invalid pointer to alarm list write dbus connector!"),
                      text("AlarmlistHandler"), text("AlarmlistHandler::acknowledgeAlarms"));

    m_handler->acknowledgeAlarms({text("{a}")}, text("operator"), text("pump 3"));

    QVERIFY(m_spool.entries().isEmpty());
}

void tst_AlarmlistHandler::tellsTheServiceBeforeItLogs()
{
    m_texts.setTexts(text("GlobalAuditTrailTexts/AlarmsAcknowledged"), QVariantMap());
    expectRefusedCall(m_warnings, *((*m_handler).*connectorOf()));
    m_warnings.expect(text(R"(No description data: "GlobalAuditTrailTexts/AlarmsAcknowledged")"));

    m_handler->acknowledgeAlarms({text("{a}")}, text("operator"), text("pump 3"));

    QCOMPARE(m_spool.entries(), QStringList(text("audit.event.json")));
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandler)
#include "tst_AlarmlistHandler.moc"
