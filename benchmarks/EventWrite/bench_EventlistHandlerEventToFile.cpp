// An event on the file road, from the texts to the durable file, beside the system calls that make
// a file of the same bytes durable and complete. The spool folder should lie in memory, so that the
// processor and not a disk is measured.

#include "EventWrite/EventlistHandlerEventToFile.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventHandlers/EventHandler.h"
#include "Support/BenchmarkEvent.h"

#include "Platform/JsonFunctions.h"
#include "Platform/ReadAllTextsHelper.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace
{
// One name for all: the folder stays small, and each event replaces the one before it. Numbered
// files are new each time, so both are measured.
const char fixedName[] = "benchmark";

QString textFolder;

QString spoolFolder()
{
    return EventlistHandlerDefinitions::getPathEventToFile();
}

void clearSpoolFolder()
{
    QDir folder(spoolFolder());
    const QStringList names = folder.entryList(QDir::Files);
    for (const QString& name : names)
    {
        folder.remove(name);
    }
}

// What the library writes for this event.
QByteArray bytesOf(const BenchmarkEvent& event)
{
    EventHandler producer(event.moduleName, event.texts, event.url, event.keywords);
    producer.setEventToFile(QLatin1String(fixedName));
    producer.logEvent(event.texts, event.urlArguments, event.arguments);
    QFile file(spoolFolder() + QLatin1String(fixedName) +
               EventlistHandlerDefinitions::getExtensionEventToFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Complete before it has a name, durable before and after.
bool writeDurably(const char* folderPath, const char* name, const QByteArray& bytes)
{
    const int folder = ::open(folderPath, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const int file = ::openat(folder, ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, 0640);
    const bool isWritten =
        ::write(file, bytes.constData(), std::size_t(bytes.size())) == bytes.size() &&
        ::fdatasync(file) == 0;
    char unnamed[64];
    std::snprintf(unnamed, sizeof unnamed, "/proc/self/fd/%d", file);
    const bool isNamed = ::linkat(AT_FDCWD, unnamed, folder, name, AT_SYMLINK_FOLLOW) == 0 &&
                         ::close(file) == 0 && ::fsync(folder) == 0;
    ::close(folder);
    return isWritten && isNamed;
}

void fileRoad(benchmark::State& state)
{
    const BenchmarkEvent event(textFolder + QString::number(state.range(0)),
                               BenchmarkEvent::usualArguments, 0);
    const QByteArray expected = bytesOf(event);
    clearSpoolFolder();
    EventHandler producer(event.moduleName, event.texts, event.url, event.keywords);
    producer.setEventToFile(QString());
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        producer.logEvent(event.texts, event.urlArguments, event.arguments);
    }
    const int files = QDir(spoolFolder()).entryList(QDir::Files).size();
    if (expected.isEmpty() || files != int(state.iterations()))
    {
        state.SkipWithError("the events are not in the spool folder");
    }
    clearSpoolFolder();
}

void bareSequence(benchmark::State& state)
{
    const BenchmarkEvent event(textFolder + QString::number(state.range(0)),
                               BenchmarkEvent::usualArguments, 0);
    const QByteArray bytes = bytesOf(event);
    clearSpoolFolder();
    const QByteArray folder = QFile::encodeName(spoolFolder());
    int number = 0;
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        char name[64];
        std::snprintf(name, sizeof name, "bare%d.event.json", number++);
        if (!writeDurably(folder.constData(), name, bytes))
        {
            state.SkipWithError("a file could not be written");
            break;
        }
    }
    clearSpoolFolder();
}

// What remains of the road when the object to write is there already: the platform's part, which takes
// a JSON object and no text.
void finishedObject(benchmark::State& state)
{
    const BenchmarkEvent event(textFolder + QString::number(state.range(0)),
                               BenchmarkEvent::usualArguments, 0);
    const QJsonObject object = QJsonDocument::fromJson(bytesOf(event)).object();
    clearSpoolFolder();
    int number = 0;
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        const QString name = QStringLiteral("object%1.event.json").arg(number++);
        if (object.isEmpty() || !writeJsonObjectToFile(object, spoolFolder() + name))
        {
            state.SkipWithError("a file could not be written");
            break;
        }
    }
    clearSpoolFolder();
}

// Making the largest part of that object.
void metaDataObject(benchmark::State& state)
{
    const BenchmarkEvent event(textFolder + QString::number(state.range(0)),
                               BenchmarkEvent::usualArguments, 0);
    const QVariantMap texts = ReadAllTextsHelper::getAllTextsAsVariantMap(event.texts, event.url);
    for (auto unused : state)
    {
        Q_UNUSED(unused)
        QJsonObject metaData;
        EventlistHandlerConvenienceFunctions::generateMetaData(
            metaData, texts, event.arguments, event.urlArguments, event.texts, event.url);
        benchmark::DoNotOptimize(metaData);
    }
}

constexpr int events = 400;
BENCHMARK(fileRoad)->Arg(2)->Arg(10)->Arg(30)->Iterations(events);
BENCHMARK(finishedObject)->Arg(2)->Arg(10)->Arg(30)->Iterations(events);
BENCHMARK(metaDataObject)->Arg(2)->Arg(10)->Arg(30)->Iterations(events);
BENCHMARK(bareSequence)->Arg(2)->Arg(10)->Arg(30)->Iterations(events);
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (argc != 2)
    {
        std::fputs("The text folder is missing.\n", stderr);
        return 2;
    }
    textFolder = QString::fromLocal8Bit(argv[1]) + QLatin1Char('/');
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
