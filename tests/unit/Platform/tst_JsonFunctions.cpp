#include "Platform/JsonFunctions.h"

#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{
QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

QStringList entriesOf(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System |
                                  QDir::NoDotAndDotDot);
}
} // namespace

class tst_JsonFunctions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void findsAValueByPath_data();
    void findsAValueByPath();
    void leavesTheArgumentAloneWhenNothingIsFound();
    void writesCompactJson_data();
    void writesCompactJson();
    void replacesAnExistingFile();
    void replacesASymbolicLinkAndNotItsTarget_data();
    void replacesASymbolicLinkAndNotItsTarget();
    void replacesAPipeWithoutWaiting();
    void keepsTheOtherNameOfAFileThatItReplaces();
    void refusesWhatIsNoPathOfAFile_data();
    void refusesWhatIsNoPathOfAFile();
    void refusesAFolderInTheFilesPlace();
    void writesNamesAsLongAsTheFileSystemAllows();
    void hidesTheFileFromOthers();
    void leavesTheLastOfManyWriters();

private:
    QString inFolder(const QString& name) const { return m_folder->filePath(name); }

    const QJsonObject m_arguments{
        {QStringLiteral("%1"), QJsonObject{{QStringLiteral("type"), QStringLiteral("string")},
                                           {QStringLiteral("value"), 97.5}}},
        {QStringLiteral("flat"), QStringLiteral("text")},
        {QStringLiteral("null"), QJsonValue::Null},
        {QString(), QJsonObject{{QStringLiteral("type"), QStringLiteral("string")}}},
        {QStringLiteral("a/b"), QStringLiteral("behind a slash")}};
    const QJsonObject m_old{{QStringLiteral("event"), QStringLiteral("old")}};
    const QJsonObject m_new{{QStringLiteral("event"), QStringLiteral("new")}};
    QScopedPointer<QTemporaryDir> m_folder;
    WarningRecorder m_warnings;
};

void tst_JsonFunctions::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    m_warnings.start();
}

void tst_JsonFunctions::cleanup()
{
    // Nothing is ever logged: that is the caller's business.
    VERIFY_WARNINGS(m_warnings);
}

void tst_JsonFunctions::findsAValueByPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("isValue");
    QTest::addColumn<bool>("isString");
    QTest::addColumn<bool>("isObject");

    QTest::newRow("string behind two words") << QStringLiteral("%1/type") << true << true << false;
    QTest::newRow("number behind two words")
        << QStringLiteral("%1/value") << true << false << false;
    QTest::newRow("object") << QStringLiteral("%1") << true << false << true;
    QTest::newRow("string") << QStringLiteral("flat") << true << true << false;
    QTest::newRow("null that is there") << QStringLiteral("null") << true << false << false;
    QTest::newRow("unknown") << QStringLiteral("%2") << false << false << false;
    QTest::newRow("unknown second word") << QStringLiteral("%1/unit") << false << false << false;
    QTest::newRow("unknown first word") << QStringLiteral("%2/type") << false << false << false;
    QTest::newRow("through a string") << QStringLiteral("flat/type") << false << false << false;
    QTest::newRow("through null") << QStringLiteral("null/type") << false << false << false;
    QTest::newRow("empty") << QString() << false << false << false;
    QTest::newRow("empty first word") << QStringLiteral("/type") << false << false << false;
    QTest::newRow("empty last word") << QStringLiteral("%1/") << false << false << false;
    QTest::newRow("empty word between") << QStringLiteral("%1//type") << false << false << false;
    QTest::newRow("key with a slash") << QStringLiteral("a/b") << false << false << false;
    QTest::newRow("other case") << QStringLiteral("%1/Type") << false << false << false;
}

void tst_JsonFunctions::findsAValueByPath()
{
    QFETCH(QString, path);
    QFETCH(bool, isValue);
    QFETCH(bool, isString);
    QFETCH(bool, isObject);
    QJsonValue value;
    QString string;
    QJsonObject object;

    QCOMPARE(readJsonValue(path, m_arguments, value), isValue);
    QCOMPARE(readStringValueFromJson(path, m_arguments, string), isString);
    QCOMPARE(readJsonObjectFromJson(path, m_arguments, object), isObject);

    QCOMPARE(string.isEmpty(), !isString);
    QCOMPARE(object.isEmpty(), !isObject);
    if (isString)
    {
        QCOMPARE(value, QJsonValue(string));
    }
    if (isObject)
    {
        QCOMPARE(value, QJsonValue(object));
    }
}

