#include "JsonLoader.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace
{
constexpr qint64 limit = 1024 * 1024;

QByteArray nested(const QByteArray& open, int depth, const QByteArray& close)
{
    return open.repeated(depth) + close.repeated(depth);
}
} // namespace

class tst_JsonLoader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void loadsWhatQtLoads_data();
    void loadsWhatQtLoads();
    void refusesAText_data();
    void refusesAText();
    void comparesKeysAsTheyAreMeant_data();
    void comparesKeysAsTheyAreMeant();
    void refusesALargeTextBeforeItIsRead();
    void agreesWithQtOnDamagedTexts();
    void loadsAFile();
    void refusesAFile_data();
    void refusesAFile();
};

void tst_JsonLoader::loadsWhatQtLoads_data()
{
    QTest::addColumn<QByteArray>("json");

    QTest::newRow("empty object") << QByteArray("{}");
    QTest::newRow("blanks everywhere") << QByteArray(" \t\r\n{ \"a\" : [ 1 , 2 ] , \"b\":{ } } \n");
    QTest::newRow("every kind of value")
        << QByteArray("{\"a\":null,\"b\":true,\"c\":false,\"d\":\"x\",\"e\":[],\"f\":{},\"g\":0}");
    QTest::newRow("numbers") << QByteArray("{\"a\":[0,-0,10,-1.5,1e3,1E-3,1.25e+2,-7e0]}");
    QTest::newRow("escapes") << QByteArray(
        "{\"a\\n\":\"\\\"\\\\\\/\\b\\f\\n\\r\\t\\u00fc\\uD83D\\ude00\\ud800\"}");
    QTest::newRow("UTF-8") << QByteArray("{\"\xc3\xbc\":\"\xe2\x82\xac\xf0\x9f\x98\x80\"}");
    QTest::newRow("same key in other objects")
        << QByteArray("{\"a\":{\"a\":1},\"b\":[{\"a\":1},{\"a\":2}]}");
    QTest::newRow("keys that differ in case") << QByteArray("{\"a\":1,\"A\":2}");
    QTest::newRow("empty key") << QByteArray("{\"\":1}");
    QTest::newRow("as deep as allowed") << QByteArray("{\"a\":") + nested("[", 63, "]") + "}";
    QTest::newRow("as deep, of objects")
        << QByteArray("{\"a\":").repeated(63) + "{}" + QByteArray("}").repeated(63);
    QTest::newRow("many side by side")
        << QByteArray("{\"a\":[") + QByteArray("{},[],").repeated(500) + "1]}";
}

void tst_JsonLoader::loadsWhatQtLoads()
{
    QFETCH(QByteArray, json);
    const QJsonObject expected = QJsonDocument::fromJson(json).object();

    const auto result = JsonLoader::fromBytes(json, limit);
    const auto marked = JsonLoader::fromBytes("\xEF\xBB\xBF" + json, limit);

    QCOMPARE(result.error, QString());
    QVERIFY(result.isLoaded());
    QCOMPARE(result.object, expected);
    QCOMPARE(marked.error, QString());
    QCOMPARE(marked.object, expected);
}

