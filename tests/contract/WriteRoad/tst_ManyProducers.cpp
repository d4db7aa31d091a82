#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/AuditTrailHandler.h"
#include "EventHandlers/EventHandler.h"
#include "EventHandlers/FaultHandler.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/ForeignService.h"
#include "TestSupport/PrivateBus.h"
#include "TestSupport/Waiting.h"

#include "Platform/DBusConnection.h"

#include <QDBusMessage>
#include <QDebug>
#include <QElapsedTimer>

#include <algorithm>
#include <memory>
#include <vector>

using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;

/// What the first producer of a process asks of the bus, and what a thousand ask. The functions build
/// on each other.
class tst_ManyProducers : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void theFirstCostsAFewQuestions();
    void furtherOnesAskNothing();
    void furtherOnesAskNothingAlsoWhenTheBusStandsStill();
    void allOfThemReachTheService();

private:
    void makeProducers(int count);
    QStringList questionsToTheBus();

    PrivateBus m_bus;
    ForeignService m_service{m_bus, ForeignService::centralServiceName()};
    BusMonitor m_monitor{m_bus};
    FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    std::vector<std::unique_ptr<EventHandlerBaseClass>> m_producers;
    QStringList m_firstQuestions;
};

void tst_ManyProducers::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
    QVERIFY2(m_monitor.start(), m_monitor.errorText());
}

void tst_ManyProducers::makeProducers(int count)
{
    const QString module = QStringLiteral("PumpControl");
    const QString text = QStringLiteral("PumpControl/PumpName3");
    for (int i = 0; i < count; ++i)
    {
        switch (m_producers.size() % 4)
        {
        case 0:
            m_producers.push_back(
                std::make_unique<AlarmHandler>(module, m_texts, text, QStringList()));
            break;
        case 1:
            m_producers.push_back(
                std::make_unique<FaultHandler>(module, m_texts, text, QStringList()));
            break;
        case 2:
            m_producers.push_back(
                std::make_unique<EventHandler>(module, m_texts, text, QStringList()));
            break;
        default:
            m_producers.push_back(
                std::make_unique<AuditTrailHandler>(module, m_texts, text, QStringList()));
        }
    }
}

// What this process has asked the daemon since it started: "member", with a "?" when it waits for
// the answer.
QStringList tst_ManyProducers::questionsToTheBus()
{
    const QDBusConnection connection = DBusConnection::getQDBusConnection();
    const QString ourselves = connection.baseService();
    // The marker passes the monitor behind all that was asked before it.
    const auto markerCount = [&] {
        const QVector<RecordedMessage> messages = m_monitor.receivedSoFar();
        return std::count_if(messages.cbegin(), messages.cend(), [](const RecordedMessage& each) {
            return each.member == QLatin1String("Marker");
        });
    };
    const auto before = markerCount();
    connection.send(QDBusMessage::createMethodCall(m_service.uniqueName(), QStringLiteral("/"),
                                                   QStringLiteral("org.example"),
                                                   QStringLiteral("Marker")));
    if (!waitUntil([&] { return markerCount() > before; }))
    {
        return {QStringLiteral("no marker")};
    }
    QStringList questions;
    const QVector<RecordedMessage> messages = m_monitor.receivedSoFar();
    for (const RecordedMessage& message : messages)
    {
        if (message.kind == QLatin1String("call") && message.sender == ourselves &&
            message.destination == QLatin1String("org.freedesktop.DBus"))
        {
            questions << message.member +
                             (message.isReplyExpected ? QStringLiteral("?") : QString());
        }
    }
    return questions;
}

void tst_ManyProducers::theFirstCostsAFewQuestions()
{
    makeProducers(1);
    m_firstQuestions = questionsToTheBus();
    const auto text = [](const char* member) { return QString::fromLatin1(member); };
    const QStringList expected{
        text("Hello?"),
        // Each change of the service's owner, and who it is now.
        text("AddMatch"), text("GetNameOwner?"),
        // The subscription that makes QtDBus know the owner: it asks the same for itself, on a thread
        // of the platform for which nobody waits.
        text("AddMatch"), text("AddMatch"), text("GetNameOwner?"),
        // The proxy's own watcher of the owner comes and goes.
        text("AddMatch"), text("RemoveMatch"), text("RemoveMatch")};
    QCOMPARE(m_firstQuestions, expected);
}

void tst_ManyProducers::furtherOnesAskNothing()
{
    makeProducers(899);
    QCOMPARE(questionsToTheBus(), m_firstQuestions);
}

void tst_ManyProducers::furtherOnesAskNothingAlsoWhenTheBusStandsStill()
{
    QVERIFY(m_bus.freeze());
    QElapsedTimer timer;
    timer.start();
    makeProducers(100);
    const qint64 elapsedMs = timer.elapsed();
    m_bus.thaw();
    // Whoever had waited for the bus would have waited for it up to 25 s.
    QVERIFY2(elapsedMs < 5000, qPrintable(QString::number(elapsedMs)));
    QCOMPARE(questionsToTheBus(), m_firstQuestions);
}

void tst_ManyProducers::allOfThemReachTheService()
{
    for (const auto& producer : m_producers)
    {
        producer->logEvent(EventlistHandlerEnums::EventType::otherEvents,
                           EventlistHandlerEnums::State::neutral, Arguments(), QString(),
                           QString());
    }
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(std::count_if(received.cbegin(), received.cend(),
                           [](const RecordedMessage& each) {
                               return each.member == QLatin1String("logEvent");
                           }),
             1000);
    QCOMPARE(questionsToTheBus(), m_firstQuestions);
}

QTEST_GUILESS_MAIN(tst_ManyProducers)
#include "tst_ManyProducers.moc"
