#include "core/SpoolReader.h"

#include "core/EventDecoder.h"

#include "TestSupport/FakeTextManager.h"
#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace eventlistd;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

QByteArray entry(const QString& description, const QString& time = QString())
{
    const QJsonObject object{{s("AlarmID"), QString()},
                             {s("DateTimeMsUTC"), time},
                             {s("Description"), description},
                             {s("EventId"), QString()},
                             {s("EventType"), 3},
                             {s("IconType"), QString()},
                             {s("KeywordName"), QString()},
                             {s("MetaData"), QJsonObject()},
                             {s("ModuleName"), QString()},
                             {s("SourceHashType"), 0},
                             {s("SourceHashes"), QString()},
                             {s("State"), 0},
                             {s("User"), QString()}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}
} // namespace

class tst_SpoolReader : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void takesFilesInTheOrderOfTheirTimes();
    void offersFilesAgainThatWereNotStored();
    void goesThroughWhatAnEarlierRunHasClaimed();
    void givesTheSameKeyForTheSameFile();
    void takesNothingWhilePaused();
    void rejectsOddFiles_data();
    void rejectsOddFiles();
    void boundsTheRejectedFiles();
    void removesOldStraysOnly();
    void takesNewFilesFromTheEventLoop();
    void makesTheFolderWhenItIsMissing();

private:
    void write(const QString& name, const QByteArray& content) const;
    void make(int filesPerBatch = 64);
    QStringList files(const QString& folder = QString()) const;
    QString path(const QString& name) const { return m_folder->filePath(name); }

    FakeTextManager m_texts;
    const EventDecoder m_decoder{m_texts};
    WarningRecorder m_warnings;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<SpoolReader> m_reader;
    SpoolReader::Settings m_settings;
    QVector<SpoolReader::Item> m_stored;
    bool m_isStoring = true;
};

void tst_SpoolReader::init()
{
    m_warnings.start();
    m_folder = std::make_unique<QTemporaryDir>();
    m_settings = SpoolReader::Settings();
    m_settings.folder = m_folder->path();
    m_stored.clear();
    m_isStoring = true;
    make();
}

void tst_SpoolReader::cleanup()
{
    m_reader.reset();
    VERIFY_WARNINGS(m_warnings);
}

void tst_SpoolReader::make(int filesPerBatch)
{
    m_settings.filesPerBatch = filesPerBatch;
    m_reader = std::make_unique<SpoolReader>(m_settings, m_decoder,
                                             [this](QVector<SpoolReader::Item>& items) {
                                                 if (m_isStoring)
                                                 {
                                                     m_stored += items;
                                                 }
                                                 return m_isStoring;
                                             });
}

