#include <QDBusConnection>
#include <QDateTime>
#include <QDir>
#include <QLocale>
#include <QTest>

/// Holds what every test relies on, so that a test that behaves differently elsewhere is not puzzling.
class tst_TestEnvironment : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reachesNoBusOfTheMachine_data();
    void reachesNoBusOfTheMachine();
    void leavesTheLogAsItIs_data();
    void leavesTheLogAsItIs();
    void hasTheTimeOfBerlin();
    void speaksNoLanguage();
    void writesBelowTheBuildFolder_data();
    void writesBelowTheBuildFolder();
};

void tst_TestEnvironment::reachesNoBusOfTheMachine_data()
{
    QTest::addColumn<int>("bus");

    QTest::newRow("system") << int(QDBusConnection::SystemBus);
    QTest::newRow("session") << int(QDBusConnection::SessionBus);
    QTest::newRow("starter") << int(QDBusConnection::ActivationBus);
}

void tst_TestEnvironment::reachesNoBusOfTheMachine()
{
    QFETCH(int, bus);
    const QString name = QStringLiteral("probe-%1").arg(bus);

    const bool isConnected =
        QDBusConnection::connectToBus(QDBusConnection::BusType(bus), name).isConnected();
    QDBusConnection::disconnectFromBus(name);

    QVERIFY(!isConnected);
}

void tst_TestEnvironment::leavesTheLogAsItIs_data()
{
    QTest::addColumn<QByteArray>("variable");

    for (const char* variable : {"QT_LOGGING_RULES", "QT_FATAL_WARNINGS", "QT_MESSAGE_PATTERN"})
    {
        QTest::newRow(variable) << QByteArray(variable);
    }
}

void tst_TestEnvironment::leavesTheLogAsItIs()
{
    QFETCH(QByteArray, variable);

    QVERIFY(!qEnvironmentVariableIsSet(variable.constData()));
}

void tst_TestEnvironment::hasTheTimeOfBerlin()
{
    const QDateTime winter(QDate(2026, 1, 15), QTime(12, 0));
    const QDateTime summer(QDate(2026, 7, 15), QTime(12, 0));

    QCOMPARE(winter.offsetFromUtc(), 3600);
    QCOMPARE(summer.offsetFromUtc(), 7200);
}

void tst_TestEnvironment::speaksNoLanguage()
{
    QCOMPARE(QLocale::system().name(), QStringLiteral("C"));
    QCOMPARE(QString::fromLocal8Bit("\xc3\x9c"), QStringLiteral("Ü"));
}

void tst_TestEnvironment::writesBelowTheBuildFolder_data()
{
    QTest::addColumn<QByteArray>("variable");

    for (const char* variable :
         {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME"})
    {
        QTest::newRow(variable) << QByteArray(variable);
    }
}

void tst_TestEnvironment::writesBelowTheBuildFolder()
{
    QFETCH(QByteArray, variable);
    const QString folder = qEnvironmentVariable(variable.constData());

    QVERIFY2(folder.startsWith(QStringLiteral(EVENTLISTHANDLER_BUILD_FOLDER)),
             qUtf8Printable(folder));
    QVERIFY(QDir(folder).exists());
}

QTEST_GUILESS_MAIN(tst_TestEnvironment)
#include "tst_TestEnvironment.moc"
