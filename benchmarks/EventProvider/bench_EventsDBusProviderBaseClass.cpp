// What a provider spends on a description dictionary as it came from the bus, beside the same work
// written down step by step. Only under callgrind; the phases are
//
//   provider    logEventWithDescriptionInDBusFormat, to the bus
//   letter      the steps one after the other, to the bus
//   empty       what the measurement itself costs
//
//   bench_EventsDBusProviderBaseClass <text folder> <arguments> <events>

#include "EventProvider/EventsDBusProviderBaseClass.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"
#include "Support/BenchmarkEvent.h"
#include "Support/Meter.h"
#include "Support/Senders.h"

#include "Platform/DBusConnection.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/TranslateableTextHelper.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMultiMap>

#include <cstdio>

using Definitions = EventsDBusDefinitions;

namespace
{
const QString moduleName = QStringLiteral("BenchmarkProvider");

struct Call
{
    QStringList eventAttributes{QStringLiteral("3"), QStringLiteral("0"),
                                QStringLiteral("EventlistEvent")};
    QString timestamp = QStringLiteral("2026-03-14T09:26:53.589+01:00");
    QStringList keywords{QStringLiteral("Firmware")};
    QString user;
    QString alarmId;
};
} // namespace

/// Keeps the dictionary of the last call, as QtDBus delivers it.
class Receiver : public QObject
{
    Q_OBJECT
public:
    QVariantMap dictionary;

public Q_SLOTS:
    void keep(const QVariantMap& received) { dictionary = received; }
};

/// A provider that also knows the long way.
class Provider : public EventsDBusProviderBaseClass
{
public:
    explicit Provider(const QVector<TextManagerData>& texts)
        : EventsDBusProviderBaseClass(moduleName, QStringLiteral("Texts"), texts, QString()),
          m_connector(false)
    {
    }

    void logByTheLetter(const Call& call, const QVariantMap& received);

private:
    static QVariantList unpack(const QVariant& value);
    void readLists(QVariantList& arguments, QVariantList& urlArguments,
                   const QVariantMap& dictionary) const;
    void readKeys(Definitions::TextSource& source, QString& module, QString& object,
                  QString& instance, QString& url, const QVariantMap& dictionary) const;
    QVariantMap textOf(const QVariantMap& entry, QString& url) const;

    EventlistHandlerDBusConnectorWrite m_connector;
};

// Each container out of its variant, each entry out of its container, every value copied on.
QVariantList Provider::unpack(const QVariant& value)
{
    QVariantList elements;
    const auto array = value.value<QDBusArgument>();
    array.beginArray();
    while (!array.atEnd())
    {
        QVariant element;
        array >> element;
        elements.append(element);
    }
    array.endArray();
    QVariantList result;
    for (const QVariant& element : qAsConst(elements))
    {
        QMultiMap<QString, QVariant> entries;
        const auto map = element.value<QDBusArgument>();
        map.beginMap();
        while (!map.atEnd())
        {
            QString key;
            QVariant content;
            map.beginMapEntry();
            map >> key >> content;
            map.endMapEntry();
            entries.insert(key, content);
        }
        map.endMap();
        QVariantMap entry;
        entry = entries;
        result.append(QVariant(entry));
    }
    return result;
}

void Provider::readKeys(Definitions::TextSource& source, QString& module, QString& object,
                        QString& instance, QString& url, const QVariantMap& dictionary) const
{
    const QString& keySource = Definitions::getEventDBusKeyTextSource();
    if (dictionary.contains(keySource) && dictionary.value(keySource).canConvert(QMetaType::Int))
    {
        source = Definitions::TextSource(dictionary.value(keySource).toInt());
    }
    const auto read = [&](const QString& key, QString& output) {
        if (dictionary.contains(key))
        {
            output = dictionary.value(key).toString();
        }
    };
    read(Definitions::getEventDBusKeyModuleName(), module);
    read(Definitions::getEventDBusKeyObjectName(), object);
    read(Definitions::getEventDBusKeyInstanceName(), instance);
    read(Definitions::getEventDBusKeyUrl(), url);
}

void Provider::readLists(QVariantList& arguments, QVariantList& urlArguments,
                         const QVariantMap& dictionary) const
{
    const auto read = [&](const QString& key, QVariantList& output) {
        if (dictionary.contains(key) && dictionary.value(key).canConvert(QMetaType::QVariantList))
        {
            output = dictionary.value(key).toList();
        }
    };
    read(Definitions::getEventDBusKeyArguments(), arguments);
    read(Definitions::getEventDBusKeyUrlArguments(), urlArguments);
}

QVariantMap Provider::textOf(const QVariantMap& entry, QString& url) const
{
    Definitions::TextSource source = Definitions::languageFile;
    QString module;
    QString object;
    QString instance;
    readKeys(source, module, object, instance, url, entry);
    QVariantMap text =
        getTextFromLanguageFileOrConfiguration(source, module, object, instance, url);
    if (text.isEmpty())
    {
        text.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(),
                    generateUrl(module, object, instance, url));
    }
    return text;
}

