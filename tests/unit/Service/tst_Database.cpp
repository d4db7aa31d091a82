#include "core/Database.h"

#include "TestSupport/WarningRecorder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace eventlistd;

class tst_Database : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void beginsAndOpensAgain();
    void keepsWhatWasCommittedAndNothingElse();
    void refusesAFileThatAnotherOneHasOpen();
    void putsADamagedFileAside();
    void putsAFileAsideWhoseTablesReadOtherwise_data();
    void putsAFileAsideWhoseTablesReadOtherwise();
    void putsAFileAsideThatCannotBeUsed_data();
    void putsAFileAsideThatCannotBeUsed();
    void countsOnWhenTheClockWasSetBack();
    void countsOnAfterAnEndBetweenTwoFiles();
    void findsDamageInTheMiddle();
    void namesTheFailureOfAStatement();
    void countsUsedBytes();

private:
    QString path() const { return m_folder->filePath(QStringLiteral("list.sqlite")); }

    std::unique_ptr<QTemporaryDir> m_folder;
    WarningRecorder m_warnings;
};

void tst_Database::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_warnings.start();
}

void tst_Database::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_Database::beginsAndOpensAgain()
{
    {
        Database database(path());
        QCOMPARE(database.open(), Database::Opened::asNew);
        QVERIFY(database.setMetaValue(QStringLiteral("key"), 7));
    }
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::asItWas);
    QCOMPARE(database.metaValue(QStringLiteral("key")).toInt(), 7);
    QVERIFY(!database.metaValue(QStringLiteral("other")).isValid());
    QVERIFY(Database::isSound(path()));
}

void tst_Database::keepsWhatWasCommittedAndNothingElse()
{
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::asNew);
    QVERIFY(database.begin());
    QVERIFY(database.setMetaValue(QStringLiteral("kept"), 1));
    QVERIFY(database.commit());
    QVERIFY(database.begin());
    QVERIFY(database.setMetaValue(QStringLiteral("dropped"), 1));
    database.rollback();
    database.rollback();
    QCOMPARE(database.metaValue(QStringLiteral("kept")).toInt(), 1);
    QVERIFY(!database.metaValue(QStringLiteral("dropped")).isValid());
    QCOMPARE(database.failure(), Database::Failure::none);
}

void tst_Database::refusesAFileThatAnotherOneHasOpen()
{
    Database first(path());
    QCOMPARE(first.open(), Database::Opened::asNew);
    m_warnings.expectMatch(QStringLiteral("Another process works on the database .*"));
    m_warnings.expectMatch(QStringLiteral("Cannot use the database .*"));
    Database second(path());
    QCOMPARE(second.open(), Database::Opened::failed);
}

void tst_Database::putsADamagedFileAside()
{
    QFile file(path());
    QVERIFY(file.open(QFile::WriteOnly));
    QVERIFY(file.write(QByteArray(10000, 'x')) > 0);
    file.close();
    m_warnings.expectMatch(QStringLiteral("Database: .*"));
    m_warnings.expectMatch(QStringLiteral("The damaged database was put aside as .*"));
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::inPlaceOfDamaged);
    QCOMPARE(database.failure(), Database::Failure::none);
    const QStringList aside =
        QDir(m_folder->path()).entryList({QStringLiteral("list.sqlite.damaged-*")});
    QCOMPARE(aside.size(), 1);
    QCOMPARE(QFile(m_folder->filePath(aside.constFirst())).size(), qint64(10000));
    // Numbers go on where no earlier list can have been.
    QVERIFY(database.metaValue(QStringLiteral("last_id")).toLongLong() > 1000000000000);
}

void tst_Database::putsAFileAsideWhoseTablesReadOtherwise_data()
{
    QTest::addColumn<QByteArray>("letters");
    QTest::addColumn<QByteArray>("damaged");
    QTest::newRow("a column has another name")
        << QByteArray("alarm_id TEXT") << QByteArray("alarm_if TEXT");
    QTest::newRow("a column has another type")
        << QByteArray("icon TEXT NOT") << QByteArray("icon SEXT NOT");
    QTest::newRow("a column may be empty")
        << QByteArray("module TEXT NOT NULL") << QByteArray("module TEXT NOU NULL");
    QTest::newRow("an index is on another column")
        << QByteArray("ON source_icon(event)") << QByteArray("ON source_icon(icon )");
}

// All that SQLite itself calls sound.
void tst_Database::putsAFileAsideWhoseTablesReadOtherwise()
{
    QFETCH(QByteArray, letters);
    QFETCH(QByteArray, damaged);
    QCOMPARE(Database(path()).open(), Database::Opened::asNew);
    QFile file(path());
    QVERIFY(file.open(QFile::ReadWrite));
    QByteArray content = file.readAll();
    QVERIFY(content.contains(letters));
    content.replace(letters, damaged);
    QVERIFY(file.seek(0) && file.write(content) == content.size());
    file.close();
    QVERIFY(Database::isSound(path()));

    m_warnings.expectMatch(QStringLiteral("The database is damaged: .*"));
    m_warnings.expectMatch(QStringLiteral("The damaged database was put aside as .*"));
    QCOMPARE(Database(path()).open(), Database::Opened::inPlaceOfDamaged);
}

