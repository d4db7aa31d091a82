#include "core/HashRegister.h"

#include "core/Database.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace eventlistd;
using Result = HashRegister::Result;

namespace
{
QString s(const char* text)
{
    return QString::fromUtf8(text);
}

Event makeEvent(const char* sourceHashes, const char* icon)
{
    static qint64 number = 0;
    Event made;
    made.id = ++number;
    made.sourceHashes = s(sourceHashes);
    made.icon = s(icon);
    return made;
}
} // namespace

class tst_HashRegister : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void findsAHashWhereItStandsAsAWhole_data();
    void findsAHashWhereItStandsAsAWhole();
    void tellsTheLastIconAtRegistration();
    void announcesTheLastIconOfSeveralEvents();
    void hearsOfEveryEventUnderTheEmptyHash();
    void remembersOverAReload();
    void refusesWhatCanBeNoPath_data();
    void refusesWhatCanBeNoPath();
    void takesNoMoreThanItMay();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Database> m_database;
    std::unique_ptr<HashRegister> m_register;
    QString m_icon;
    QMap<QString, QString> m_announced;
};

void tst_HashRegister::init()
{
    m_register.reset();
    m_database.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_database = std::make_unique<Database>(m_folder->filePath(s("list.sqlite")));
    QCOMPARE(m_database->open(), Database::Opened::asNew);
    m_register = std::make_unique<HashRegister>(*m_database, 3);
    QVERIFY(m_register->load());
    m_icon.clear();
    m_announced.clear();
}

void tst_HashRegister::findsAHashWhereItStandsAsAWhole_data()
{
    QTest::addColumn<QByteArray>("sourceHashes");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("alone") << QByteArray("abcd") << true;
    QTest::newRow("first") << QByteArray("abcd0000") << true;
    QTest::newRow("last") << QByteArray("00000000abcd") << true;
    QTest::newRow("across two") << QByteArray("00abcd00") << false;
    QTest::newRow("other length") << QByteArray("abcd00") << false;
    QTest::newRow("other case") << QByteArray("ABCD") << false;
    QTest::newRow("none") << QByteArray() << false;
}

void tst_HashRegister::findsAHashWhereItStandsAsAWhole()
{
    QFETCH(QByteArray, sourceHashes);
    QFETCH(bool, isFound);
    const Event found = makeEvent(sourceHashes.constData(), "icon");
    // As well for an event that came before as for one that comes after.
    QVERIFY(m_register->apply(found, m_announced));
    QCOMPARE(m_announced.size(), 0);
    QCOMPARE(m_register->registerHash(s("abcd"), m_icon), Result::registered);
    QCOMPARE(m_icon, isFound ? s("icon") : QString());
    QVERIFY(m_register->apply(found, m_announced));
    QCOMPARE(m_announced.contains(s("abcd")), isFound);
}

void tst_HashRegister::tellsTheLastIconAtRegistration()
{
    QVERIFY(m_register->apply(makeEvent("ab", "old"), m_announced));
    QVERIFY(m_register->apply(makeEvent("abcc", "new"), m_announced));
    QVERIFY(m_register->apply(makeEvent("cc", "newest"), m_announced));
    QCOMPARE(m_register->registerHash(s("ab"), m_icon), Result::registered);
    QCOMPARE(m_icon, s("new"));
    QVERIFY(m_register->apply(makeEvent("ab", "later"), m_announced));
    QCOMPARE(m_register->registerHash(s("ab"), m_icon), Result::registered);
    QCOMPARE(m_icon, s("later"));
}

void tst_HashRegister::announcesTheLastIconOfSeveralEvents()
{
    QCOMPARE(m_register->registerHash(s("ab"), m_icon), Result::registered);
    QCOMPARE(m_register->registerHash(s("cd"), m_icon), Result::registered);
    QVERIFY(m_register->apply(makeEvent("abcd", "one"), m_announced));
    QVERIFY(m_register->apply(makeEvent("ab", "two"), m_announced));
    QCOMPARE(m_announced, (QMap<QString, QString>{{s("ab"), s("two")}, {s("cd"), s("one")}}));
}

void tst_HashRegister::hearsOfEveryEventUnderTheEmptyHash()
{
    QCOMPARE(m_register->registerHash(QString(), m_icon), Result::registered);
    QVERIFY(m_register->apply(makeEvent("", "plain"), m_announced));
    QCOMPARE(m_announced, (QMap<QString, QString>{{QString(), s("plain")}}));
    QCOMPARE(HashRegister::pathOf(QString()), s("/HashGlobal"));
    QCOMPARE(HashRegister::pathOf(s("3fa9c1")), s("/Hash3fa9c1"));
}

void tst_HashRegister::remembersOverAReload()
{
    QCOMPARE(m_register->registerHash(s("ab"), m_icon), Result::registered);
    QVERIFY(m_register->apply(makeEvent("ab", "icon"), m_announced));
    HashRegister again(*m_database, 3);
    QVERIFY(again.load());
    m_announced.clear();
    QVERIFY(again.apply(makeEvent("ab", "icon"), m_announced));
    QCOMPARE(m_announced, (QMap<QString, QString>{{s("ab"), s("icon")}}));
}

void tst_HashRegister::refusesWhatCanBeNoPath_data()
{
    QTest::addColumn<QString>("hash");
    QTest::newRow("blank") << s("a b");
    QTest::newRow("umlaut") << s("ä");
    QTest::newRow("slash") << s("a/b");
    QTest::newRow("point") << s("a.b");
    QTest::newRow("nul") << QString(QChar(0));
    QTest::newRow("too long") << QString(201, QLatin1Char('a'));
}

void tst_HashRegister::refusesWhatCanBeNoPath()
{
    QFETCH(QString, hash);
    QCOMPARE(m_register->registerHash(hash, m_icon), Result::invalid);
}

void tst_HashRegister::takesNoMoreThanItMay()
{
    for (const char* hash : {"a", "b", "c"})
    {
        QCOMPARE(m_register->registerHash(s(hash), m_icon), Result::registered);
    }
    QCOMPARE(m_register->registerHash(s("d"), m_icon), Result::full);
    QCOMPARE(m_register->registerHash(s("c"), m_icon), Result::registered);
}

QTEST_GUILESS_MAIN(tst_HashRegister)
#include "tst_HashRegister.moc"
