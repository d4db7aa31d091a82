#include "TestSupport/WarningRecorder.h"

#include <QDebug>
#include <QLoggingCategory>
#include <QTest>

#include <thread>
#include <vector>

namespace
{
const QString thisFile = QStringLiteral("tst_WarningRecorder");

class Pump
{
public:
    void start() { qWarning() << "No power on" << QStringLiteral("pump 3"); }

    void startLater()
    {
        const auto later = [] { qWarning() << "No power later"; };
        later();
    }

    template<typename Value>
    void fill(const Value& value)
    {
        qWarning() << "Overflow" << value;
    }
};
} // namespace

class tst_WarningRecorder : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void acceptsNothingWhenNothingIsExpected();
    void acceptsTheExpectedWarningsInTheirOrder();
    void comparesWordByWord_data();
    void comparesWordByWord();
    void rejectsAnUnexpectedMessage_data();
    void rejectsAnUnexpectedMessage();
    void rejectsAMissingWarning();
    void rejectsAnotherOrder();
    void countsEqualWarnings();
    void comparesTheCallSite_data();
    void comparesTheCallSite();
    void tellsALambdaFromItsFunction();
    void findsTheOperationOfATemplate();
    void matchesAPatternAsAWhole();
    void recordsWhereAMessageCameFrom();
    void reportsWhatIsRightMissingAndUnexpected();
    void takesMessagesFromEveryThread();
    void givesTheMessageToTheYoungest();
    void handsTheLogBack();
    void forgetsWhatItHandsOut();
    void beginsAnew();
};

void tst_WarningRecorder::acceptsNothingWhenNothingIsExpected()
{
    const WarningRecorder recorder;

    QVERIFY(recorder.verify());
    QVERIFY(recorder.messages().isEmpty());
}

void tst_WarningRecorder::acceptsTheExpectedWarningsInTheirOrder()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("No power on \"pump 3\"")).expect(QStringLiteral("Overflow 7"));

    Pump().start();
    QVERIFY(!recorder.verify());
    Pump().fill(7);

    VERIFY_WARNINGS(recorder);
}

void tst_WarningRecorder::comparesWordByWord_data()
{
    QTest::addColumn<QString>("expected");

    QTest::newRow("without quotes") << QStringLiteral("No power on pump 3");
    QTest::newRow("further blank") << QStringLiteral("No power on \"pump 3\" ");
    QTest::newRow("other case") << QStringLiteral("no power on \"pump 3\"");
    QTest::newRow("beginning only") << QStringLiteral("No power");
    QTest::newRow("nothing") << QString();
}

void tst_WarningRecorder::comparesWordByWord()
{
    QFETCH(QString, expected);
    WarningRecorder recorder;
    recorder.expect(expected);

    Pump().start();

    QVERIFY(!recorder.verify());
}

void tst_WarningRecorder::rejectsAnUnexpectedMessage_data()
{
    QTest::addColumn<int>("type");

    QTest::newRow("debug") << int(QtDebugMsg);
    QTest::newRow("info") << int(QtInfoMsg);
    QTest::newRow("warning") << int(QtWarningMsg);
    QTest::newRow("critical") << int(QtCriticalMsg);
}

void tst_WarningRecorder::rejectsAnUnexpectedMessage()
{
    QFETCH(int, type);
    const WarningRecorder recorder;

    switch (type)
    {
    case QtDebugMsg:
        qDebug() << "Surprise";
        break;
    case QtInfoMsg:
        qInfo() << "Surprise";
        break;
    case QtWarningMsg:
        qWarning() << "Surprise";
        break;
    default:
        qCritical() << "Surprise";
        break;
    }

    QVERIFY(!recorder.verify());
    QCOMPARE(recorder.messages().size(), 1);
    QCOMPARE(int(recorder.messages().at(0).type), type);
}

void tst_WarningRecorder::rejectsAMissingWarning()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("No power on \"pump 3\""));

    QVERIFY(!recorder.verify());
}

void tst_WarningRecorder::rejectsAnotherOrder()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("Overflow 7")).expect(QStringLiteral("No power on \"pump 3\""));

    Pump().start();
    Pump().fill(7);

    QVERIFY(!recorder.verify());
}

void tst_WarningRecorder::countsEqualWarnings()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("Overflow 7")).expect(QStringLiteral("Overflow 7"));

    Pump().fill(7);
    QVERIFY(!recorder.verify());
    Pump().fill(7);
    QVERIFY(recorder.verify());
    Pump().fill(7);
    QVERIFY(!recorder.verify());
}

void tst_WarningRecorder::comparesTheCallSite_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("operation");
    QTest::addColumn<QString>("category");
    QTest::addColumn<bool>("isRight");

    const QString category = QStringLiteral("default");
    QTest::newRow("any") << QString() << QString() << category << true;
    QTest::newRow("file") << thisFile << QString() << category << true;
    QTest::newRow("file and operation")
        << thisFile << QStringLiteral("Pump::start") << category << true;
    QTest::newRow("other file") << QStringLiteral("Pump") << QString() << category << false;
    QTest::newRow("file with ending")
        << thisFile + QStringLiteral(".cpp") << QString() << category << false;
    QTest::newRow("other operation")
        << thisFile << QStringLiteral("Pump::stop") << category << false;
    QTest::newRow("beginning of the operation")
        << thisFile << QStringLiteral("Pump::sta") << category << false;
    QTest::newRow("end of the class")
        << thisFile << QStringLiteral("ump::start") << category << false;
    QTest::newRow("other category")
        << thisFile << QStringLiteral("Pump::start") << QStringLiteral("pump") << false;
}

