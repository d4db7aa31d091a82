#include "core/StorableText.h"

#include "core/Event.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

using namespace eventlistd;

class tst_StorableText : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void keepsWhatTheDatabaseKeeps_data();
    void keepsWhatTheDatabaseKeeps();
    void coversEveryTextOfAnEvent();

private:
    QString throughTheDatabase(const QString& text);
};

void tst_StorableText::initTestCase()
{
    QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"));
    database.setDatabaseName(QStringLiteral(":memory:"));
    QVERIFY(database.open());
    QVERIFY(QSqlQuery().exec(QStringLiteral("CREATE TABLE kept(text TEXT)")));
}

void tst_StorableText::cleanupTestCase()
{
    const QString connection = QSqlDatabase::database().connectionName();
    QSqlDatabase::database().close();
    QSqlDatabase::removeDatabase(connection);
}

QString tst_StorableText::throughTheDatabase(const QString& text)
{
    QSqlQuery query;
    query.prepare(QStringLiteral("INSERT INTO kept VALUES(?)"));
    query.addBindValue(text);
    const bool isRead = query.exec() &&
                        query.exec(QStringLiteral("SELECT text FROM kept ORDER BY rowid DESC")) &&
                        query.next();
    return isRead ? query.value(0).toString() : QStringLiteral("not read");
}

void tst_StorableText::keepsWhatTheDatabaseKeeps_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<bool>("isKeptAsItIs");
    const auto row = [](const char* name, const QString& text, const QString& expected) {
        QTest::newRow(name) << text << expected << (text == expected);
    };
    const QString a = QStringLiteral("a");
    const QString odd{QChar(QChar::ReplacementCharacter)};
    row("empty", QLatin1String(""), QLatin1String(""));
    row("plain", QStringLiteral("Pumpe läuft über €"), QStringLiteral("Pumpe läuft über €"));
    row("a pair", QStringLiteral("\U0001f600x"), QStringLiteral("\U0001f600x"));
    row("the last of a plane", QStringLiteral("\U0001fffe"), QStringLiteral("\U0001fffe"));
    row("last characters", QStringLiteral("\ufffc\ufffd"), QStringLiteral("\ufffc\ufffd"));
    row("units below surrogates", a + QChar(0xd7ff) + QChar(0xe000),
        a + QChar(0xd7ff) + QChar(0xe000));
    row("marks", QStringLiteral("\ufeff\ufeffa"), a);
    row("only marks", QStringLiteral("\ufeff"), QLatin1String(""));
    row("a mark inside", QStringLiteral("a\ufeff"), QStringLiteral("a\ufeff"));
    row("a mark of the other order", QStringLiteral("\ufffea"), odd + a);
    row("no characters", QStringLiteral("a\ufffe\uffff"), a + odd + odd);
    row("first half alone", a + QChar(0xd83d) + a, a + odd + a);
    row("first half at the end", a + QChar(0xdbff), a + odd);
    row("second half alone", QChar(0xdc00) + a, odd + a);
    row("two first halves", QString(QChar(0xd83d)) + QChar(0xd83d) + QChar(0xde00),
        odd + QStringLiteral("\U0001f600"));
    row("halves the wrong way round", QString(QChar(0xde00)) + QChar(0xd83d), odd + odd);
}

void tst_StorableText::keepsWhatTheDatabaseKeeps()
{
    QFETCH(QString, text);
    QFETCH(bool, isKeptAsItIs);
    QTEST(storable(text), "expected");
    QCOMPARE(throughTheDatabase(storable(text)), storable(text));
    // Nothing is replaced without need.
    QCOMPARE(throughTheDatabase(text) == text, isKeptAsItIs);
}

void tst_StorableText::coversEveryTextOfAnEvent()
{
    const QString odd = QStringLiteral("\ufeffa\uffff");
    Event event;
    event.icon = event.timestamp = event.moduleName = event.description = event.user = odd;
    event.eventId = event.metaData = event.alarmId = event.sourceHashes = odd;
    event.keywords = QStringList({odd, odd});
    const qint64 size = event.size();
    constexpr int texts = 11;
    makeStorable(event);
    QCOMPARE(event.size(), size - texts);
    QCOMPARE(event.keywords, storable(QStringList({odd, odd})));
    QCOMPARE(event.alarmId, QStringLiteral("a\ufffd"));
}

QTEST_APPLESS_MAIN(tst_StorableText)
#include "tst_StorableText.moc"
