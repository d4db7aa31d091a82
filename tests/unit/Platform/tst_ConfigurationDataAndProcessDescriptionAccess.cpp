#include "Platform/ConfigurationDataAndProcessDescriptionAccess.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationAndProcessDataTools.h"

#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

class tst_ConfigurationDataAndProcessDescriptionAccess : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void parsesTheDescriptionOfAnInstance_data();
    void parsesTheDescriptionOfAnInstance();
    void readsAnewAtEachCall();
    void followsALinkWithinTheFolder();
    void warnsOnceAboutADescription_data();
    void warnsOnceAboutADescription();
    void warnsOnceAboutAHugeDescription();
    void refusesALinkOutOfTheFolder();
    void refusesANameThatIsNoFileName_data();
    void refusesANameThatIsNoFileName();
    void neverReadsTheWorkingDirectory();

private:
    void write(const QString& name, const QByteArray& content) const;
    void expectWarning(const QString& name, const QString& error);
    QSharedPointer<ConfigurationAndProcessDataBase> parse(const QString& name) const;

    QScopedPointer<QTemporaryDir> m_folder;
    WarningRecorder m_warnings;
};

void tst_ConfigurationDataAndProcessDescriptionAccess::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    m_warnings.start();
}

void tst_ConfigurationDataAndProcessDescriptionAccess::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void tst_ConfigurationDataAndProcessDescriptionAccess::write(const QString& name,
                                                             const QByteArray& content) const
{
    QFile file(m_folder->filePath(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

void tst_ConfigurationDataAndProcessDescriptionAccess::expectWarning(const QString& name,
                                                                     const QString& error)
{
    const QString path = m_folder->path() + QLatin1Char('/') + name + QStringLiteral(".json");
    m_warnings.expect(
        QStringLiteral("Can't read configuration description \"%1\" : \"%2\"").arg(path, error),
        QStringLiteral("ConfigurationDataAndProcessDescriptionAccess"),
        QStringLiteral("ConfigurationDataAndProcessDescriptionAccess::"
                       "getParsedConfigurationProcessDescription"));
}

QSharedPointer<ConfigurationAndProcessDataBase>
tst_ConfigurationDataAndProcessDescriptionAccess::parse(const QString& name) const
{
    return ConfigurationDataAndProcessDescriptionAccess::getParsedConfigurationProcessDescription(
        QDir(m_folder->path()), name, false);
}

void tst_ConfigurationDataAndProcessDescriptionAccess::parsesTheDescriptionOfAnInstance_data()
{
    QTest::addColumn<QByteArray>("content");

    const QByteArray json("{\"Limits\":{\"High\":{\"value\":{\"lang_en\":\"Limit exceeded\"}}}}\n");
    QTest::newRow("plain") << json;
    QTest::newRow("with a byte order mark") << QByteArray("\xEF\xBB\xBF" + json);
}

void tst_ConfigurationDataAndProcessDescriptionAccess::parsesTheDescriptionOfAnInstance()
{
    QFETCH(QByteArray, content);
    write(QStringLiteral("Channel1.json"), content);

    const auto root = parse(QStringLiteral("Channel1"));

    const QVariantMap text{{QStringLiteral("lang_en"), QStringLiteral("Limit exceeded")}};
    QVERIFY(!root.isNull());
    QCOMPARE(
        ConfigurationAndProcessDataTools::extractConfigValue(QStringLiteral("Limits/High"), root),
        QVariant(text));
}

void tst_ConfigurationDataAndProcessDescriptionAccess::readsAnewAtEachCall()
{
    write(QStringLiteral("a.json"), "{\"x\":{\"value\":1}}");
    const auto before = parse(QStringLiteral("a"));
    write(QStringLiteral("a.json"), "{\"x\":{\"value\":2}}");

    const auto after = parse(QStringLiteral("a"));

    const auto value = [](const QSharedPointer<ConfigurationAndProcessDataBase>& root) {
        return ConfigurationAndProcessDataTools::extractConfigValue(QStringLiteral("x"), root)
            .toInt();
    };
    QCOMPARE(value(before), 1);
    QCOMPARE(value(after), 2);
}

void tst_ConfigurationDataAndProcessDescriptionAccess::followsALinkWithinTheFolder()
{
    write(QStringLiteral("default.json"), "{\"x\":{\"value\":1}}");
    QVERIFY(
        QFile::link(QStringLiteral("default.json"), m_folder->filePath(QStringLiteral("a.json"))));

    QVERIFY(!parse(QStringLiteral("a")).isNull());
}

void tst_ConfigurationDataAndProcessDescriptionAccess::warnsOnceAboutADescription_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");

    QTest::newRow("missing") << QByteArray() << QStringLiteral("No such file or directory");
    QTest::newRow("empty") << QByteArray("") << QStringLiteral("no JSON object");
    QTest::newRow("garbage") << QByteArray("\x01\x02\x03") << QStringLiteral("no JSON object");
    QTest::newRow("array") << QByteArray("[]") << QStringLiteral("no JSON object");
    QTest::newRow("cut") << QByteArray("{\"a\":{\n") << QStringLiteral("no valid JSON in line 2");
    QTest::newRow("key twice") << QByteArray("{\"a\":1,\"a\":2}")
                               << QStringLiteral("key \\\"a\\\" twice in one object in line 1");
    QTest::newRow("too deep") << QByteArray("{\"a\":") + QByteArray(100000, '[')
                              << QStringLiteral("nested deeper than 64 in line 1");
}

void tst_ConfigurationDataAndProcessDescriptionAccess::warnsOnceAboutADescription()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    if (!content.isNull())
    {
        write(QStringLiteral("a.json"), content);
    }
    expectWarning(QStringLiteral("a"), error);

    QVERIFY(parse(QStringLiteral("a")).isNull());
}

void tst_ConfigurationDataAndProcessDescriptionAccess::warnsOnceAboutAHugeDescription()
{
    const QString path = m_folder->filePath(QStringLiteral("a.json"));
    write(QStringLiteral("a.json"), "{}");
    QVERIFY(QFile::resize(path, 16 * 1024 * 1024 + 1));
    expectWarning(QStringLiteral("a"), QStringLiteral("larger than 16777216 bytes"));

    QVERIFY(parse(QStringLiteral("a")).isNull());
}

void tst_ConfigurationDataAndProcessDescriptionAccess::refusesALinkOutOfTheFolder()
{
    const QTemporaryDir other;
    QFile target(other.filePath(QStringLiteral("a.json")));
    QVERIFY(target.open(QIODevice::WriteOnly));
    QCOMPARE(target.write("{}"), qint64(2));
    target.close();
    QVERIFY(QFile::link(target.fileName(), m_folder->filePath(QStringLiteral("a.json"))));
    expectWarning(QStringLiteral("a"), QStringLiteral("a symbolic link leads out of the folder"));

    QVERIFY(parse(QStringLiteral("a")).isNull());
}

void tst_ConfigurationDataAndProcessDescriptionAccess::refusesANameThatIsNoFileName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");

    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("slash") << QStringLiteral("below/a") << QStringLiteral("below/a");
    QTest::newRow("upwards") << QStringLiteral("../a") << QStringLiteral("../a");
    QTest::newRow("points") << QStringLiteral("..") << QStringLiteral("..");
    QTest::newRow("hidden") << QStringLiteral(".a") << QStringLiteral(".a");
    QTest::newRow("U+0000") << QStringLiteral("a") + QChar(QChar::Null)
                            << QStringLiteral("a\\u0000");
}

void tst_ConfigurationDataAndProcessDescriptionAccess::refusesANameThatIsNoFileName()
{
    QFETCH(QString, name);
    QFETCH(QString, shown);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("below")));
    for (const char* file : {"a.json", "below/a.json", ".a.json", ".json", "...json"})
    {
        write(QLatin1String(file), "{}");
    }
    expectWarning(shown, QStringLiteral("the instance name is no plain file name"));

    QVERIFY(parse(name).isNull());
}

void tst_ConfigurationDataAndProcessDescriptionAccess::neverReadsTheWorkingDirectory()
{
    write(QStringLiteral("a.json"), "{}");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));

    // What a refused configuration folder leads to, after its own warning.
    const auto root =
        ConfigurationDataAndProcessDescriptionAccess::getParsedConfigurationProcessDescription(
            QDir(QString()), QStringLiteral("a"), false);

    QVERIFY(QDir::setCurrent(before));
    QVERIFY(root.isNull());
}

QTEST_APPLESS_MAIN(tst_ConfigurationDataAndProcessDescriptionAccess)
#include "tst_ConfigurationDataAndProcessDescriptionAccess.moc"
