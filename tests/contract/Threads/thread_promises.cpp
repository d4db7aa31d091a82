// A module that takes the headers at their word: what may be used from any thread is used from several at once, and what
// belongs to one thread is made on many. Built with the thread sanitizer, the library and the stand-in too.
//
//   thread_promises values   what needs no bus
//   thread_promises module   producers and readers at work, until the end of the standard input
//   thread_promises race     what the headers forbid: one producer on two threads

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "Definitions/EventlistHandlerDefinitions.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/AuditTrailHandler.h"
#include "EventHandlers/EventHandler.h"
#include "EventHandlers/FaultHandler.h"
#include "EventProvider/EventsDBusDefinitions.h"
#include "EventRead/EventHandlerRead.h"
#include "EventRead/EventlistHandlerDBusConnectorRead.h"
#include "HashRegister/EventListHandlerRegisterWorker.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationAndProcessDataTools.h"
#include "Platform/IsoDateConverter.h"
#include "Platform/JsonFunctions.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/PropertyManagerConst.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/RecorderUrlHashHandling.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

namespace
{
constexpr int threadCount = 4;
const char textFolder[] = TEXT_FOLDER;

void onThreads(const std::function<void(int)>& work)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
}

const QString url = QStringLiteral("EventlistHandler/SystemWatchdog");

void useCatalogues()
{
    // The first call makes the value.
    using Definitions = EventlistHandlerDefinitions;
    const QStringList values{Definitions::getModuleName(),
                             Definitions::getKeywordError(),
                             Definitions::getPathEventToFile(),
                             EventsDBusDefinitions::getEventDBusKeyUrl(),
                             EventsDBusDefinitions::getInterfaceNameEvents(),
                             LanguageDefinitions::getSecondFallbackLanguageFilename(),
                             PropertyManagerConst::getDBusPrefix()};
    std::printf("%d\n", values.size());
    PropertyManagerConst::getConfigurationFolderPath(QStringLiteral("PumpControl/"));
    IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(QDateTime::currentDateTime());
    RecorderUrlHashHandling::createUrlHash(QByteArrayLiteral("PumpControl/Pump3"));
}

void useValues()
{
    const TextManager texts(QString::fromLatin1(textFolder));
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("same.json"));
    const auto tree = QSharedPointer<ConfigurationAndProcessDataBase>::create(QVariantMap{
        {QStringLiteral("a"), QVariantMap{{QStringLiteral("value"), QStringLiteral("x")}}}});
    QJsonObject shared;
    EventlistHandlerConvenienceFunctions::generateMetaData(
        shared, ReadAllTextsHelper::getAllTextsAsVariantMap(texts, url),
        {{QStringLiteral("%1"), QStringLiteral("PumpControl")}}, {}, texts, url);
    onThreads([&](int) {
        for (int i = 0; i < 200; ++i)
        {
            useCatalogues();
            ReadAllTextsHelper::getAllTextsAsVariantMap(
                texts, i % 2 == 0 ? url : QStringLiteral("EventlistHandler/EventTypeAlarm"));
            QJsonObject metaData;
            EventlistHandlerConvenienceFunctions::generateMetaData(
                metaData, ReadAllTextsHelper::getAllTextsAsVariantMap(texts, url),
                {{QStringLiteral("%1"), QString::number(i)}}, {}, texts, url);
            QVariantMap list;
            EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(list, metaData);
            EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(list, shared);
            ConfigurationAndProcessDataTools::extractConfigValue(QStringLiteral("a"), tree);
            writeJsonObjectToFile(shared, file);
        }
    });
}

// One of each producer, made, used and ended on its own thread, without an event loop.
void useProducers(int number, const TextManager& texts, const std::atomic<bool>& isEnding)
{
    const QString module = QStringLiteral("Module%1").arg(number);
    AlarmHandler alarm(module, texts, url, {});
    FaultHandler fault(module, texts, url, {});
    EventHandler event(module, texts, url, {});
    AuditTrailHandler audit(module, texts, url, {});
    EventHandler onFile(module, texts, url, {});
    onFile.setEventToFile(module);
    EventlistHandlerDBusConnectorRead list(true);
    AlarmlistHandlerDBusConnectorRead alarms(true);
    bool isOn = false;
    while (!isEnding)
    {
        isOn = !isOn;
        alarm.changeState(isOn, {{QStringLiteral("%1"), module}});
        fault.changeState(isOn, {{QStringLiteral("%1"), module}});
        event.logEvent({{QStringLiteral("%1"), module}});
        onFile.logEvent({{QStringLiteral("%1"), module}});
        list.changedFlagEventlist();
        list.getListOfEventTypes(QStringLiteral("lang_en"));
        alarms.isDBusInterfaceValid();
        std::this_thread::yield();
    }
}

// A reader and a listener on a thread with an event loop.
class ReadingThread : public QThread
{
public:
    using QThread::exec;

protected:
    void run() override
    {
        EventHandlerRead reader(nullptr);
        QObject::connect(&reader, &EventHandlerRead::changedEventlist, &reader,
                         [&] { reader.getListOfEventTypes(QStringLiteral("lang_en")); });
        exec();
    }
};

void workAsModule()
{
    const TextManager texts(QString::fromLatin1(textFolder));
    std::atomic<bool> isEnding{false};
    ReadingThread reading;
    reading.start();
    EventListHandlerRegisterWorker worker(QString(), QStringLiteral("EventlistHandler"));
    QThread listening;
    worker.moveToThread(&listening);
    listening.start();
    // Asked and called from every thread, while the others work.
    EventHandler watched(QStringLiteral("Watched"), texts, url, {});
    const EventlistHandlerDBusConnectorRead connector(false);
    std::thread asking([&] {
        while (!isEnding)
        {
            connector.getRefusedCallCount();
            worker.connect();
            worker.isConnected();
            std::this_thread::yield();
        }
    });
    std::thread working(
        [&] { onThreads([&](int number) { useProducers(number, texts, isEnding); }); });
    std::puts("running");
    std::fflush(stdout);
    while (std::getchar() != EOF)
    {
        watched.logEvent({{QStringLiteral("%1"), QStringLiteral("told")}});
    }
    isEnding = true;
    working.join();
    asking.join();
    for (QThread* thread : {static_cast<QThread*>(&reading), &listening})
    {
        thread->quit();
        thread->wait();
    }
}

void raceWithOneProducer()
{
    const TextManager texts(QString::fromLatin1(textFolder));
    EventHandler event(QStringLiteral("PumpControl"), texts, url, {});
    event.setEventToFile(QStringLiteral("race"));
    onThreads([&](int number) { event.changeState(number % 2 == 0, {}); });
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QString command = QString::fromUtf8(argc == 2 ? argv[1] : "");
    if (command == QLatin1String("values"))
    {
        useValues();
        return 0;
    }
    if (command == QLatin1String("module"))
    {
        workAsModule();
        return 0;
    }
    if (command == QLatin1String("race"))
    {
        raceWithOneProducer();
        return 0;
    }
    return 2;
}
