#include "Alarmlist/AlarmlistHandler.h"

#include "Alarmlist/AlarmlistHandlerDBusConnectorWrite.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "TestSupport/FakeTextManager.h"
#include "bus/CentralServiceTest.h"

#include <QElapsedTimer>

namespace
{
const QString moduleName = QStringLiteral("Panel");
const QString textUrl = QStringLiteral("GlobalAuditTrailTexts/AlarmsAcknowledged");
} // namespace

class tst_AlarmlistHandler : public CentralServiceTest
{
    Q_OBJECT
public:
    tst_AlarmlistHandler();

private Q_SLOTS:
    void acknowledgesFirstAndLogsTheEntrySecond();
    void sendsAnEmptyListAndAnEmptyUser();
    void writesBothArgumentsIntoAnEntryThatShowsOnlyOne();
    void logsTheEntryAlsoWhenTheAcknowledgementIsLost();
    void logsTheEntryAlsoWhenTheServiceRefuses();
    void doesNotWaitForAFrozenService();
    void belongsToItsParent();

private:
    FakeTextManager m_texts;
};

tst_AlarmlistHandler::tst_AlarmlistHandler()
{
    m_texts.setTexts(textUrl, QStringLiteral("%2: quittiert: %1"),
                     QStringLiteral("%2: acknowledged: %1"));
}

void tst_AlarmlistHandler::acknowledgesFirstAndLogsTheEntrySecond()
{
    AlarmlistHandler handler(moduleName, m_texts, nullptr);

    handler.acknowledgeAlarms(QStringList{QStringLiteral("{a}"), QStringLiteral("{b}")},
                              QStringLiteral("anna"), QStringLiteral("both pumps"));

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].toText(),
             QByteArray("call /AlarmlistWrite Interface.AlarmlistWrite.acknowledgeVisualAlarm "
                        "\"ass\" [[\"{a}\",\"{b}\"],\"anna\"] no reply expected"));
    QCOMPARE(received[1].path, QStringLiteral("/EventlistWrite"));
    QCOMPARE(received[1].member, QStringLiteral("logEvent"));
    QJsonArray arguments = received[1].arguments;
    arguments[1] = QStringLiteral("time");
    QCOMPARE(arguments,
             (QJsonArray{QJsonArray{QStringLiteral("1"), QStringLiteral("0"),
                                    QStringLiteral("EventlistAuditTrail")},
                         QStringLiteral("time"), moduleName,
                         json("{'lang_de':'Panel: quittiert: both pumps',"
                              "'lang_en':'Panel: acknowledged: both pumps'}"),
                         QJsonArray{QStringLiteral("AlarmAck"), QStringLiteral("Firmware")},
                         QStringLiteral("anna"),
                         json("{'EventId':'GlobalAuditTrailTexts/AlarmsAcknowledged','MetaData':'{"
                              "\\'Arguments\\':{\\'%1\\':{\\'type\\':\\'string\\',\\'value\\':"
                              "\\'both pumps\\'},\\'%2\\':{\\'type\\':\\'string\\',\\'value\\':"
                              "\\'Panel\\'}},\\'DescriptionScheme\\':{\\'lang_de\\':"
                              "\\'%2: quittiert: %1\\',\\'lang_en\\':\\'%2: acknowledged: %1\\'}}',"
                              "'SourceHashType':0,'SourceHashes':''}"),
                         QString()}));
}

void tst_AlarmlistHandler::sendsAnEmptyListAndAnEmptyUser()
{
    AlarmlistHandler handler(moduleName, m_texts, nullptr);
    handler.acknowledgeAlarms(QStringList(), QString(), QString());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[0].signature, QStringLiteral("ass"));
    QCOMPARE(received[0].arguments, (QJsonArray{QJsonArray(), QString()}));
    QCOMPARE(received[1].arguments[5], QJsonValue(QString()));
    QCOMPARE(received[1].arguments[3].toString(),
             json("{'lang_de':'Panel: quittiert: ','lang_en':'Panel: acknowledged: '}"));
}

void tst_AlarmlistHandler::writesBothArgumentsIntoAnEntryThatShowsOnlyOne()
{
    FakeTextManager texts;
    texts.setTexts(textUrl, QStringLiteral("Quittiert: %1"), QStringLiteral("Acknowledged: %1"));
    AlarmlistHandler handler(moduleName, texts, nullptr);
    handler.acknowledgeAlarms(QStringList(), QString(), QStringLiteral("all"));
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    const QString additionalData = received[1].arguments[6].toString();
    QVERIFY(
        additionalData.contains(json("\\'%1\\':{\\'type\\':\\'string\\',\\'value\\':\\'all\\'}")));
    QVERIFY(additionalData.contains(
        json("\\'%2\\':{\\'type\\':\\'string\\',\\'value\\':\\'Panel\\'}")));
}

void tst_AlarmlistHandler::logsTheEntryAlsoWhenTheAcknowledgementIsLost()
{
    AlarmlistHandler handler(moduleName, m_texts, nullptr);
    QVERIFY(takeServiceAway());
    // Twice for the acknowledgement, twice for the entry, which was tried as well.
    expectRefusedCall(AlarmlistHandlerDBusConnectorWrite(false));
    expectRefusedCall(EventlistHandlerDBusConnectorWrite(false));
    handler.acknowledgeAlarms(QStringList{QStringLiteral("{a}")}, QStringLiteral("anna"),
                              QStringLiteral("pump"));
}

void tst_AlarmlistHandler::logsTheEntryAlsoWhenTheServiceRefuses()
{
    QVERIFY(m_service.answerError(QStringLiteral("acknowledgeVisualAlarm"),
                                  QStringLiteral("org.example.Unknown"), QStringLiteral("No")));
    AlarmlistHandler handler(moduleName, m_texts, nullptr);
    handler.acknowledgeAlarms(QStringList{QStringLiteral("?")}, QStringLiteral("anna"), QString());
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 2);
    QCOMPARE(received[1].member, QStringLiteral("logEvent"));
}

void tst_AlarmlistHandler::doesNotWaitForAFrozenService()
{
    AlarmlistHandler handler(moduleName, m_texts, nullptr);
    QVERIFY(m_service.freeze());
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 100; ++i)
    {
        handler.acknowledgeAlarms({QStringLiteral("{a}")}, QString::number(i), QString());
    }
    // The service answers after the thaw only: whoever had waited for it would be waiting still.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    m_service.thaw();
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 200);
    for (int i = 0; i < 100; ++i)
    {
        QCOMPARE(received[2 * i].member, QStringLiteral("acknowledgeVisualAlarm"));
        QCOMPARE(received[2 * i].arguments[1].toString(), QString::number(i));
        QCOMPARE(received[2 * i + 1].member, QStringLiteral("logEvent"));
        QCOMPARE(received[2 * i + 1].arguments[5].toString(), QString::number(i));
    }
}

void tst_AlarmlistHandler::belongsToItsParent()
{
    QObject owner;
    const auto* const handler = new AlarmlistHandler(moduleName, m_texts, &owner);
    QCOMPARE(handler->parent(), &owner);
}

QTEST_GUILESS_MAIN(tst_AlarmlistHandler)
#include "tst_AlarmlistHandler.moc"
