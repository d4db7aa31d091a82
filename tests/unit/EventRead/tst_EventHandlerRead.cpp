#include "EventRead/EventHandlerRead.h"

#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include <QDateTime>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTest>

#include <functional>
#include <memory>

using Query = std::function<DBusPendingReply::SharedPointer(EventHandlerRead&)>;

Q_DECLARE_METATYPE(Query)

PRIVATE_MEMBER(connectorOf, QSharedPointer<EventlistHandlerDBusConnectorRead> EventHandlerRead::*,
               &EventHandlerRead::m_connector)

class tst_EventHandlerRead : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_warnings.start();
        m_warnings.expect(QStringLiteral("Cannot connect to signal 'changedEventlist'!"));
        m_reader = std::make_unique<EventHandlerRead>(nullptr);
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void declaresOneSignal();
    void passesItsParentOn();
    void passesTheSignalOfItsConnectorOn();
    void refusesAQueryWithoutAConnector_data() { allQueries(); }
    void refusesAQueryWithoutAConnector();
    void refusesAQueryWithoutABus_data() { allQueries(); }
    void refusesAQueryWithoutABus();

private:
    static void allQueries();

    std::unique_ptr<EventHandlerRead> m_reader;
    WarningRecorder m_warnings;
};

void tst_EventHandlerRead::declaresOneSignal()
{
    const QMetaObject& metaObject = EventHandlerRead::staticMetaObject;

    QCOMPARE(metaObject.methodCount() - metaObject.methodOffset(), 1);
    QCOMPARE(metaObject.method(metaObject.methodOffset()).methodSignature(),
             QByteArray("changedEventlist()"));
}

void tst_EventHandlerRead::passesItsParentOn()
{
    QObject parent;
    m_warnings.expect(QStringLiteral("Cannot connect to signal 'changedEventlist'!"));

    const auto* const reader = new EventHandlerRead(&parent);

    QCOMPARE(reader->parent(), &parent);
}

void tst_EventHandlerRead::passesTheSignalOfItsConnectorOn()
{
    QSignalSpy changes(m_reader.get(), &EventHandlerRead::changedEventlist);

    Q_EMIT((*m_reader).*connectorOf())->changedEventlist();
    Q_EMIT((*m_reader).*connectorOf())->changedEventlist();

    QCOMPARE(changes.count(), 2);
}

void tst_EventHandlerRead::allQueries()
{
    QTest::addColumn<QByteArray>("operation");
    QTest::addColumn<Query>("query");

    const auto row = [](const char* operation, const Query& query) {
        QTest::newRow(operation) << QByteArray(operation) << query;
    };
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(0);
    const QStringList none;
    row("getCompleteEventlist",
        [](EventHandlerRead& reader) { return reader.getCompleteEventlist(QString()); });
    row("getListOfEventTypes",
        [](EventHandlerRead& reader) { return reader.getListOfEventTypes(QString()); });
    row("getPartOfEventlistFilteredByStartEndTime", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredByStartEndTime(QString(), time, time, none, -1);
    });
    row("getPartOfEventlistFilteredByStartEndUnixTime", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredByStartEndUnixTime(QString(), 2, 1, none, 0);
    });
    row("getPartOfEventlistFilteredById", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredById(QString(), 1, 2, none, 0, true);
    });
    row("getPartOfEventlistFilteredByKeywords", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredByKeywords(QString(), none, time, time, 0);
    });
    row("getPartOfEventlistFilteredByModuleName", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredByModuleName(QString(), none, time, time, 0);
    });
    row("getPartOfEventlistFilteredByEventType", [=](EventHandlerRead& reader) {
        return reader.getPartOfEventlistFilteredByEventType(
            QString(), {EventlistHandlerEnums::EventType::alarm}, time, time, 0);
    });
}

void tst_EventHandlerRead::refusesAQueryWithoutAConnector()
{
    QFETCH(QByteArray, operation);
    QFETCH(Query, query);
    ((*m_reader).*connectorOf()).reset();
    // Without the exclamation mark of the constructor.
    m_warnings.expect(
        QStringLiteral("Invalid pointer to connector"), QStringLiteral("EventHandlerRead"),
        QString(QLatin1String("EventHandlerRead::") + QString::fromLatin1(operation)));

    QVERIFY(query(*m_reader).isNull());
}

void tst_EventHandlerRead::refusesAQueryWithoutABus()
{
    QFETCH(Query, query);
    expectRefusedQuery(m_warnings, *((*m_reader).*connectorOf()));

    QVERIFY(query(*m_reader).isNull());
}

QTEST_GUILESS_MAIN(tst_EventHandlerRead)
#include "tst_EventHandlerRead.moc"
