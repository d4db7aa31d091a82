// Works through one input of 1 MiB that costs as much as such an input can, and fails when that takes 2 s of processor
// time or 256 MiB of memory. The argument names the shape.

#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventProvider/EventsDBusProviderBaseClass.h"
#include "JsonLoader.h"
#include "TestSupport/FakeTextManager.h"
#include "core/EventDecoder.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>

#include <cstdio>
#include <ctime>
#include <functional>

#include <sys/resource.h>

namespace
{
constexpr int inputBytes = 1024 * 1024;
constexpr double mostSeconds = 2;
constexpr long mostMebibytes = 256;

using Functions = EventlistHandlerConvenienceFunctions;

// What is measured, made from its input beforehand.
using Work = std::function<void()>;

QString times(const QString& text, int count)
{
    return text.repeated(count);
}

QJsonObject literal(const QString& text)
{
    return {{QStringLiteral("type"), QStringLiteral("string")}, {QStringLiteral("value"), text}};
}

int bytesOf(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact).size();
}

Work resolving(const QVariantMap& scheme, const QMap<QString, QJsonObject>& arguments)
{
    QJsonObject members;
    for (auto it = arguments.begin(); it != arguments.end(); ++it)
    {
        members.insert(it.key(), it.value());
    }
    const QJsonObject metaData{
        {QStringLiteral("Arguments"), members},
        {QStringLiteral("DescriptionScheme"), QJsonObject::fromVariantMap(scheme)}};
    std::printf("%d bytes\n", bytesOf(metaData));
    return [metaData] {
        QVariantMap texts;
        Functions::generateDescriptionTextlist(texts, metaData);
        // As a producer sends it.
        QJsonDocument(QJsonObject::fromVariantMap(texts)).toJson(QJsonDocument::Compact);
        QJsonDocument(metaData).toJson(QJsonDocument::Compact);
    };
}

QString numbered(const char* head, int number)
{
    return QLatin1String(head) + QString::number(number, 36);
}

QMap<QString, QJsonObject> literals(int count, const QString& text = QString())
{
    QMap<QString, QJsonObject> arguments;
    for (int i = 0; i < count; ++i)
    {
        arguments.insert(numbered("%", i), literal(text));
    }
    return arguments;
}

// Each stands ten times in the one before it, until the texts are as large as they may become; then
// come many that are looked for in vain.
QMap<QString, QJsonObject> bomb(int levels)
{
    QMap<QString, QJsonObject> arguments;
    for (int i = 0; i < levels; ++i)
    {
        arguments.insert(times(QStringLiteral("b"), i + 1),
                         literal(times(times(QStringLiteral("b"), i + 2) + QLatin1Char(' '), 10)));
    }
    return arguments;
}

Work manyPlaceholdersInALongText()
{
    return resolving({{QStringLiteral("lang_en"), times(QStringLiteral("%"), inputBytes / 2)}},
                     literals(inputBytes / 2 / 36));
}

Work manyPlaceholdersInManyLanguages()
{
    QVariantMap scheme;
    for (int i = 0; i < inputBytes / 2 / 10; ++i)
    {
        scheme.insert(numbered("l", i), QString());
    }
    return resolving(scheme, literals(inputBytes / 2 / 36));
}

Work placeholderThatIsAlmostEverywhere()
{
    const QString placeholder = QLatin1Char('b') + times(QStringLiteral("a"), inputBytes / 3);
    return resolving(
        {{QStringLiteral("lang_en"), times(QStringLiteral("a"), inputBytes * 2 / 3 - 200)}},
        {{placeholder, literal(QStringLiteral("x"))}});
}

Work placeholdersThatAreAlmostEverywhere()
{
    QMap<QString, QJsonObject> arguments;
    for (int i = 0; i < inputBytes / 3 / 110; ++i)
    {
        arguments.insert(numbered("b", i) + times(QStringLiteral("a"), 60), literal(QString()));
    }
    return resolving(
        {{QStringLiteral("lang_en"), times(QStringLiteral("a"), inputBytes * 2 / 3 - 5000)}},
        arguments);
}

