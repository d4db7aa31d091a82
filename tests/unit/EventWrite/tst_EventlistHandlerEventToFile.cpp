#include "EventWrite/EventlistHandlerEventToFile.h"

#include "TestSupport/PrivateMember.h"
#include "unit/UnitTest.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <limits>
#include <type_traits>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;

PRIVATE_MEMBER(fileCount, int*, &EventlistHandlerEventToFile::sm_EventFileNameCnt)
PRIVATE_MEMBER(pathOfNumberedFiles, const QString*,
               &EventlistHandlerEventToFile::sm_cEventFilePathAndName)

static_assert(std::has_virtual_destructor<EventlistHandlerEventToFile>::value, "");
static_assert(sizeof(EventlistHandlerEventToFile) == sizeof(void*), "it has no fields");
static_assert(std::is_same<decltype(fileCount()), int*>::value && sizeof(int) == 4,
              "the count is a plain number of 32 bits");

namespace
{

const char* const pumpMetaData =
    R"({"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3","lang_en":"pump 3"}},)"
    R"("%2":{"type":"string","value":"97.5"}},)"
    R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
    R"("lang_en":"Overtemperature at %1, value %2"}})";
const char* const pumpDescription = R"({"lang_de":"Übertemperatur an Pumpe 3, Wert 97.5",)"
                                    R"("lang_en":"Overtemperature at pump 3, value 97.5"})";

// The file of an alarm that became active, byte for byte, around its time.
const char* const pumpFileBeforeTime =
    R"({"AlarmID":"{6f1c2a8e-3b0d-4e57-9a41-0d2c7be41f05}","DateTimeMsUTC":)";
const char* const pumpFileBehindTime =
    ",\"Description\":\"{\\\"lang_de\\\":\\\"Übertemperatur an Pumpe 3, Wert 97.5\\\","
    "\\\"lang_en\\\":\\\"Overtemperature at pump 3, value 97.5\\\"}\","
    R"("EventId":"PumpControl/OverTemperature","EventType":0,"IconType":"EventlistAlarmOn",)"
    R"("KeywordName":"Error;Firmware",)"
    R"("MetaData":{"Arguments":{"%1":{"type":"text","value":{"lang_de":"Pumpe 3",)"
    R"("lang_en":"pump 3"}},"%2":{"type":"string","value":"97.5"}},)"
    R"("DescriptionScheme":{"lang_de":"Übertemperatur an %1, Wert %2",)"
    R"("lang_en":"Overtemperature at %1, value %2"}},"ModuleName":"PumpControl",)"
    R"("SourceHashType":0,"SourceHashes":"","State":1,"User":""})";

const QRegularExpression
    isoTime(QStringLiteral(R"(\A\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d\z)"));

// An event of which only this matters.
QJsonObject entryOf(EventType eventType, State state, const QVariant& description = QString(),
                    const QStringList& keywords = QStringList(),
                    SourceHashType sourceHashType = SourceHashType::noSourceHash)
{
    QJsonObject entry;
    EventlistHandlerEventToFile().generateEventEntryData(
        entry, eventType, state, QString(), QString(), description, keywords, QString(), QString(),
        QJsonObject(), QString(), QString(), sourceHashType);
    return entry;
}

void logMinimalEvent(EventlistHandlerEventToFile& writer, const QString& fileName,
                     const QString& description = QString())
{
    writer.logEvent(EventType::otherEvents, State::neutral, QString(),
                    QStringLiteral("PumpControl"), description, QStringList(), QString(), QString(),
                    QJsonObject(), QString(), QString(), SourceHashType::noSourceHash, fileName);
}

} // namespace