void tst_SpoolReader::write(const QString& name, const QByteArray& content) const
{
    QFile file(path(name));
    QVERIFY(file.open(QFile::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

QStringList tst_SpoolReader::files(const QString& folder) const
{
    return QDir(path(folder))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

void tst_SpoolReader::takesFilesInTheOrderOfTheirTimes()
{
    write(s("a.event.json"), entry(s("second"), s("2026-03-14T09:00:02.000+01:00")));
    write(s("b.event.json"), entry(s("third"), s("2026-03-14T08:00:03.000+00:00")));
    write(s("c.event.json"), entry(s("first"), s("2026-03-14T09:00:01.000+01:00")));
    m_reader->drain();
    QCOMPARE(m_stored.size(), 3);
    QCOMPARE(m_stored.at(0).event.description, s("first"));
    QCOMPARE(m_stored.at(1).event.description, s("second"));
    QCOMPARE(m_stored.at(2).event.description, s("third"));
    QCOMPARE(m_stored.at(0).event.senderUid, qint64(::getuid()));
    QCOMPARE(m_stored.at(0).event.road, Road::spool);
    QCOMPARE(files(), QStringList({s("claimed"), s("rejected")}));
    QCOMPARE(files(s("claimed")), QStringList());
}

void tst_SpoolReader::offersFilesAgainThatWereNotStored()
{
    m_isStoring = false;
    for (int i = 0; i < 10; ++i)
    {
        write(s("%1.event.json").arg(i), entry(QString::number(i)));
    }
    make(4);
    m_reader->drain();
    m_reader->drain();
    QCOMPARE(m_stored.size(), 0);
    QCOMPARE(files(s("claimed")).size() + files().size() - 2, 10);
    m_isStoring = true;
    m_reader->drain();
    QCOMPARE(m_stored.size(), 10);
    QCOMPARE(files(s("claimed")), QStringList());
}

void tst_SpoolReader::goesThroughWhatAnEarlierRunHasClaimed()
{
    QVERIFY(QDir(m_folder->path()).mkdir(s("claimed")));
    for (int i = 0; i < 10; ++i)
    {
        write(s("claimed/%1").arg(i), entry(QString::number(i)));
    }
    make(3);
    m_reader->drain();
    QCOMPARE(m_stored.size(), 10);
    QCOMPARE(files(s("claimed")), QStringList());
}

void tst_SpoolReader::givesTheSameKeyForTheSameFile()
{
    write(s("a.event.json"), entry(s("x")));
    m_isStoring = false;
    QVector<SpoolKey> keys;
    const auto keep = [&](QVector<SpoolReader::Item>& items) {
        keys.append(items.constFirst().key);
        return keys.size() > 1;
    };
    SpoolReader first(m_settings, m_decoder, keep);
    first.drain();
    SpoolReader second(m_settings, m_decoder, keep);
    second.drain();
    QCOMPARE(keys.size(), 2);
    QCOMPARE(keys.at(0).inode, keys.at(1).inode);
    QCOMPARE(keys.at(0).device, keys.at(1).device);
    QCOMPARE(keys.at(0).modifiedNs, keys.at(1).modifiedNs);
    QCOMPARE(keys.at(0).sha256, keys.at(1).sha256);
    QCOMPARE(keys.at(0).sha256.size(), 32);
}

void tst_SpoolReader::takesNothingWhilePaused()
{
    m_reader->setPaused(true);
    write(s("a.event.json"), entry(s("x")));
    m_reader->drain();
    QCOMPARE(m_stored.size(), 0);
    m_reader->setPaused(false);
    m_reader->drain();
    QCOMPARE(m_stored.size(), 1);
}

void tst_SpoolReader::rejectsOddFiles_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : {"link", "dangling", "device link", "second name", "pipe", "sparse",
                             "no JSON", "unknown member"})
    {
        QTest::newRow(kind) << s(kind);
    }
}

void tst_SpoolReader::rejectsOddFiles()
{
    QFETCH(QString, kind);
    const QTemporaryDir elsewhere;
    const QByteArray target = QFile::encodeName(elsewhere.filePath(s("target")));
    const QByteArray name = QFile::encodeName(path(s("odd.event.json")));
    QFile file(elsewhere.filePath(s("target")));
    QVERIFY(file.open(QFile::WriteOnly));
    QVERIFY(file.write(entry(s("stolen"))) > 0);
    file.close();
    if (kind == s("link"))
    {
        QCOMPARE(::symlink(target.constData(), name.constData()), 0);
    }
    else if (kind == s("dangling"))
    {
        QCOMPARE(::symlink("nowhere", name.constData()), 0);
    }
    else if (kind == s("device link"))
    {
        QCOMPARE(::symlink("/dev/zero", name.constData()), 0);
    }
    else if (kind == s("second name"))
    {
        QCOMPARE(::link(target.constData(), name.constData()), 0);
    }
    else if (kind == s("pipe"))
    {
        QCOMPARE(::mkfifo(name.constData(), 0600), 0);
    }
    else if (kind == s("sparse"))
    {
        write(s("odd.event.json"), "{");
        QCOMPARE(::truncate(name.constData(), off_t(1) << 40), 0);
    }
    else
    {
        write(s("odd.event.json"),
              kind == s("no JSON") ? QByteArray("x") : QByteArray("{\"a\":1}"));
    }
    write(s("good.event.json"), entry(s("good")));
    m_warnings.expectMatch(s("Spool: .*"));
    m_reader->drain();
    QCOMPARE(m_stored.size(), 1);
    QCOMPARE(m_stored.constFirst().event.description, s("good"));
    QCOMPARE(files(), QStringList({s("claimed"), s("rejected")}));
    QCOMPARE(files(s("claimed")), QStringList());
    QCOMPARE(files(s("rejected")).size(), 1);
    QCOMPARE(m_reader->rejectedCount(), qint64(1));
    QVERIFY(file.open(QFile::ReadOnly));
    QCOMPARE(file.readAll(), entry(s("stolen")));
}

void tst_SpoolReader::boundsTheRejectedFiles()
{
    m_settings.rejectedFiles = 5;
    m_settings.rejectedBytes = 40000;
    make();
    for (int i = 0; i < 30; ++i)
    {
        write(s("%1.event.json").arg(i), "no JSON");
    }
    m_reader->drain();
    QCOMPARE(files(s("rejected")).size(), 5);
    for (int i = 0; i < 3; ++i)
    {
        write(s("%1.event.json").arg(i), QByteArray(30000, 'x'));
    }
    m_reader->drain();
    QVERIFY(files(s("rejected")).size() <= 2);
    // An earlier run's files count too.
    m_settings.rejectedFiles = 1;
    make();
    m_reader->drain();
    QVERIFY(files(s("rejected")).size() <= 1);
    // 33 warnings came at once: those beyond the burst are only counted.
    QVERIFY(m_warnings.take().size() <= 25);
}

void tst_SpoolReader::removesOldStraysOnly()
{
    write(s("young.tmp"), "{");
    write(s("old.tmp"), "{");
    const timespec past[2] = {{1000000000, 0}, {1000000000, 0}};
    QCOMPARE(::utimensat(AT_FDCWD, QFile::encodeName(path(s("old.tmp"))).constData(), past, 0), 0);
    m_warnings.expect(s("Spool: \"old.tmp\" \"it was left by a writer and is removed\""));
    m_reader->drain();
    QCOMPARE(files(), QStringList({s("claimed"), s("rejected"), s("young.tmp")}));
}

void tst_SpoolReader::takesNewFilesFromTheEventLoop()
{
    m_settings.rescanMs = 3600 * 1000;
    make();
    m_reader->start();
    write(s("first.event.json"), entry(s("first")));
    QTRY_COMPARE(m_stored.size(), 1);
    write(s("hidden"), entry(s("second")));
    QVERIFY(QFile::rename(path(s("hidden")), path(s("second.event.json"))));
    QTRY_COMPARE(m_stored.size(), 2);
}

void tst_SpoolReader::makesTheFolderWhenItIsMissing()
{
    m_settings.folder = path(s("deep/below"));
    m_settings.rescanMs = 20;
    make();
    m_reader->start();
    QTRY_VERIFY(QDir(path(s("deep/below/claimed"))).exists());
    write(s("deep/below/a.event.json"), entry(s("x")));
    QTRY_COMPARE(m_stored.size(), 1);
}

QTEST_GUILESS_MAIN(tst_SpoolReader)
#include "tst_SpoolReader.moc"