Work placeholdersThatStandEverywhere()
{
    QMap<QString, QJsonObject> arguments;
    for (int i = 0; i < 20000; ++i)
    {
        arguments.insert(numbered("b", i), literal(QStringLiteral("a")));
        arguments.insert(QStringLiteral("a"), literal(QStringLiteral("a")));
    }
    return resolving({{QStringLiteral("lang_en"), times(QStringLiteral("a"), inputBytes / 8)}},
                     arguments);
}

Work argumentsThatMultiply()
{
    QMap<QString, QJsonObject> arguments = bomb(6);
    for (int i = 0; i < 20000; ++i)
    {
        arguments.insert(numbered("c", i), literal(QString()));
    }
    return resolving({{QStringLiteral("lang_en"), QStringLiteral("b b b b b b b b b b")}},
                     arguments);
}

Work argumentsThatReplaceLargeTexts()
{
    // As large as they may be, and then each unit of them is replaced again and again.
    QMap<QString, QJsonObject> arguments;
    arguments.insert(QStringLiteral("A"), literal(times(QStringLiteral("b"), 16 * 1024)));
    for (int i = 0; i < 10000; ++i)
    {
        const QString from = i % 2 == 0 ? QStringLiteral("b") : QStringLiteral("c");
        arguments.insert(times(from, 1 + i / 2 % 40),
                         literal(times(QStringLiteral("c"), 1 + i % 40)));
    }
    return resolving({{QStringLiteral("lang_en"), times(QStringLiteral("A"), 1023)}}, arguments);
}

Work translatedArguments()
{
    QVariantMap scheme;
    QJsonObject texts;
    for (int i = 0; i < inputBytes / 4 / 12; ++i)
    {
        scheme.insert(numbered("l", i), QStringLiteral("%"));
        texts.insert(numbered("l", i), QStringLiteral("%"));
    }
    QMap<QString, QJsonObject> arguments;
    for (int i = 0; i < 3; ++i)
    {
        arguments.insert(numbered("%", i), {{QStringLiteral("type"), QStringLiteral("text")},
                                            {QStringLiteral("value"), texts}});
    }
    arguments.insert(QStringLiteral("%"), arguments.first());
    return resolving(scheme, arguments);
}

QByteArray keysInNoOrder(int bytes)
{
    QByteArray json = "{";
    for (quint32 i = 0; json.size() < bytes - 20; ++i)
    {
        json += (i == 0 ? "\"" : ",\"") + QByteArray::number(i * 2654435761U, 36) + "\":0";
    }
    return json + "}";
}

Work jsonWithKeysInNoOrder()
{
    const QByteArray json = keysInNoOrder(inputBytes);
    return [json] {
        const auto loaded = JsonLoader::fromBytes(json, inputBytes);
        std::printf("%d members\n", loaded.object.toVariantMap().size());
    };
}

QJsonObject spoolFile(const QJsonObject& metaData)
{
    QJsonObject event{{QStringLiteral("EventType"), 3},
                      {QStringLiteral("State"), 0},
                      {QStringLiteral("SourceHashType"), 0},
                      {QStringLiteral("MetaData"), metaData}};
    for (const char* name : {"DateTimeMsUTC", "IconType", "ModuleName", "Description",
                             "KeywordName", "User", "EventId", "AlarmID", "SourceHashes"})
    {
        event.insert(QLatin1String(name), QString());
    }
    return event;
}

Work emergencyWithManyArguments()
{
    QMap<QString, QJsonValue> sorted;
    for (int i = 0; i < inputBytes / 12; ++i)
    {
        sorted.insert(numbered("%", i), QStringLiteral("%"));
    }
    QJsonObject arguments;
    for (auto it = sorted.begin(); it != sorted.end(); ++it)
    {
        arguments.insert(it.key(), it.value());
    }
    const QByteArray json =
        QJsonDocument(spoolFile({{QStringLiteral("Arguments"), QJsonArray{arguments}}}))
            .toJson(QJsonDocument::Compact);
    return [json] {
        const FakeTextManager texts;
        const auto decoded = eventlistd::EventDecoder(texts).fromSpoolFile(json);
        std::printf("%d bytes, error %s\n", json.size(), qPrintable(decoded.error));
    };
}

