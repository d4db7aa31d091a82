#include "Platform/PropertyManagerConst.h"

#include "TestSupport/WarningRecorder.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUuid>

class tst_PropertyManagerConst : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup();
    void knowsThePrefixOfBusNames();
    void putsTheFolderBelowTheConfiguration_data();
    void putsTheFolderBelowTheConfiguration();
    void refusesAPathThatLeavesTheConfiguration_data();
    void refusesAPathThatLeavesTheConfiguration();
    void refusesASymbolicLinkThatLeavesTheConfiguration();
    void followsASymbolicLinkWithinTheConfiguration();

private:
    const QString m_root = QStringLiteral(EVENTLISTHANDLER_DATA_ROOT "etc/configuration/");
    // Other tests of this build use the same folder.
    const QString m_unique =
        QStringLiteral("tst_PropertyManagerConst-") + QUuid::createUuid().toString(QUuid::Id128);
    WarningRecorder m_warnings;
};

void tst_PropertyManagerConst::init()
{
    m_warnings.start();
    QVERIFY(QDir().mkpath(m_root + m_unique));
}

void tst_PropertyManagerConst::cleanup()
{
    QVERIFY(QDir(m_root + m_unique).removeRecursively());
    VERIFY_WARNINGS(m_warnings);
}

void tst_PropertyManagerConst::knowsThePrefixOfBusNames()
{
    const QString& prefix = PropertyManagerConst::getDBusPrefix();
    QCOMPARE(prefix, QStringLiteral(EVENTLISTHANDLER_BUS_PREFIX));
    QCOMPARE(&PropertyManagerConst::getDBusPrefix(), &prefix);
}

void tst_PropertyManagerConst::putsTheFolderBelowTheConfiguration_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::addColumn<QString>("folder");

    QTest::newRow("prefix and object") << QStringLiteral("PumpControl/Sensors/")
                                       << m_root + QStringLiteral("PumpControl/Sensors/");
    QTest::newRow("neither prefix nor object") << QStringLiteral("/") << m_root;
    QTest::newRow("empty") << QString() << m_root;
    QTest::newRow("points in a name")
        << QStringLiteral("a..b/") << m_root + QStringLiteral("a..b/");
}

void tst_PropertyManagerConst::putsTheFolderBelowTheConfiguration()
{
    QFETCH(QString, relativePath);
    QFETCH(QString, folder);

    QCOMPARE(PropertyManagerConst::getConfigurationFolderPath(relativePath), folder);
}

void tst_PropertyManagerConst::refusesAPathThatLeavesTheConfiguration_data()
{
    QTest::addColumn<QString>("relativePath");
    QTest::addColumn<QString>("shown");

    QTest::newRow("absolute") << QStringLiteral("/etc/") << QStringLiteral("\"/etc/\"");
    QTest::newRow("upwards") << QStringLiteral("../") << QStringLiteral("\"../\"");
    QTest::newRow("down and up") << QStringLiteral("a/../../b/")
                                 << QStringLiteral("\"a/../../b/\"");
    QTest::newRow("upwards at the end") << QStringLiteral("a/..") << QStringLiteral("\"a/..\"");
    QTest::newRow("U+0000") << QStringLiteral("a") + QChar(QChar::Null) + QStringLiteral("b/")
                            << QStringLiteral("\"a\\u0000b/\"");
    QTest::newRow("very long") << QStringLiteral("/") + QString(5000, QLatin1Char('a'))
                               << QStringLiteral("\"/") + QString(1023, QLatin1Char('a')) +
                                      QStringLiteral("\"");
}

void tst_PropertyManagerConst::refusesAPathThatLeavesTheConfiguration()
{
    QFETCH(QString, relativePath);
    QFETCH(QString, shown);
    m_warnings.expect(QStringLiteral("Configuration folder refused, it is outside of \"") + m_root +
                          QStringLiteral("\" : ") + shown,
                      QStringLiteral("PropertyManagerConst"),
                      QStringLiteral("PropertyManagerConst::getConfigurationFolderPath"));

    QCOMPARE(PropertyManagerConst::getConfigurationFolderPath(relativePath), QString());
}

void tst_PropertyManagerConst::refusesASymbolicLinkThatLeavesTheConfiguration()
{
    const QString relativePath = m_unique + QStringLiteral("/out");
    QVERIFY(QFile::link(QStringLiteral("/"), m_root + relativePath));
    m_warnings.expect(QStringLiteral("Configuration folder refused, it is outside of \"") + m_root +
                      QStringLiteral("\" : \"") + relativePath + QStringLiteral("/\""));

    QCOMPARE(PropertyManagerConst::getConfigurationFolderPath(relativePath + QLatin1Char('/')),
             QString());
}

void tst_PropertyManagerConst::followsASymbolicLinkWithinTheConfiguration()
{
    const QString relativePath = m_unique + QStringLiteral("/in/");
    QVERIFY(QDir(m_root + m_unique).mkdir(QStringLiteral("target")));
    QVERIFY(QFile::link(QStringLiteral("target"), m_root + m_unique + QStringLiteral("/in")));

    QCOMPARE(PropertyManagerConst::getConfigurationFolderPath(relativePath), m_root + relativePath);
}

QTEST_APPLESS_MAIN(tst_PropertyManagerConst)
#include "tst_PropertyManagerConst.moc"