class tst_EventlistHandlerEventToFile : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init()
    {
        m_spool.clear();
        m_warnings.start();
        *fileCount() = 0;
    }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void beginsTheCountAtZeroWhenTheLibraryIsLoaded();
    void holdsFolderAndStemOfNumberedFiles();
    void makesTheFolderAndItsParents();
    void leavesAFolderThatIsThereAlone();
    void warnsWhenTheFolderCannotBeMadeAndStaysUsable();

    void writesTheFileOfTheWorkedExample();
    void fillsThirteenMembersFromItsArguments();
    void fillsThirteenMembersAlsoFromNothing();
    void replacesMembersThatAreThereAndLeavesOthersAlone();
    void writesEnumerationsAsPlainNumbers_data();
    void writesEnumerationsAsPlainNumbers();
    void joinsTheKeywords_data();
    void joinsTheKeywords();
    void takesTheStringFormOfTheDescription_data();
    void takesTheStringFormOfTheDescription();
    void stampsTheLocalTimeWhenTheEntryIsBuilt();

    void numbersFilesWithoutAName_data();
    void numbersFilesWithoutAName();
    void countsForAllWritersTogether();
    void goesOnAtTheSmallestNumberBehindTheLargest();
    void keepsTheCountForANameOfItsOwn();
    void writesAFixedNameToTheSamePathEachTime();
    void usesANameAsItIs();
    void losesAnEventWhoseNameLeadsIntoAMissingFolder();
    void usesUpTheNumberOfAFileThatCannotBeWritten();
    void warnsTwiceWhenAnEventCannotBeWritten();

private:
    void expectFailedWrite(const QString& description);

    int m_countAtLoad = -1;
    SpoolFolder m_spool;
    WarningRecorder m_warnings;

public:
    tst_EventlistHandlerEventToFile() : m_countAtLoad(*fileCount()) {}
};

void tst_EventlistHandlerEventToFile::beginsTheCountAtZeroWhenTheLibraryIsLoaded()
{
    QCOMPARE(m_countAtLoad, 0);
}

void tst_EventlistHandlerEventToFile::holdsFolderAndStemOfNumberedFiles()
{
    QCOMPARE(*pathOfNumberedFiles(), QString(m_spool.path() + QLatin1String("logEvent")));
}

void tst_EventlistHandlerEventToFile::makesTheFolderAndItsParents()
{
    SpoolFolder parent(m_spool.path().section(QLatin1Char('/'), 0, -3));
    parent.remove();
    QVERIFY(!QFile::exists(m_spool.path()));

    const EventlistHandlerEventToFile writer;

    QVERIFY(QFileInfo(m_spool.path()).isDir());
}

void tst_EventlistHandlerEventToFile::leavesAFolderThatIsThereAlone()
{
    QFile earlier(m_spool.filePath(QStringLiteral("logEvent0.event.json")));
    QVERIFY(earlier.open(QFile::WriteOnly));
    earlier.close();

    const EventlistHandlerEventToFile writer;

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent0.event.json")));
}

void tst_EventlistHandlerEventToFile::warnsWhenTheFolderCannotBeMadeAndStaysUsable()
{
    m_spool.remove();
    QFile inItsPlace(m_spool.path().chopped(1));
    QVERIFY(inItsPlace.open(QFile::WriteOnly));
    m_warnings.expect(QString(QLatin1String("Can't create path ") + quoted(m_spool.path())),
                      QStringLiteral("EventlistHandlerEventToFile"),
                      QStringLiteral("EventlistHandlerEventToFile::EventlistHandlerEventToFile"));

    EventlistHandlerEventToFile writer;
    VERIFY_WARNINGS(m_warnings);
    m_spool.clear();
    logMinimalEvent(writer, QString());

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent0.event.json")));
}

void tst_EventlistHandlerEventToFile::writesTheFileOfTheWorkedExample()
{
    EventlistHandlerEventToFile writer;
    *fileCount() = 17;

    writer.logEvent(EventType::alarm, State::active, QStringLiteral("EventlistAlarmOn"),
                    QStringLiteral("PumpControl"), QString::fromUtf8(pumpDescription),
                    {QStringLiteral("Error"), QStringLiteral("Firmware")}, QString(),
                    QStringLiteral("PumpControl/OverTemperature"),
                    QJsonDocument::fromJson(pumpMetaData).object(),
                    QStringLiteral("{6f1c2a8e-3b0d-4e57-9a41-0d2c7be41f05}"), QString(),
                    SourceHashType::noSourceHash, QString());

    const QString entry = QStringLiteral("logEvent17.event.json");
    QCOMPARE(m_spool.entries(), QStringList(entry));
    const QByteArray bytes = m_spool.readBytes(entry);
    const QString time = m_spool.read(entry).value(QStringLiteral("DateTimeMsUTC")).toString();
    QVERIFY2(isoTime.match(time).hasMatch(), qPrintable(time));
    QCOMPARE(
        bytes,
        QByteArray(pumpFileBeforeTime).append(quoted(time).toUtf8()).append(pumpFileBehindTime));
}