void tst_JsonLoader::refusesAText_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    const QString noObject = QStringLiteral("no JSON object");
    const QString syntax = QStringLiteral("no valid JSON in line 1");
    const QString deep = QStringLiteral("nested deeper than 64 in line 1");
    QTest::newRow("nothing") << QByteArray() << noObject;
    QTest::newRow("blanks") << QByteArray(" \n ") << noObject;
    QTest::newRow("array") << QByteArray("[{}]") << noObject;
    QTest::newRow("string") << QByteArray("\"a\"") << noObject;
    QTest::newRow("number") << QByteArray("7") << noObject;
    QTest::newRow("only a byte order mark") << QByteArray("\xEF\xBB\xBF") << noObject;
    QTest::newRow("two byte order marks") << QByteArray("\xEF\xBB\xBF\xEF\xBB\xBF{}") << noObject;
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE{\0}\0", 6) << noObject;
    QTest::newRow("not closed") << QByteArray("{") << syntax;
    QTest::newRow("closed with the other bracket") << QByteArray("{\"a\":[}") << syntax;
    QTest::newRow("no colon") << QByteArray("{\"a\" 1}") << syntax;
    QTest::newRow("no value") << QByteArray("{\"a\":}") << syntax;
    QTest::newRow("no key") << QByteArray("{1:1}") << syntax;
    QTest::newRow("comma at the end") << QByteArray("{\"a\":1,}") << syntax;
    QTest::newRow("comma at the end of an array") << QByteArray("{\"a\":[1,]}") << syntax;
    QTest::newRow("single quotes") << QByteArray("{'a':1}") << syntax;
    QTest::newRow("comment") << QByteArray("{/**/}") << syntax;
    QTest::newRow("unknown word") << QByteArray("{\"a\":nul}") << syntax;
    QTest::newRow("point without digits") << QByteArray("{\"a\":1.}") << syntax;
    QTest::newRow("exponent without digits") << QByteArray("{\"a\":1e}") << syntax;
    QTest::newRow("minus alone") << QByteArray("{\"a\":-}") << syntax;
    QTest::newRow("leading zero") << QByteArray("{\"a\":01}") << syntax;
    QTest::newRow("string without end") << QByteArray("{\"a") << syntax;
    QTest::newRow("backslash at the end") << QByteArray("{\"a\\") << syntax;
    QTest::newRow("unknown escape") << QByteArray("{\"\\x\":1}") << syntax;
    QTest::newRow("escaped U+0000 byte") << QByteArray("{\"\\\0\":1}", 8) << syntax;
    QTest::newRow("cut escape") << QByteArray("{\"\\u00") << syntax;
    QTest::newRow("wrong digits") << QByteArray("{\"\\u00g0\":1}") << syntax;
    QTest::newRow("sign as digit") << QByteArray("{\"\\u+001\":1}") << syntax;
    QTest::newRow("control character") << QByteArray("{\"a\":\"\n\"}") << syntax;
    QTest::newRow("U+0000 between") << QByteArray("{\0}", 3) << syntax;
    QTest::newRow("something behind")
        << QByteArray("{}x") << QStringLiteral("text after the object in line 1");
    QTest::newRow("a second object")
        << QByteArray("{}\n{}") << QStringLiteral("text after the object in line 2");
    QTest::newRow("one too deep") << QByteArray("{\"a\":") + nested("[", 64, "]") + "}" << deep;
    QTest::newRow("bomb of arrays")
        << QByteArray("{\"a\":") + nested("[", 200000, "]") + "}" << deep;
    QTest::newRow("bomb without end") << QByteArray("{\"a\":").repeated(100000) << deep;
    QTest::newRow("the line is named")
        << QByteArray("{\n\"a\":1,\n\"b\":x}") << QStringLiteral("no valid JSON in line 3");
}

void tst_JsonLoader::refusesAText()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);

    const auto result = JsonLoader::fromBytes(json, limit);

    QVERIFY(!result.isLoaded());
    QCOMPARE(result.error, error);
    QVERIFY(result.object.isEmpty());
}

void tst_JsonLoader::comparesKeysAsTheyAreMeant_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");

    QTest::newRow("same") << QByteArray("{\"a\":1,\n\"b\":2,\"a\":3}")
                          << QStringLiteral("key \"a\" twice in one object in line 2");
    QTest::newRow("inside") << QByteArray("{\"x\":[{\"a\":1,\"a\":1}]}")
                            << QStringLiteral("key \"a\" twice in one object in line 1");
    QTest::newRow("spelled with an escape")
        << QByteArray("{\"ab\":1,\"a\\u0062\":2}")
        << QStringLiteral("key \"ab\" twice in one object in line 1");
    QTest::newRow("pair of escapes") << QByteArray("{\"\xf0\x9f\x98\x80\":1,\"\\ud83d\\ude00\":2}")
                                     << QString::fromUtf8("key \"\xf0\x9f\x98\x80\" twice in one "
                                                          "object in line 1");
    QTest::newRow("slash") << QByteArray("{\"/\":1,\"\\/\":2}")
                           << QStringLiteral("key \"/\" twice in one object in line 1");
    QTest::newRow("empty") << QByteArray("{\"\":1,\"\":2}")
                           << QStringLiteral("key \"\" twice in one object in line 1");
    const QByteArray longKey(1000, 'k');
    QTest::newRow("a long one is shortened")
        << QByteArray("{\"" + longKey + "\":1,\"" + longKey + "\":2}")
        << QStringLiteral("key \"") + QString(64, QLatin1Char('k')) +
               QStringLiteral("\" twice in one object in line 1");
}