void tst_WarningRecorder::comparesTheCallSite()
{
    QFETCH(QString, file);
    QFETCH(QString, operation);
    QFETCH(QString, category);
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("No power on \"pump 3\""), file, operation, category);

    Pump().start();

    QTEST(recorder.verify(), "isRight");
}

void tst_WarningRecorder::tellsALambdaFromItsFunction()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("No power later"), thisFile, QStringLiteral("Pump::startLater"));

    Pump().startLater();

    QVERIFY(!recorder.verify());
    QCOMPARE(recorder.texts(), QStringList{QStringLiteral("No power later")});
}

void tst_WarningRecorder::findsTheOperationOfATemplate()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("Overflow \"x\""), thisFile, QStringLiteral("Pump::fill"));

    Pump().fill(QStringLiteral("x"));

    VERIFY_WARNINGS(recorder);
}

void tst_WarningRecorder::matchesAPatternAsAWhole()
{
    WarningRecorder recorder;
    recorder.expectMatch(QStringLiteral("No power on \"pump [0-9]+\""));
    Pump().start();
    VERIFY_WARNINGS(recorder);

    recorder.start();
    recorder.expectMatch(QStringLiteral("No power on"));
    Pump().start();
    QVERIFY(!recorder.verify());
}

void tst_WarningRecorder::recordsWhereAMessageCameFrom()
{
    const WarningRecorder recorder;
    const QLoggingCategory category("pump.test");

    qCWarning(category, "Text");
    const int line = __LINE__ - 1;

    QCOMPARE(recorder.messages().size(), 1);
    const LoggedMessage message = recorder.messages().at(0);
    QCOMPARE(message.type, QtWarningMsg);
    QCOMPARE(message.category, QStringLiteral("pump.test"));
    QCOMPARE(message.text, QStringLiteral("Text"));
    QVERIFY(message.file.endsWith(QLatin1String("tst_WarningRecorder.cpp")));
    QVERIFY(message.function.contains(QLatin1String("recordsWhereAMessageCameFrom")));
    QCOMPARE(message.line, line);
}

void tst_WarningRecorder::reportsWhatIsRightMissingAndUnexpected()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("first"))
        .expect(QStringLiteral("missing"), QStringLiteral("Pump"), QStringLiteral("Pump::start"))
        .expect(QStringLiteral("last"));

    QMessageLogger("a/Pump.cpp", 7, "void Pump::stop()").warning() << "first";
    QMessageLogger(nullptr, 0, nullptr, "qt.core").critical() << "unexpected";
    QMessageLogger(nullptr, 0, nullptr).warning() << "last";

    QCOMPARE(recorder.report(), QByteArray("Messages: = as expected, - missing, + not expected\n"
                                           "  = warning first  (a/Pump.cpp:7, void Pump::stop())\n"
                                           "  - warning missing  (Pump, Pump::start)\n"
                                           "  + critical [qt.core] unexpected\n"
                                           "  = warning last"));
}

void tst_WarningRecorder::takesMessagesFromEveryThread()
{
    constexpr int threadCount = 4;
    constexpr int messageCount = 500;
    const WarningRecorder recorder;

    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
    {
        threads.emplace_back([] {
            for (int i = 0; i < messageCount; ++i)
            {
                Pump().start();
            }
        });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }

    QCOMPARE(recorder.messages().size(), threadCount * messageCount);
    QCOMPARE(recorder.texts().count(QStringLiteral("No power on \"pump 3\"")),
             threadCount * messageCount);
}

void tst_WarningRecorder::givesTheMessageToTheYoungest()
{
    const WarningRecorder older;
    {
        const WarningRecorder younger;
        qWarning("inner");
        QCOMPARE(younger.texts(), QStringList{QStringLiteral("inner")});
    }
    qWarning("outer");

    QCOMPARE(older.texts(), QStringList{QStringLiteral("outer")});
}

void tst_WarningRecorder::handsTheLogBack()
{
    // The handler of QtTest has the log again, or this line would count as never seen.
    QTest::ignoreMessage(QtWarningMsg, "for QtTest");
    {
        const WarningRecorder recorder;
        qWarning("for the recorder");
        QCOMPARE(recorder.texts().size(), 1);
    }
    qWarning("for QtTest");
}

void tst_WarningRecorder::forgetsWhatItHandsOut()
{
    WarningRecorder recorder;
    Pump().start();

    QCOMPARE(recorder.take().size(), 1);

    QVERIFY(recorder.messages().isEmpty());
    QVERIFY(recorder.verify());
}

void tst_WarningRecorder::beginsAnew()
{
    WarningRecorder recorder;
    recorder.expect(QStringLiteral("never"));
    Pump().start();

    recorder.start();

    VERIFY_WARNINGS(recorder);
    Pump().start();
    QCOMPARE(recorder.messages().size(), 1);
}

QTEST_GUILESS_MAIN(tst_WarningRecorder)
#include "tst_WarningRecorder.moc"
