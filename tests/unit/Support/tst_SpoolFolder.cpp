#include "TestSupport/SpoolFolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

class tst_SpoolFolder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isTheFolderOfTheLibrary();
    void isEmptyAtTheBeginningAndAtTheEnd();
    void listsEverything();
    void readsAJsonObject_data();
    void readsAJsonObject();
    void isGoneWhenRemoved();
    void comesBackInPlaceOfAPlainFile();

private:
    static bool write(const QString& path, const QByteArray& content);
};

bool tst_SpoolFolder::write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    return file.open(QFile::WriteOnly) && file.write(content) == content.size() && file.flush();
}

void tst_SpoolFolder::isTheFolderOfTheLibrary()
{
    const SpoolFolder spool;

    QVERIFY(spool.path().endsWith(QLatin1String("/var/EventToFileData/")));
    QCOMPARE(spool.path(), SpoolFolder::compiledInPath());
    QVERIFY(QDir(spool.path()).exists());
}

void tst_SpoolFolder::isEmptyAtTheBeginningAndAtTheEnd()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("spool"));
    QVERIFY(QDir().mkpath(path + QStringLiteral("/nested/deep")));
    QVERIFY(write(path + QStringLiteral("/old.event.json"), "{}"));
    {
        const SpoolFolder spool(path);
        QCOMPARE(spool.path(), path + QLatin1Char('/'));
        QVERIFY(spool.entries().isEmpty());
        QVERIFY(write(spool.filePath(QStringLiteral("new.event.json")), "{}"));
    }
    QVERIFY(QDir(path).exists());
    QVERIFY(QDir(path).isEmpty());
}

void tst_SpoolFolder::listsEverything()
{
    const QTemporaryDir folder;
    const SpoolFolder spool(folder.filePath(QStringLiteral("spool")));
    QVERIFY(write(spool.filePath(QStringLiteral("b.event.json")), "{}"));
    QVERIFY(write(spool.filePath(QStringLiteral(".hidden")), "{}"));
    QVERIFY(QDir().mkpath(spool.filePath(QStringLiteral("c"))));
    QCOMPARE(::symlink("/nowhere", QFile::encodeName(spool.filePath(QStringLiteral("a")))), 0);

    QCOMPARE(spool.entries(), (QStringList{QStringLiteral(".hidden"), QStringLiteral("a"),
                                           QStringLiteral("b.event.json"), QStringLiteral("c")}));
}

void tst_SpoolFolder::readsAJsonObject_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QJsonObject>("object");

    QTest::newRow("object") << QByteArray("{\"State\":1}")
                            << QJsonObject{{QStringLiteral("State"), 1}};
    QTest::newRow("torn") << QByteArray("{\"State\":") << QJsonObject();
    QTest::newRow("array") << QByteArray("[1]") << QJsonObject();
    QTest::newRow("empty") << QByteArray() << QJsonObject();
}

void tst_SpoolFolder::readsAJsonObject()
{
    QFETCH(QByteArray, content);
    const QTemporaryDir folder;
    const SpoolFolder spool(folder.path());
    const QString name = QStringLiteral("logEvent0.event.json");
    QVERIFY(write(spool.filePath(name), content));

    QTEST(spool.read(name), "object");
    QCOMPARE(spool.readBytes(name), content);
    QVERIFY(spool.readBytes(QStringLiteral("missing")).isNull());
}

void tst_SpoolFolder::isGoneWhenRemoved()
{
    const QTemporaryDir folder;
    SpoolFolder spool(folder.filePath(QStringLiteral("spool")));

    spool.remove();
    QVERIFY(!QDir(spool.path()).exists());

    spool.clear();
    QVERIFY(QDir(spool.path()).exists());
}

void tst_SpoolFolder::comesBackInPlaceOfAPlainFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("spool"));
    QVERIFY(write(path, "in the way"));

    const SpoolFolder spool(path);

    QVERIFY(QDir(path).exists());
}

QTEST_GUILESS_MAIN(tst_SpoolFolder)
#include "tst_SpoolFolder.moc"