void tst_JsonFunctions::leavesTheArgumentAloneWhenNothingIsFound()
{
    QJsonValue value(7);
    QString string = QStringLiteral("before");
    QJsonObject object = m_old;

    QVERIFY(!readJsonValue(QStringLiteral("%2"), m_arguments, value));
    QVERIFY(!readStringValueFromJson(QStringLiteral("%1/value"), m_arguments, string));
    QVERIFY(!readJsonObjectFromJson(QStringLiteral("flat"), m_arguments, object));

    QCOMPARE(value, QJsonValue(7));
    QCOMPARE(string, QStringLiteral("before"));
    QCOMPARE(object, m_old);
}

void tst_JsonFunctions::writesCompactJson_data()
{
    QTest::addColumn<QJsonObject>("object");
    QTest::addColumn<QByteArray>("bytes");

    QTest::newRow("empty") << QJsonObject() << QByteArray("{}");
    QTest::newRow("keys in order")
        << QJsonObject{{QStringLiteral("b"), 1}, {QStringLiteral("a"), QStringLiteral("ü")}}
        << QByteArray("{\"a\":\"\xc3\xbc\",\"b\":1}");
    QTest::newRow("nested") << QJsonObject{{QStringLiteral("Arguments"),
                                            QJsonArray{QJsonObject{
                                                {QStringLiteral("%1"), QStringLiteral("x\"y")}}}}}
                            << QByteArray("{\"Arguments\":[{\"%1\":\"x\\\"y\"}]}");
    const QString large(3 * 1024 * 1024, QLatin1Char('x'));
    QTest::newRow("larger than any buffer") << QJsonObject{{QStringLiteral("a"), large}}
                                            << QByteArray("{\"a\":\"" + large.toLatin1() + "\"}");
}

void tst_JsonFunctions::writesCompactJson()
{
    QFETCH(QJsonObject, object);
    QFETCH(QByteArray, bytes);
    const QString path = inFolder(QStringLiteral("logEvent0.event.json"));

    QVERIFY(writeJsonObjectToFile(object, path));

    QVERIFY(contentOf(path) == bytes);
    QCOMPARE(entriesOf(m_folder->path()), QStringList(QStringLiteral("logEvent0.event.json")));
}

void tst_JsonFunctions::replacesAnExistingFile()
{
    const QString path = inFolder(QStringLiteral("bootlog.event.json"));
    QVERIFY(writeJsonObjectToFile(m_old, path));

    QVERIFY(writeJsonObjectToFile(m_new, path));

    QCOMPARE(contentOf(path), QByteArray("{\"event\":\"new\"}"));
    QCOMPARE(entriesOf(m_folder->path()), QStringList(QStringLiteral("bootlog.event.json")));
}

void tst_JsonFunctions::replacesASymbolicLinkAndNotItsTarget_data()
{
    QTest::addColumn<bool>("isDangling");

    QTest::newRow("to a file") << false;
    QTest::newRow("to nothing") << true;
}

void tst_JsonFunctions::replacesASymbolicLinkAndNotItsTarget()
{
    QFETCH(bool, isDangling);
    const QTemporaryDir other;
    const QString target = other.filePath(QStringLiteral("target"));
    if (!isDangling)
    {
        QVERIFY(writeJsonObjectToFile(m_old, target));
    }
    const QString path = inFolder(QStringLiteral("logEvent0.event.json"));
    QVERIFY(QFile::link(target, path));

    QVERIFY(writeJsonObjectToFile(m_new, path));

    QVERIFY(!QFileInfo(path).isSymLink());
    QCOMPARE(contentOf(path), QByteArray("{\"event\":\"new\"}"));
    QCOMPARE(QFileInfo::exists(target), !isDangling);
    if (!isDangling)
    {
        QCOMPARE(contentOf(target), QByteArray("{\"event\":\"old\"}"));
    }
    QCOMPARE(entriesOf(m_folder->path()).size(), 1);
}

void tst_JsonFunctions::replacesAPipeWithoutWaiting()
{
    const QString path = inFolder(QStringLiteral("logEvent0.event.json"));
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);

    QVERIFY(writeJsonObjectToFile(m_new, path));

    QCOMPARE(contentOf(path), QByteArray("{\"event\":\"new\"}"));
}