Work dictionaryWith(const char* list, const QVariantMap& entry, int entrySize)
{
    QVariantList entries;
    for (int i = 0; i < inputBytes / entrySize; ++i)
    {
        QVariantMap numberedEntry = entry;
        numberedEntry.insert(QStringLiteral("Placeholder"), numbered("%", i));
        entries.append(numberedEntry);
    }
    const QVariantMap dictionary{
        {QStringLiteral("textSource"), 0},
        {QStringLiteral("moduleName"), QStringLiteral("PumpControl")},
        {QStringLiteral("ObjectName"), QStringLiteral("PumpControl")},
        {QStringLiteral("InstanceName"), QString()},
        {QStringLiteral("url"), QStringLiteral("PumpControl/OverTemperature")},
        {QLatin1String(list), entries}};
    std::printf("%d entries\n", entries.size());
    return [dictionary] {
        static const FakeTextManager texts(FakeTextManager::pumpTexts());
        static const QVector<EventsDBusProviderBaseClass::TextManagerData> managers{
            {QStringLiteral("PumpControl"), &texts}};
        EventsDBusProviderBaseClass provider(QStringLiteral("PumpControl"),
                                             QStringLiteral("PumpControl"), managers, QString());
        provider.logEvent(QStringList(), QString(), QString(), dictionary, QStringList(), QString(),
                          QString(), QString(),
                          EventlistHandlerEnums::SourceHashType::noSourceHash);
    };
}

// The smallest entries that count, in bytes on the bus: an a{sv} with its keys, in an array of variants.
Work dictionaryWithManyArguments()
{
    return dictionaryWith("Arguments", {{QStringLiteral("Argument"), QStringLiteral("x")}}, 72);
}

Work dictionaryWithManyUrlArguments()
{
    return dictionaryWith("UrlArguments",
                          {{QStringLiteral("moduleName"), QStringLiteral("PumpControl")},
                           {QStringLiteral("ObjectName"), QStringLiteral("PumpControl")},
                           {QStringLiteral("url"), QStringLiteral("PumpControl/PumpName3")}},
                          160);
}

Work dictionaryWithManyBrokenEntries()
{
    return dictionaryWith("UrlArguments", {}, 40);
}

Work workOf(const QString& shape)
{
    const QMap<QString, Work (*)()> shapes{
        {QStringLiteral("many_placeholders_in_a_long_text"), manyPlaceholdersInALongText},
        {QStringLiteral("many_placeholders_in_many_languages"), manyPlaceholdersInManyLanguages},
        {QStringLiteral("placeholder_that_is_almost_everywhere"),
         placeholderThatIsAlmostEverywhere},
        {QStringLiteral("placeholders_that_are_almost_everywhere"),
         placeholdersThatAreAlmostEverywhere},
        {QStringLiteral("placeholders_that_stand_everywhere"), placeholdersThatStandEverywhere},
        {QStringLiteral("arguments_that_multiply"), argumentsThatMultiply},
        {QStringLiteral("arguments_that_replace_large_texts"), argumentsThatReplaceLargeTexts},
        {QStringLiteral("translated_arguments"), translatedArguments},
        {QStringLiteral("json_with_keys_in_no_order"), jsonWithKeysInNoOrder},
        {QStringLiteral("emergency_with_many_arguments"), emergencyWithManyArguments},
        {QStringLiteral("dictionary_with_many_arguments"), dictionaryWithManyArguments},
        {QStringLiteral("dictionary_with_many_url_arguments"), dictionaryWithManyUrlArguments},
        {QStringLiteral("dictionary_with_many_broken_entries"), dictionaryWithManyBrokenEntries}};
    return shapes.contains(shape) ? shapes.value(shape)() : Work();
}

double processorSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const Work work = workOf(QString::fromUtf8(argc == 2 ? argv[1] : ""));
    if (!work)
    {
        std::fprintf(stderr, "Usage: worst_shapes SHAPE\n");
        return 2;
    }
    int warnings = 0;
    static int* const counter = &warnings;
    qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) { ++*counter; });
    const double before = processorSeconds();
    work();
    const double seconds = processorSeconds() - before;
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const long mebibytes = usage.ru_maxrss / 1024;
    std::printf("%s: %.2f s, %ld MiB, %d warnings\n", argv[1], seconds, mebibytes, warnings);
    return seconds < mostSeconds && mebibytes < mostMebibytes ? 0 : 1;
}