void tst_EventlistHandlerEventToFile::fillsThirteenMembersFromItsArguments()
{
    const EventlistHandlerEventToFile writer;
    QJsonObject entry;

    writer.generateEventEntryData(
        entry, EventType::fault, State::inactive, QStringLiteral("an icon"),
        QStringLiteral("a module"), QStringLiteral("a description"), {QStringLiteral("a keyword")},
        QStringLiteral("a user"), QStringLiteral("an event id"),
        QJsonObject{{QStringLiteral("meta"), QStringLiteral("data")}}, QStringLiteral("an alarm"),
        QStringLiteral("hashes"), SourceHashType(5));

    QCOMPARE(entry.take(QStringLiteral("DateTimeMsUTC")).type(), QJsonValue::String);
    QCOMPARE(compactJson(entry),
             QByteArray(R"({"AlarmID":"an alarm","Description":"a description",)"
                        R"("EventId":"an event id","EventType":2,"IconType":"an icon",)"
                        R"("KeywordName":"a keyword","MetaData":{"meta":"data"},)"
                        R"("ModuleName":"a module","SourceHashType":5,"SourceHashes":"hashes",)"
                        R"("State":2,"User":"a user"})"));
}

void tst_EventlistHandlerEventToFile::fillsThirteenMembersAlsoFromNothing()
{
    QJsonObject entry = entryOf(EventType::alarm, State::neutral);

    QCOMPARE(entry.size(), 13);
    entry.remove(QStringLiteral("DateTimeMsUTC"));
    QCOMPARE(compactJson(entry),
             QByteArray(R"({"AlarmID":"","Description":"","EventId":"","EventType":0,)"
                        R"("IconType":"","KeywordName":"","MetaData":{},"ModuleName":"",)"
                        R"("SourceHashType":0,"SourceHashes":"","State":0,"User":""})"));
}

void tst_EventlistHandlerEventToFile::replacesMembersThatAreThereAndLeavesOthersAlone()
{
    const EventlistHandlerEventToFile writer;
    QJsonObject entry{{QStringLiteral("User"), 7},
                      {QStringLiteral("DateTimeMsUTC"), QStringLiteral("yesterday")},
                      {QStringLiteral("Other"), QStringLiteral("stays")}};

    writer.generateEventEntryData(entry, EventType::alarm, State::neutral, QString(), QString(),
                                  QString(), QStringList(), QStringLiteral("a user"), QString(),
                                  QJsonObject(), QString(), QString(),
                                  SourceHashType::noSourceHash);

    QCOMPARE(entry.size(), 14);
    QCOMPARE(entry.value(QStringLiteral("User")).toString(), QStringLiteral("a user"));
    QCOMPARE(entry.value(QStringLiteral("Other")).toString(), QStringLiteral("stays"));
    QVERIFY(entry.value(QStringLiteral("DateTimeMsUTC")).toString() != QStringLiteral("yesterday"));
}

void tst_EventlistHandlerEventToFile::writesEnumerationsAsPlainNumbers_data()
{
    QTest::addColumn<int>("eventType");
    QTest::addColumn<int>("state");
    QTest::addColumn<int>("sourceHashType");

    QTest::newRow("alarm, neutral, none") << 0 << 0 << 0;
    QTest::newRow("audit trail, active, 1") << 1 << 1 << 1;
    QTest::newRow("fault, inactive, the largest") << 2 << 2 << std::numeric_limits<int>::max();
    QTest::newRow("other events, none of them, the smallest")
        << 3 << 3 << std::numeric_limits<int>::min();
}

void tst_EventlistHandlerEventToFile::writesEnumerationsAsPlainNumbers()
{
    QFETCH(int, eventType);
    QFETCH(int, state);
    QFETCH(int, sourceHashType);

    const QByteArray json = compactJson(entryOf(EventType(eventType), State(state), QString(),
                                                QStringList(), SourceHashType(sourceHashType)));

    QVERIFY2(json.contains("\"EventType\":" + QByteArray::number(eventType) + ","), json);
    QVERIFY2(json.contains("\"State\":" + QByteArray::number(state) + ","), json);
    QVERIFY2(json.contains("\"SourceHashType\":" + QByteArray::number(sourceHashType) + ","), json);
}

