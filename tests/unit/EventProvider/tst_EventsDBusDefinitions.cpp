#include "EventProvider/EventsDBusDefinitions.h"

#include "TestSupport/WarningRecorder.h"

#include <QFile>
#include <QMetaEnum>
#include <QRegularExpression>
#include <QTest>

#include <atomic>
#include <memory>
#include <thread>
#include <type_traits>

using Definitions = EventsDBusDefinitions;

static_assert(!QtPrivate::IsQEnumHelper<Definitions::TextSource>::Value, "no names");
static_assert(std::is_same<std::underlying_type_t<Definitions::TextSource>, int>::value,
              "it holds any number that comes from the bus");
static_assert(std::has_virtual_destructor<Definitions>::value &&
                  std::is_default_constructible<Definitions>::value &&
                  sizeof(Definitions) == sizeof(void*),
              "a class without fields");

namespace
{

struct Row
{
    const char* name;
    const QString& (*accessor)();
    const char* value;
};

// In the order of the declarations.
const Row rows[] = {
    {"getObjectNameEvents", &Definitions::getObjectNameEvents, "Events"},
    {"getInterfaceNameEvents", &Definitions::getInterfaceNameEvents, "Interface.Events"},
    {"getEventDBusKeyModuleName", &Definitions::getEventDBusKeyModuleName, "moduleName"},
    {"getEventDBusKeyTextSource", &Definitions::getEventDBusKeyTextSource, "textSource"},
    {"getEventDBusKeyUrl", &Definitions::getEventDBusKeyUrl, "url"},
    {"getEventDBusKeyObjectName", &Definitions::getEventDBusKeyObjectName, "ObjectName"},
    {"getEventDBusKeyInstanceName", &Definitions::getEventDBusKeyInstanceName, "InstanceName"},
    {"getEventDBusKeyPlaceholder", &Definitions::getEventDBusKeyPlaceholder, "Placeholder"},
    {"getEventDBusKeyArgument", &Definitions::getEventDBusKeyArgument, "Argument"},
    {"getEventDBusKeyArguments", &Definitions::getEventDBusKeyArguments, "Arguments"},
    {"getEventDBusKeyUrlArguments", &Definitions::getEventDBusKeyUrlArguments, "UrlArguments"},
};

} // namespace

class tst_EventsDBusDefinitions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void givesOneAddressToTwoThreadsThatRaceAtFirstUse();
    void givesTheWord_data();
    void givesTheWord();
    void declaresTheAccessorsInTheOrderOfTheTable();
    void numbersTheTextSources();
    void endsWithWhatIsDerivedFromIt();

private:
    WarningRecorder m_warnings;
};

// First of all: nothing else has used the word before.
void tst_EventsDBusDefinitions::givesOneAddressToTwoThreadsThatRaceAtFirstUse()
{
    std::atomic<int> readyCount{0};
    const void* words[2] = {};
    const auto use = [&](int index) {
        ++readyCount;
        while (readyCount < 2)
        {
        }
        words[index] = &Definitions::getEventDBusKeyUrl();
    };

    std::thread first(use, 0);
    std::thread second(use, 1);
    first.join();
    second.join();

    QVERIFY(words[0] != nullptr);
    QCOMPARE(words[0], words[1]);
}

void tst_EventsDBusDefinitions::givesTheWord_data()
{
    QTest::addColumn<int>("index");
    int index = 0;
    for (const Row& row : rows)
    {
        QTest::newRow(row.name) << index++;
    }
}

void tst_EventsDBusDefinitions::givesTheWord()
{
    QFETCH(int, index);
    const Row& row = rows[index];
    QString copy = row.accessor();

    QCOMPARE(copy, QString::fromLatin1(row.value));
    QCOMPARE(&row.accessor(), &row.accessor());
    QVERIFY(copy.data_ptr()->ref.isStatic());
}

void tst_EventsDBusDefinitions::declaresTheAccessorsInTheOrderOfTheTable()
{
    QFile header(QStringLiteral(TEST_SOURCE_FOLDER "EventProvider/EventsDBusDefinitions.h"));
    QVERIFY(header.open(QFile::ReadOnly));
    const QRegularExpression declaration(QStringLiteral("static const QString&\\s+(\\w+)\\(\\);"));
    QStringList declared;
    auto found = declaration.globalMatch(QString::fromUtf8(header.readAll()));
    while (found.hasNext())
    {
        declared.append(found.next().captured(1));
    }

    QStringList expected;
    for (const Row& row : rows)
    {
        expected.append(QString::fromLatin1(row.name));
    }
    QCOMPARE(declared, expected);
}

void tst_EventsDBusDefinitions::numbersTheTextSources()
{
    QCOMPARE(int(Definitions::languageFile), 0);
    QCOMPARE(int(Definitions::configuration), 1);
}

void tst_EventsDBusDefinitions::endsWithWhatIsDerivedFromIt()
{
    struct Derived : Definitions
    {
        explicit Derived(bool& isEnded) : m_isEnded(isEnded) {}
        ~Derived() override { m_isEnded = true; }
        bool& m_isEnded;
    };
    bool isEnded = false;
    std::unique_ptr<Definitions> definitions = std::make_unique<Derived>(isEnded);

    definitions.reset();

    QVERIFY(isEnded);
}

QTEST_GUILESS_MAIN(tst_EventsDBusDefinitions)
#include "tst_EventsDBusDefinitions.moc"