void tst_JsonLoader::comparesKeysAsTheyAreMeant()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);

    QCOMPARE(JsonLoader::fromBytes(json, limit).error, error);
}

void tst_JsonLoader::refusesALargeTextBeforeItIsRead()
{
    const QByteArray json("{\"a\":1}");

    QVERIFY(JsonLoader::fromBytes(json, json.size()).isLoaded());
    QCOMPARE(JsonLoader::fromBytes(json, json.size() - 1).error,
             QStringLiteral("larger than 6 bytes"));
}

void tst_JsonLoader::agreesWithQtOnDamagedTexts()
{
    const QByteArray good("{\"a\":[1,-2.5e3,{\"b\":\"\\u00fc\\\"\",\"c\":null}],\"d\":{\"e\":true},"
                          "\"f\":\"\xc3\xbc\"}");
    const QByteArray characters =
        QByteArray("{}[]\",:\\ue0123456789.-+ \n\tabctrfalsn\xc3\xbc\x80") + '\0';
    QRandomGenerator random(20260314);
    int loaded = 0;

    for (int round = 0; round < 200000; ++round)
    {
        QByteArray json = good;
        for (int change = random.bounded(1, 4); change > 0; --change)
        {
            const int position = random.bounded(json.size());
            const char character = characters.at(random.bounded(characters.size()));
            switch (random.bounded(3))
            {
            case 0:
                json[position] = character;
                break;
            case 1:
                json.insert(position, character);
                break;
            default:
                json.remove(position, random.bounded(1, 4));
            }
        }
        const auto result = JsonLoader::fromBytes(json, limit);
        if (result.isLoaded())
        {
            ++loaded;
            QCOMPARE(result.object, QJsonDocument::fromJson(json).object());
        }
    }
    // Neither everything nor nothing: the damage is of the right strength to say something.
    QVERIFY(loaded > 1000);
    QVERIFY(loaded < 190000);
}

void tst_JsonLoader::loadsAFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("pump.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("{\"a\":1}"), qint64(7));
    file.close();

    const auto result = JsonLoader::fromFile(file.fileName(), 7);

    QCOMPARE(result.error, QString());
    QCOMPARE(result.object, (QJsonObject{{QStringLiteral("a"), 1}}));
    QCOMPARE(JsonLoader::fromFile(file.fileName(), 6).error, QStringLiteral("larger than 6 bytes"));
}

void tst_JsonLoader::refusesAFile_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("error");

    QTest::newRow("missing") << QStringLiteral("nothing")
                             << QStringLiteral("No such file or directory");
    QTest::newRow("folder") << QStringLiteral("folder") << QStringLiteral("no regular file");
    QTest::newRow("pipe") << QStringLiteral("pipe") << QStringLiteral("no regular file");
    QTest::newRow("device") << QStringLiteral("device") << QStringLiteral("no regular file");
    QTest::newRow("link to itself")
        << QStringLiteral("loop") << QStringLiteral("Too many levels of symbolic links");
    QTest::newRow("empty") << QStringLiteral("empty") << QStringLiteral("no JSON object");
    QTest::newRow("huge") << QStringLiteral("huge") << QStringLiteral("larger than 1048576 bytes");
    QTest::newRow("U+0000") << QStringLiteral("empty") + QChar(QChar::Null) + QStringLiteral("x")
                            << QStringLiteral("the path holds U+0000");
}

void tst_JsonLoader::refusesAFile()
{
    QFETCH(QString, name);
    QFETCH(QString, error);
    const QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))).constData(), 0600),
             0);
    QVERIFY(QFile::link(QStringLiteral("/dev/zero"), folder.filePath(QStringLiteral("device"))));
    QVERIFY(QFile::link(QStringLiteral("loop"), folder.filePath(QStringLiteral("loop"))));
    QFile empty(folder.filePath(QStringLiteral("empty")));
    QVERIFY(empty.open(QIODevice::WriteOnly));
    QFile huge(folder.filePath(QStringLiteral("huge")));
    // Sparse: it takes no room, and reading it first would take long.
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(Q_INT64_C(1) << 40));

    const auto result = JsonLoader::fromFile(folder.path() + QLatin1Char('/') + name, limit);

    QVERIFY(!result.isLoaded());
    QCOMPARE(result.error, error);
    QVERIFY(result.object.isEmpty());
}

QTEST_APPLESS_MAIN(tst_JsonLoader)
#include "tst_JsonLoader.moc"