void tst_Database::putsAFileAsideThatCannotBeUsed_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("value");
    QTest::addColumn<QString>("warning");
    const QString isDamaged = QStringLiteral("The database is damaged: .*");
    QTest::newRow("of a kind that is only read") << 18 << 3 << isDamaged;
    QTest::newRow("of no kind") << 18 << 0 << isDamaged;
    QTest::newRow("not to be read")
        << 19 << 3 << QStringLiteral("Database: .*file is not a database.*");
    QTest::newRow("of a format that is not there")
        << 47 << 5 << QStringLiteral("Database: .*unsupported file format.*");
    QTest::newRow("of another version") << 63 << 2 << isDamaged;
    QTest::newRow("of another program") << 71 << 2 << isDamaged;
}

// One byte of the header decides.
void tst_Database::putsAFileAsideThatCannotBeUsed()
{
    QFETCH(int, position);
    QFETCH(int, value);
    QFETCH(QString, warning);
    QCOMPARE(Database(path()).open(), Database::Opened::asNew);
    QFile file(path());
    QVERIFY(file.open(QFile::ReadWrite) && file.seek(position) && file.putChar(char(value)));
    file.close();
    m_warnings.expectMatch(warning);
    m_warnings.expectMatch(QStringLiteral("The damaged database was put aside as .*"));
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::inPlaceOfDamaged);
    QVERIFY(database.setMetaValue(QStringLiteral("written"), 1));
}

// A clock that was set back shows in a file that was put aside later than now.
void tst_Database::countsOnWhenTheClockWasSetBack()
{
    const QDateTime later(QDate(2199, 1, 1), QTime(0, 0), Qt::UTC);
    const QString earlierAside = QStringLiteral("list.sqlite.damaged-21990101T000000000");
    for (const QString& name : {QStringLiteral("list.sqlite"), earlierAside})
    {
        QFile file(m_folder->filePath(name));
        QVERIFY(file.open(QFile::WriteOnly));
        QVERIFY(file.write(QByteArray(10000, 'x')) > 0);
    }
    m_warnings.expectMatch(QStringLiteral("Database: .*"));
    m_warnings.expectMatch(QStringLiteral("The damaged database was put aside as .*"));
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::inPlaceOfDamaged);
    const QStringList aside =
        QDir(m_folder->path())
            .entryList({QStringLiteral("list.sqlite.damaged-*")}, QDir::Files, QDir::Name);
    QCOMPARE(aside.size(), 2);
    QCOMPARE(aside.constFirst(), earlierAside);
    // There is room for what came after the earlier one.
    QVERIFY(database.metaValue(QStringLiteral("last_id")).toLongLong() >
            later.toMSecsSinceEpoch() + 1000000000);
}

void tst_Database::countsOnAfterAnEndBetweenTwoFiles()
{
    QFile file(m_folder->filePath(QStringLiteral("list.sqlite.damaged-20260101T000000000")));
    QVERIFY(file.open(QFile::WriteOnly));
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::inPlaceOfDamaged);
    QVERIFY(database.metaValue(QStringLiteral("last_id")).toLongLong() > 1000000000000);
}

void tst_Database::findsDamageInTheMiddle()
{
    {
        Database database(path());
        QCOMPARE(database.open(), Database::Opened::asNew);
        for (int i = 0; i < 200; ++i)
        {
            QVERIFY(database.setMetaValue(QString::number(i), QString(1000, QLatin1Char('x'))));
        }
    }
    QFile file(path());
    QVERIFY(file.open(QFile::ReadWrite));
    for (int page = 20; page < 40; ++page)
    {
        QVERIFY(file.seek(page * 4096));
        QCOMPARE(file.write(QByteArray(4096, char(0xa5))), qint64(4096));
    }
    file.close();
    QVERIFY(!Database::isSound(path()));
    m_warnings.expectMatch(QStringLiteral("The database is damaged: .*"));
    m_warnings.expectMatch(QStringLiteral("The damaged database was put aside as .*"));
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::inPlaceOfDamaged);
}

void tst_Database::namesTheFailureOfAStatement()
{
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::asNew);
    QSqlQuery& twice =
        database.statement(QStringLiteral("INSERT INTO event VALUES(1, 0, 0, 0, '', '', '')"));
    QVERIFY(database.run(twice));
    m_warnings.expectMatch(QStringLiteral("Database: .*UNIQUE.*"));
    QVERIFY(!database.run(twice));
    QCOMPARE(database.failure(), Database::Failure::damaged);
    database.clearFailure();
    m_warnings.expectMatch(QStringLiteral("Database: .*no such table.*"));
    QVERIFY(!database.run(QStringLiteral("DELETE FROM nowhere")));
    QCOMPARE(database.failure(), Database::Failure::passing);
}

void tst_Database::countsUsedBytes()
{
    Database database(path());
    QCOMPARE(database.open(), Database::Opened::asNew);
    const qint64 before = database.usedBytes();
    QVERIFY(before > 0);
    QVERIFY(database.setMetaValue(QStringLiteral("x"), QString(100000, QLatin1Char('x'))));
    QVERIFY(database.usedBytes() >= before + 100000);
    QVERIFY(database.setMetaValue(QStringLiteral("x"), 1));
    QVERIFY(database.usedBytes() <= before + 4096);
}

QTEST_GUILESS_MAIN(tst_Database)
#include "tst_Database.moc"