void tst_EventlistHandlerEventToFile::joinsTheKeywords_data()
{
    QTest::addColumn<QStringList>("keywords");
    QTest::addColumn<QString>("joined");

    const auto words = [](const char* text) {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    };
    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("one") << words("Firmware") << QStringLiteral("Firmware");
    QTest::newRow("in the order of the list")
        << words("Error Firmware Boot") << QStringLiteral("Error;Firmware;Boot");
    QTest::newRow("one that cannot be told from two") << words("a;b c") << QStringLiteral("a;b;c");
    QTest::newRow("empty ones") << QStringList({QString(), QString()}) << QStringLiteral(";");
}

void tst_EventlistHandlerEventToFile::joinsTheKeywords()
{
    QFETCH(QStringList, keywords);
    QFETCH(QString, joined);

    const QJsonObject entry = entryOf(EventType::alarm, State::neutral, QString(), keywords);

    QCOMPARE(entry.value(QStringLiteral("KeywordName")), QJsonValue(joined));
}

void tst_EventlistHandlerEventToFile::takesTheStringFormOfTheDescription_data()
{
    QTest::addColumn<QVariant>("description");
    QTest::addColumn<QString>("text");

    QTest::newRow("a string") << QVariant(QStringLiteral("{\"a\":\"b\"}"))
                              << QStringLiteral("{\"a\":\"b\"}");
    QTest::newRow("none") << QVariant() << QString();
    QTest::newRow("a number") << QVariant(7) << QStringLiteral("7");
    QTest::newRow("a map") << QVariant(QVariantMap{{QStringLiteral("a"), 1}}) << QString();
}

void tst_EventlistHandlerEventToFile::takesTheStringFormOfTheDescription()
{
    QFETCH(QVariant, description);
    QFETCH(QString, text);

    const QJsonObject entry = entryOf(EventType::alarm, State::neutral, description);

    QCOMPARE(entry.value(QStringLiteral("Description")), QJsonValue(text));
}

void tst_EventlistHandlerEventToFile::stampsTheLocalTimeWhenTheEntryIsBuilt()
{
    const QDateTime before = QDateTime::currentDateTime();

    const QJsonObject entry = entryOf(EventType::alarm, State::neutral);

    const QDateTime after = QDateTime::currentDateTime();
    const QString text = entry.value(QStringLiteral("DateTimeMsUTC")).toString();
    const QDateTime stamped = QDateTime::fromString(text, Qt::ISODateWithMs);
    QVERIFY2(isoTime.match(text).hasMatch(), qPrintable(text));
    QVERIFY(stamped >= before && stamped <= after);
    // The tests run in Berlin's time, which is never UTC.
    QVERIFY(!text.endsWith(QStringLiteral("+00:00")));
    QCOMPARE(stamped.offsetFromUtc(), before.offsetFromUtc());
}

void tst_EventlistHandlerEventToFile::numbersFilesWithoutAName_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("entry");
    QTest::addColumn<int>("nextCount");

    QTest::newRow("the first") << 0 << QStringLiteral("logEvent0.event.json") << 1;
    QTest::newRow("no leading zeros") << 17 << QStringLiteral("logEvent17.event.json") << 18;
    QTest::newRow("the largest") << std::numeric_limits<int>::max()
                                 << QStringLiteral("logEvent2147483647.event.json")
                                 << std::numeric_limits<int>::min();
    QTest::newRow("the smallest") << std::numeric_limits<int>::min()
                                  << QStringLiteral("logEvent-2147483648.event.json")
                                  << std::numeric_limits<int>::min() + 1;
    QTest::newRow("the last negative one") << -1 << QStringLiteral("logEvent-1.event.json") << 0;
}

void tst_EventlistHandlerEventToFile::numbersFilesWithoutAName()
{
    QFETCH(int, count);
    QFETCH(QString, entry);
    QFETCH(int, nextCount);
    EventlistHandlerEventToFile writer;
    *fileCount() = count;

    QVERIFY(writer.writeEventToFile(QJsonObject{{QStringLiteral("a"), 1}}, QString()));

    QCOMPARE(m_spool.entries(), QStringList(entry));
    QCOMPARE(m_spool.readBytes(entry), QByteArray(R"({"a":1})"));
    QCOMPARE(*fileCount(), nextCount);
}