void tst_JsonFunctions::keepsTheOtherNameOfAFileThatItReplaces()
{
    const QString path = inFolder(QStringLiteral("logEvent0.event.json"));
    const QString claimed = inFolder(QStringLiteral("claimed"));
    QVERIFY(writeJsonObjectToFile(m_old, path));
    QCOMPARE(::link(QFile::encodeName(path).constData(), QFile::encodeName(claimed).constData()),
             0);

    QVERIFY(writeJsonObjectToFile(m_new, path));

    QCOMPARE(contentOf(claimed), QByteArray("{\"event\":\"old\"}"));
    QCOMPARE(contentOf(path), QByteArray("{\"event\":\"new\"}"));
}

void tst_JsonFunctions::refusesWhatIsNoPathOfAFile_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("folder that is not there") << QStringLiteral("a/b.event.json");
    QTest::newRow("no name") << QString();
    QTest::newRow("file as a folder") << QStringLiteral("file/b.event.json");
    QTest::newRow("the folder itself") << QStringLiteral(".");
    QTest::newRow("the folder above") << QStringLiteral("..");
    QTest::newRow("U+0000") << QStringLiteral("a") + QChar(QChar::Null) +
                                   QStringLiteral(".event.json");
    QTest::newRow("name of 256 bytes") << QString(256, QLatin1Char('a'));
}

void tst_JsonFunctions::refusesWhatIsNoPathOfAFile()
{
    QFETCH(QString, name);
    QVERIFY(writeJsonObjectToFile(m_old, inFolder(QStringLiteral("file"))));

    QVERIFY(!writeJsonObjectToFile(m_new, m_folder->path() + QLatin1Char('/') + name));

    QCOMPARE(entriesOf(m_folder->path()), QStringList(QStringLiteral("file")));
    QCOMPARE(contentOf(inFolder(QStringLiteral("file"))), QByteArray("{\"event\":\"old\"}"));
}

void tst_JsonFunctions::refusesAFolderInTheFilesPlace()
{
    const QString name = QStringLiteral("logEvent0.event.json");
    QVERIFY(QDir(m_folder->path()).mkdir(name));

    QVERIFY(!writeJsonObjectToFile(m_new, inFolder(name)));

    QVERIFY(QFileInfo(inFolder(name)).isDir());
    QCOMPARE(entriesOf(m_folder->path()), QStringList(name));
}

void tst_JsonFunctions::writesNamesAsLongAsTheFileSystemAllows()
{
    const QString name(255, QLatin1Char('a'));

    QVERIFY(writeJsonObjectToFile(m_old, inFolder(name)));
    QVERIFY(writeJsonObjectToFile(m_new, inFolder(name)));

    QCOMPARE(contentOf(inFolder(name)), QByteArray("{\"event\":\"new\"}"));
}

void tst_JsonFunctions::hidesTheFileFromOthers()
{
    const QString path = inFolder(QStringLiteral("logEvent0.event.json"));
    const QString narrowPath = inFolder(QStringLiteral("logEvent1.event.json"));
    const auto rights = [](const QString& file) {
        struct stat status = {};
        return ::stat(QFile::encodeName(file).constData(), &status) == 0 ? status.st_mode & 07777
                                                                         : 0;
    };

    const mode_t before = ::umask(0);
    const bool isWritten = writeJsonObjectToFile(m_new, path);
    ::umask(027 | 0077);
    const bool isNarrowWritten = writeJsonObjectToFile(m_new, narrowPath);
    ::umask(before);

    QVERIFY(isWritten && isNarrowWritten);
    QCOMPARE(rights(path), mode_t(0640));
    QCOMPARE(rights(narrowPath), mode_t(0600));
}

void tst_JsonFunctions::leavesTheLastOfManyWriters()
{
    constexpr int writers = 4;
    constexpr int rounds = 200;
    const QString path = inFolder(QStringLiteral("bootlog.event.json"));
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;

    for (int writer = 0; writer < writers; ++writer)
    {
        threads.emplace_back([&path, &failures, writer] {
            for (int round = 0; round < rounds; ++round)
            {
                const QJsonObject object{{QStringLiteral("round"), round},
                                         {QStringLiteral("writer"), writer}};
                failures += writeJsonObjectToFile(object, path) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    QCOMPARE(failures.load(), 0);
    const QJsonObject last = QJsonDocument::fromJson(contentOf(path)).object();
    QCOMPARE(last.value(QStringLiteral("round")).toInt(), rounds - 1);
    QCOMPARE(entriesOf(m_folder->path()), QStringList(QStringLiteral("bootlog.event.json")));
}

QTEST_APPLESS_MAIN(tst_JsonFunctions)
#include "tst_JsonFunctions.moc"
