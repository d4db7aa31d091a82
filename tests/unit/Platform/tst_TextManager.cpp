#include "Platform/TextManager.h"

#include "Platform/ReadAllTextsHelper.h"

#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <thread>
#include <vector>

namespace
{
QByteArray compiledTexts()
{
    QFile file(QStringLiteral(TEST_TEXT_FOLDER "/lang_de.qm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString placeholdersOf(const QString& text)
{
    QStringList placeholders;
    auto matches = QRegularExpression(QStringLiteral("%[0-9]+")).globalMatch(text);
    while (matches.hasNext())
    {
        placeholders.append(matches.next().captured());
    }
    placeholders.sort();
    return placeholders.join(QLatin1Char(' '));
}
} // namespace

class tst_TextManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void isEmptyWithoutAFolder();
    void namesTheLanguagesByTheirFiles();
    void givesATextInAllLanguagesThatHaveIt_data();
    void givesATextInAllLanguagesThatHaveIt();
    void readsNoFileAfterItsConstruction();
    void answersSeveralThreadsAtOnce();
    void hasEveryCommonTextInEveryLanguage_data();
    void hasEveryCommonTextInEveryLanguage();
    void warnsOnceAboutAMissingFolder_data();
    void warnsOnceAboutAMissingFolder();
    void warnsOnceAboutAFile_data();
    void warnsOnceAboutAFile();
    void warnsOnceAboutAnythingThatIsNoRegularFile_data();
    void warnsOnceAboutAnythingThatIsNoRegularFile();
    void usesTheGoodFilesBesideABadOne();
    void survivesEveryCutOfAFile();
    void survivesEveryWrongByteOfAFile();

private:
    QString addFile(const QString& name, const QByteArray& content) const;
    void expectWarning(const QString& path, const QString& error);

    const QString m_textFolder = QStringLiteral(TEST_TEXT_FOLDER);
    const QString m_german = QStringLiteral("lang_de");
    const QString m_english = QStringLiteral("lang_en");
    QScopedPointer<QTemporaryDir> m_folder;
    WarningRecorder m_warnings;
};

void tst_TextManager::init()
{
    m_folder.reset(new QTemporaryDir);
    QVERIFY(m_folder->isValid());
    m_warnings.start();
}

void tst_TextManager::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

QString tst_TextManager::addFile(const QString& name, const QByteArray& content) const
{
    QFile file(m_folder->path() + QLatin1Char('/') + name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
    {
        qWarning() << "Can't prepare" << file.fileName();
    }
    return file.fileName();
}

void tst_TextManager::expectWarning(const QString& path, const QString& error)
{
    m_warnings.expect(QStringLiteral("Can't read language file \"%1\" : \"%2\"").arg(path, error),
                      QStringLiteral("TextManager"));
}

void tst_TextManager::isEmptyWithoutAFolder()
{
    const TextManager texts{QString()};

    QVERIFY(texts.getLanguages().isEmpty());
    QVERIFY(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")).isEmpty());
}

void tst_TextManager::namesTheLanguagesByTheirFiles()
{
    QCOMPARE(TextManager(m_textFolder).getLanguages(), QStringList({m_german, m_english}));

    addFile(QStringLiteral("lang_z.qm"), compiledTexts());
    addFile(QStringLiteral("lang_pt.BR.qm"), compiledTexts());
    addFile(QStringLiteral("Lang_A.qm"), compiledTexts());
    addFile(QStringLiteral("lang_de.ts"), "no compiled file");
    addFile(QStringLiteral("lang_de.qm~"), "no compiled file");
    QCOMPARE(TextManager(m_folder->path()).getLanguages(),
             QStringList({QStringLiteral("Lang_A"), QStringLiteral("lang_pt.BR"),
                          QStringLiteral("lang_z")}));
}

void tst_TextManager::givesATextInAllLanguagesThatHaveIt_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QVariantMap>("textObject");

    QTest::newRow("in both") << QStringLiteral("PumpControl/OverTemperature")
                             << QVariantMap{
                                    {m_german, QStringLiteral("Übertemperatur an %1, Wert %2")},
                                    {m_english, QStringLiteral("Overtemperature at %1, value %2")}};
    QTest::newRow("in one") << QStringLiteral("PumpControl/OnlyGerman")
                            << QVariantMap{{m_german, QStringLiteral("Nur auf Deutsch")}};
    QTest::newRow("unfinished") << QStringLiteral("PumpControl/Unfinished") << QVariantMap();
    QTest::newRow("finished and empty in one")
        << QStringLiteral("PumpControl/Empty")
        << QVariantMap{{m_english, QStringLiteral("No longer empty")}};
    QTest::newRow("url beyond ASCII")
        << QStringLiteral("Pumpe/Größe")
        << QVariantMap{{m_german, QStringLiteral("Größe")}, {m_english, QStringLiteral("Size")}};
    QTest::newRow("unknown") << QStringLiteral("PumpControl/Unknown") << QVariantMap();
    QTest::newRow("other case") << QStringLiteral("pumpcontrol/OverTemperature") << QVariantMap();
    QTest::newRow("beginning of a url") << QStringLiteral("PumpControl") << QVariantMap();
    QTest::newRow("empty") << QString() << QVariantMap();
    QTest::newRow("known up to its U+0000")
        << QStringLiteral("PumpControl/OverTemperature") + QChar(QChar::Null) + QLatin1Char('x')
        << QVariantMap();
}

void tst_TextManager::givesATextInAllLanguagesThatHaveIt()
{
    QFETCH(QString, url);
    QFETCH(QVariantMap, textObject);
    const TextManager texts(m_textFolder);

    // The second answer comes from what the first one has left.
    QCOMPARE(ReadAllTextsHelper::getAllTextsAsVariantMap(texts, url), textObject);
    QCOMPARE(ReadAllTextsHelper::getAllTextsAsVariantMap(texts, url), textObject);
}

void tst_TextManager::readsNoFileAfterItsConstruction()
{
    const QString path = addFile(QStringLiteral("lang_de.qm"), compiledTexts());
    const TextManager texts(m_folder->path());

    QVERIFY(QFile::resize(path, 0));
    QVERIFY(QFile::remove(path));

    QCOMPARE(texts.getAllTexts(QStringLiteral("PumpControl/OnlyGerman")),
             (QVariantMap{{m_german, QStringLiteral("Nur auf Deutsch")}}));
}

void tst_TextManager::answersSeveralThreadsAtOnce()
{
    const TextManager texts(m_textFolder);
    const QStringList urls{QStringLiteral("PumpControl/OverTemperature"),
                           QStringLiteral("PumpControl/OnlyGerman"), QStringLiteral("Pumpe/Größe"),
                           QStringLiteral("PumpControl/Unknown")};
    std::vector<int> counts(4, 0);
    std::vector<std::thread> threads;

    for (int& count : counts)
    {
        threads.emplace_back([&texts, &urls, &count] {
            for (int round = 0; round < 4000; ++round)
            {
                count += texts.getAllTexts(urls.at(round % urls.size())).size();
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    // Two languages, one, two and none, a thousand times each.
    QCOMPARE(counts, std::vector<int>(4, 5000));
}

void tst_TextManager::hasEveryCommonTextInEveryLanguage_data()
{
    QTest::addColumn<QString>("placeholders");

    QTest::newRow("EventlistHandler/AlarmAcknowledged") << QString();
    QTest::newRow("EventlistHandler/CentralDetectorInactive") << QString();
    QTest::newRow("EventlistHandler/CentralDetectorActive") << QString();
    QTest::newRow("EventlistHandler/AlarmlistOverflow") << QString();
    QTest::newRow("EventlistHandler/Eventlist") << QString();
    QTest::newRow("EventlistHandler/EventTypeAlarm") << QString();
    QTest::newRow("EventlistHandler/EventTypeFault") << QString();
    QTest::newRow("EventlistHandler/EventTypeAuditTrail") << QString();
    QTest::newRow("EventlistHandler/EventTypeOtherEvent") << QString();
    QTest::newRow("EventlistHandler/PowerOnEvent") << QString();
    QTest::newRow("EventlistHandler/SystemWatchdog") << QStringLiteral("%1");
    QTest::newRow("EventlistHandler/SystemRestarted") << QString();
    QTest::newRow("EventlistHandler/FactoryResetSuccessful") << QString();
    QTest::newRow("EventlistHandler/FactoryResetError") << QString();
    QTest::newRow("EventlistHandler/EventlistDeleted") << QString();
    QTest::newRow("GlobalFaultTexts/DataBaseFault") << QString();
    QTest::newRow("GlobalAuditTrailTexts/AlarmsAcknowledged") << QStringLiteral("%1 %2");
}

void tst_TextManager::hasEveryCommonTextInEveryLanguage()
{
    QFETCH(QString, placeholders);
    const TextManager texts(QStringLiteral(EVENTLISTHANDLER_TEXT_FOLDER));
    const QStringList languages{m_german, m_english, QStringLiteral("lang_fr")};

    const QVariantMap textObject = texts.getAllTexts(QString::fromUtf8(QTest::currentDataTag()));

    QCOMPARE(texts.getLanguages(), languages);
    QCOMPARE(textObject.keys(), languages);
    for (const QVariant& text : textObject)
    {
        QVERIFY(!text.toString().trimmed().isEmpty());
        QCOMPARE(placeholdersOf(text.toString()), placeholders);
    }
}

void tst_TextManager::warnsOnceAboutAMissingFolder_data()
{
    QTest::addColumn<QString>("name");

    QTest::newRow("missing") << QStringLiteral("nothing");
    QTest::newRow("a file") << QStringLiteral("file");
}

void tst_TextManager::warnsOnceAboutAMissingFolder()
{
    QFETCH(QString, name);
    addFile(QStringLiteral("file"), "text");
    const QString folder = m_folder->filePath(name);
    m_warnings.expect(QStringLiteral("Can't read text folder \"%1\"").arg(folder),
                      QStringLiteral("TextManager"), QStringLiteral("TextManager::TextManager"));

    const TextManager texts(folder);

    QVERIFY(texts.getLanguages().isEmpty());
}

void tst_TextManager::warnsOnceAboutAFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");

    const QByteArray good = compiledTexts();
    const QByteArray magic = good.left(16);
    const QString none = QStringLiteral("no compiled language file");
    const QString damaged = QStringLiteral("damaged language file");
    const QString other = QStringLiteral("not made with \\\"lrelease -idbased\\\"");
    QTest::newRow("empty") << QByteArray() << none;
    QTest::newRow("garbage") << QByteArray("garbage").repeated(1000) << none;
    QTest::newRow("source text") << QByteArray("<?xml version=\"1.0\"?>\n<TS/>") << none;
    QTest::newRow("half of the magic number") << magic.left(8) << none;
    QTest::newRow("cut in a head") << good.left(magic.size() + 3) << damaged;
    QTest::newRow("cut in the middle") << good.left(good.size() / 2) << damaged;
    QTest::newRow("one byte short") << good.left(good.size() - 1) << damaged;
    QTest::newRow("one byte more") << QByteArray(good + 'x') << damaged;
    QTest::newRow("unknown part") << QByteArray(magic + QByteArray::fromHex("1100000000"))
                                  << damaged;
    QTest::newRow("a length beyond the end")
        << QByteArray(magic + QByteArray::fromHex("42ffffffff0000")) << damaged;
    QTest::newRow("a message beyond the end")
        << QByteArray(magic + QByteArray::fromHex("42000000080000000000000100"
                                                  "690000000101"))
        << damaged;
    QTest::newRow("a message without end")
        << QByteArray(magic + QByteArray::fromHex("42000000080000000000000000"
                                                  "69000000050300000000"))
        << damaged;
    QTest::newRow("a text longer than its message")
        << QByteArray(magic + QByteArray::fromHex("42000000080000000000000000"
                                                  "6900000006037fffffff01"))
        << damaged;
    QTest::newRow("names other files")
        << QByteArray(good + QByteArray::fromHex("9600000000")) << other;
    QTest::newRow("texts without ids")
        << QByteArray(good + QByteArray::fromHex("2f0000000100")) << other;
}

void tst_TextManager::warnsOnceAboutAFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    expectWarning(addFile(QStringLiteral("lang_de.qm"), content), error);

    const TextManager texts(m_folder->path());

    QVERIFY(texts.getLanguages().isEmpty());
    QVERIFY(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")).isEmpty());
}

void tst_TextManager::warnsOnceAboutAnythingThatIsNoRegularFile_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("error");

    QTest::newRow("folder") << QStringLiteral("folder") << QStringLiteral("no regular file");
    QTest::newRow("pipe") << QStringLiteral("pipe") << QStringLiteral("no regular file");
    QTest::newRow("link to nothing")
        << QStringLiteral("link") << QStringLiteral("No such file or directory");
    QTest::newRow("endless device")
        << QStringLiteral("device") << QStringLiteral("no regular file");
    QTest::newRow("huge") << QStringLiteral("huge") << QStringLiteral("larger than 16777216 bytes");
}

void tst_TextManager::warnsOnceAboutAnythingThatIsNoRegularFile()
{
    QFETCH(QString, kind);
    QFETCH(QString, error);
    const QString path = m_folder->filePath(QStringLiteral("lang_de.qm"));
    if (kind == QLatin1String("folder"))
    {
        QVERIFY(QDir().mkdir(path));
    }
    else if (kind == QLatin1String("pipe"))
    {
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    }
    else if (kind == QLatin1String("huge"))
    {
        addFile(QStringLiteral("lang_de.qm"), compiledTexts());
        QVERIFY(QFile::resize(path, Q_INT64_C(1) << 40));
    }
    else
    {
        QVERIFY(QFile::link(kind == QLatin1String("link") ? QStringLiteral("nothing")
                                                          : QStringLiteral("/dev/zero"),
                            path));
    }
    expectWarning(path, error);

    QVERIFY(TextManager(m_folder->path()).getLanguages().isEmpty());
}

void tst_TextManager::usesTheGoodFilesBesideABadOne()
{
    addFile(QStringLiteral("lang_de.qm"), compiledTexts());
    expectWarning(addFile(QStringLiteral("lang_en.qm"), "garbage"),
                  QStringLiteral("no compiled language file"));
    expectWarning(addFile(QStringLiteral("lang_fr.qm"), QByteArray()),
                  QStringLiteral("no compiled language file"));

    const TextManager texts(m_folder->path());

    QCOMPARE(texts.getLanguages(), QStringList(m_german));
    QCOMPARE(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")).size(), 1);
}

void tst_TextManager::survivesEveryCutOfAFile()
{
    const QByteArray good = compiledTexts();
    QVERIFY(good.size() > 200);

    for (int size = 0; size < good.size(); ++size)
    {
        const QString path = addFile(QStringLiteral("lang_de.qm"), good.left(size));
        const TextManager texts(m_folder->path());
        const QVector<LoggedMessage> messages = m_warnings.take();

        // Each part stands alone: a cut between two of them leaves a file with fewer texts.
        QCOMPARE(messages.size(), 1 - texts.getLanguages().size());
        QVERIFY(messages.isEmpty() || messages.first().text.contains(path));
        QVERIFY(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")).size() <= 1);
    }
}

void tst_TextManager::survivesEveryWrongByteOfAFile()
{
    const QByteArray good = compiledTexts();
    int refused = 0;

    for (int position = 0; position < good.size(); ++position)
    {
        for (const int mask : {0x01, 0x80, 0xff})
        {
            QByteArray wrong = good;
            wrong[position] = char(wrong.at(position) ^ mask);
            addFile(QStringLiteral("lang_de.qm"), wrong);
            const TextManager texts(m_folder->path());
            for (const char* url : {"PumpControl/OverTemperature", "PumpControl/OnlyGerman",
                                    "PumpControl/Empty", "PumpControl/Unknown"})
            {
                QVERIFY(texts.getAllTexts(QString::fromUtf8(url)).size() <= 1);
            }
            refused += m_warnings.take().size();
        }
    }
    QVERIFY(refused > 100);
}

QTEST_APPLESS_MAIN(tst_TextManager)
#include "tst_TextManager.moc"