void tst_EventlistHandlerEventToFile::countsForAllWritersTogether()
{
    EventlistHandlerEventToFile first;
    EventlistHandlerEventToFile second;

    logMinimalEvent(first, QString(), QStringLiteral("a"));
    logMinimalEvent(second, QString(), QStringLiteral("b"));
    logMinimalEvent(first, QString(), QStringLiteral("c"));

    QCOMPARE(m_spool.entries(), QStringList({QStringLiteral("logEvent0.event.json"),
                                             QStringLiteral("logEvent1.event.json"),
                                             QStringLiteral("logEvent2.event.json")}));
    QCOMPARE(m_spool.read(QStringLiteral("logEvent1.event.json"))
                 .value(QStringLiteral("Description"))
                 .toString(),
             QStringLiteral("b"));
}

void tst_EventlistHandlerEventToFile::goesOnAtTheSmallestNumberBehindTheLargest()
{
    EventlistHandlerEventToFile writer;
    *fileCount() = std::numeric_limits<int>::max();

    logMinimalEvent(writer, QString());
    logMinimalEvent(writer, QString());

    QCOMPARE(m_spool.entries(), QStringList({QStringLiteral("logEvent-2147483648.event.json"),
                                             QStringLiteral("logEvent2147483647.event.json")}));
}

void tst_EventlistHandlerEventToFile::keepsTheCountForANameOfItsOwn()
{
    EventlistHandlerEventToFile writer;
    *fileCount() = 5;

    logMinimalEvent(writer, QStringLiteral("bootlog"));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("bootlog.event.json")));
    QCOMPARE(*fileCount(), 5);
}

void tst_EventlistHandlerEventToFile::writesAFixedNameToTheSamePathEachTime()
{
    EventlistHandlerEventToFile writer;

    logMinimalEvent(writer, QStringLiteral("bootlog"), QStringLiteral("first"));
    logMinimalEvent(writer, QStringLiteral("bootlog"), QStringLiteral("second"));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("bootlog.event.json")));
    QCOMPARE(m_spool.read(QStringLiteral("bootlog.event.json"))
                 .value(QStringLiteral("Description"))
                 .toString(),
             QStringLiteral("second"));
}

void tst_EventlistHandlerEventToFile::usesANameAsItIs()
{
    EventlistHandlerEventToFile writer;

    logMinimalEvent(writer, QStringLiteral(" Störung.event.json ;"));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral(" Störung.event.json ;.event.json")));
}

void tst_EventlistHandlerEventToFile::losesAnEventWhoseNameLeadsIntoAMissingFolder()
{
    EventlistHandlerEventToFile writer;
    expectFailedWrite(QString());

    logMinimalEvent(writer, QStringLiteral("missing/bootlog"));

    QVERIFY(m_spool.entries().isEmpty());
    QCOMPARE(*fileCount(), 0);
}

void tst_EventlistHandlerEventToFile::usesUpTheNumberOfAFileThatCannotBeWritten()
{
    EventlistHandlerEventToFile writer;
    m_spool.remove();
    m_warnings.expect(QStringLiteral("Can't write jsonObject to file"),
                      QStringLiteral("EventlistHandlerEventToFile"),
                      QStringLiteral("EventlistHandlerEventToFile::writeEventToFile"));

    QVERIFY(!writer.writeEventToFile(QJsonObject(), QString()));
    m_spool.clear();
    QVERIFY(writer.writeEventToFile(QJsonObject(), QString()));

    QCOMPARE(m_spool.entries(), QStringList(QStringLiteral("logEvent1.event.json")));
}

void tst_EventlistHandlerEventToFile::warnsTwiceWhenAnEventCannotBeWritten()
{
    EventlistHandlerEventToFile writer;
    m_spool.remove();
    expectFailedWrite(QStringLiteral("{\"lang_en\":\"Door open\"}"));

    logMinimalEvent(writer, QString(), QStringLiteral("{\"lang_en\":\"Door open\"}"));

    QVERIFY(m_spool.entries().isEmpty());
}

void tst_EventlistHandlerEventToFile::expectFailedWrite(const QString& description)
{
    m_warnings
        .expect(QStringLiteral("Can't write jsonObject to file"),
                QStringLiteral("EventlistHandlerEventToFile"),
                QStringLiteral("EventlistHandlerEventToFile::writeEventToFile"))
        .expect(QString(QLatin1String("Can't write event to file. ModuleName: \"PumpControl\" "
                                      "Description: QVariant(QString, ") +
                        quoted(description) + QLatin1Char(')')),
                QStringLiteral("EventlistHandlerEventToFile"),
                QStringLiteral("EventlistHandlerEventToFile::logEvent"));
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerEventToFile)
#include "tst_EventlistHandlerEventToFile.moc"