void Provider::logByTheLetter(const Call& call, const QVariantMap& received)
{
    QVariantMap dictionary = received;
    for (const QString& key :
         {Definitions::getEventDBusKeyArguments(), Definitions::getEventDBusKeyUrlArguments()})
    {
        dictionary.insert(key, unpack(dictionary.value(key)));
    }
    QVariantList argumentEntries;
    QVariantList urlArgumentEntries;
    readLists(argumentEntries, urlArgumentEntries, dictionary);
    QString url;
    const QVariantMap text = textOf(dictionary, url);

    QList<EventlistHandlerStructs::stDescriptionArgument> arguments;
    for (const QVariant& element : qAsConst(argumentEntries))
    {
        const QVariantMap entry = element.toMap();
        arguments.append({entry.value(Definitions::getEventDBusKeyPlaceholder()).toString(),
                          entry.value(Definitions::getEventDBusKeyArgument()).toString()});
    }
    QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument> urlArguments;
    for (const QVariant& element : qAsConst(urlArgumentEntries))
    {
        const QVariantMap entry = element.toMap();
        QString urlOfArgument;
        const QVariantMap textOfArgument = textOf(entry, urlOfArgument);
        urlArguments.append(
            {entry.value(Definitions::getEventDBusKeyPlaceholder()).toString(), textOfArgument});
    }
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(metaData, text, arguments, urlArguments,
                                                           url);
    QVariantMap textList;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(textList, metaData);
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(textList);
    m_connector.logEvent(call.eventAttributes, call.timestamp, moduleName,
                         helper.getTranslateableTextObjectAsJsonString(), call.keywords, call.user,
                         url, metaData, call.alarmId, QString(),
                         EventlistHandlerEnums::SourceHashType::noSourceHash);
}

namespace
{
QVariantMap fixedKeys(const QString& url)
{
    return {{Definitions::getEventDBusKeyTextSource(), 0},
            {Definitions::getEventDBusKeyModuleName(), moduleName},
            {Definitions::getEventDBusKeyObjectName(), QStringLiteral("Texts")},
            {Definitions::getEventDBusKeyInstanceName(), QString()},
            {Definitions::getEventDBusKeyUrl(), url}};
}

QVariantMap dictionaryOf(const BenchmarkEvent& event)
{
    QVariantList arguments;
    for (const auto& argument : event.arguments)
    {
        arguments.append(
            QVariantMap{{Definitions::getEventDBusKeyPlaceholder(), argument.placeholder},
                        {Definitions::getEventDBusKeyArgument(), argument.argument}});
    }
    QVariantList urlArguments;
    for (const auto& argument : event.urlArguments)
    {
        QVariantMap entry = fixedKeys(argument.argument);
        entry.insert(Definitions::getEventDBusKeyPlaceholder(), argument.placeholder);
        urlArguments.append(entry);
    }
    QVariantMap dictionary = fixedKeys(event.url);
    dictionary.insert(Definitions::getEventDBusKeyArguments(), arguments);
    dictionary.insert(Definitions::getEventDBusKeyUrlArguments(), urlArguments);
    return dictionary;
}

// A second connection sends it, so that it goes over the bus.
QVariantMap throughTheBus(const QVariantMap& dictionary)
{
    Receiver receiver;
    QDBusConnection here = DBusConnection::getQDBusConnection();
    here.registerObject(QStringLiteral("/Receiver"), &receiver, QDBusConnection::ExportAllSlots);
    QDBusMessage call = QDBusMessage::createMethodCall(
        here.baseService(), QStringLiteral("/Receiver"), QString(), QStringLiteral("keep"));
    call << dictionary;
    const QString other = QStringLiteral("other");
    const QDBusMessage answer = QDBusConnection::connectToBus(QDBusConnection::SystemBus, other)
                                    .call(call, QDBus::BlockWithGui);
    if (answer.type() != QDBusMessage::ReplyMessage)
    {
        std::fprintf(stderr, "%s\n", qPrintable(answer.errorMessage()));
    }
    QDBusConnection::disconnectFromBus(other);
    here.unregisterObject(QStringLiteral("/Receiver"));
    return receiver.dictionary;
}

QVariantList callSink(const QString& method)
{
    return DBusConnection::getQDBusConnection()
        .call(QDBusMessage::createMethodCall(Senders::serviceName(), QStringLiteral("/"),
                                             QStringLiteral("Benchmark.Sink"), method))
        .arguments();
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() != 4)
    {
        std::fputs("Text folder, arguments and events are missing.\n", stderr);
        return 2;
    }
    Senders::waitForService();
    const BenchmarkEvent event(words[1], words[2].toInt(), 0);
    const QVariantMap dictionary = throughTheBus(dictionaryOf(event));
    const QVector<EventsDBusProviderBaseClass::TextManagerData> texts = {
        {QStringLiteral("Texts"), &event.texts}};
    Provider provider(texts);
    const Call call;
    const auto logAsProvider = [&] {
        provider.logEventWithDescriptionInDBusFormat(call.eventAttributes, call.timestamp,
                                                     moduleName, dictionary, call.keywords,
                                                     call.user, call.alarmId);
    };
    const auto logByTheLetter = [&] { provider.logByTheLetter(call, dictionary); };
    const auto summaryOf = [&](const auto& log) {
        callSink(QStringLiteral("startComparison"));
        log();
        Senders::flushPlatformConnection();
        return callSink(QStringLiteral("takeSummary"));
    };
    const QVariantList summary = summaryOf(logAsProvider);
    if (summary.value(0).toUInt() != 1 || summary != summaryOf(logByTheLetter))
    {
        std::fputs("The two ways do not give the same event.\n", stderr);
        return 1;
    }
    const auto count = [&](const QString& name, const auto& log, int events) {
        Senders::flushPlatformConnection();
        Meter::beginPhase();
        for (int i = 0; i < events; ++i)
        {
            log();
        }
        Senders::flushPlatformConnection();
        Meter::endPhase(name);
    };
    count(QStringLiteral("empty"), logAsProvider, 0);
    count(QStringLiteral("provider"), logAsProvider, words[3].toInt());
    count(QStringLiteral("letter"), logByTheLetter, words[3].toInt());
    Meter::report({{QStringLiteral("bytes"), summary.value(2).toLongLong()}});
    return 0;
}

#include "bench_EventsDBusProviderBaseClass.moc"
