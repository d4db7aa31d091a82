#include "TestSupport/ChildProcess.h"
#include "TestSupport/FakeTextManager.h"
#include "TestSupport/Waiting.h"
#include "bus/CentralServiceTest.h"
#include "bus/EventProvider/PumpEvents.h"
#include "bus/WorkedExample.h"

#include "Platform/DBusConnection.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/PropertyManagerConst.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QMap>
#include <QStandardPaths>
#include <QTemporaryFile>
#include <QXmlStreamReader>

#include <utility>

#include <time.h>

using TextManagerData = EventsDBusProviderBaseClass::TextManagerData;

namespace
{
// A dictionary in which a key stands twice.
struct TwiceTheArgument
{
};

QDBusArgument& operator<<(QDBusArgument& argument, const TwiceTheArgument&)
{
    argument.beginMap(QMetaType::QString, qMetaTypeId<QDBusVariant>());
    for (const char* const value : {"first", "last"})
    {
        argument.beginMapEntry();
        argument << QStringLiteral("Argument") << QDBusVariant(QString::fromLatin1(value));
        argument.endMapEntry();
    }
    argument.beginMapEntry();
    argument << QStringLiteral("Placeholder") << QDBusVariant(QStringLiteral("%2"));
    argument.endMapEntry();
    argument.endMap();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TwiceTheArgument&)
{
    return argument;
}

// A configuration with one text, below a prefix of its own.
class ConfiguredPump
{
public:
    ConfiguredPump()
    {
        const QString folder = PropertyManagerConst::getConfigurationFolderPath(
            prefix() + QStringLiteral("PumpControl/"));
        QFile file(folder + QStringLiteral("Channel1.json"));
        const QByteArray text =
            R"({"Limits":{"High":{"value":{"lang_de":"Zu hoch","lang_en":"Too high"}}}})";
        m_isWritten =
            QDir().mkpath(folder) && file.open(QFile::WriteOnly) && file.write(text) == text.size();
    }
    ~ConfiguredPump()
    {
        QDir(PropertyManagerConst::getConfigurationFolderPath(prefix())).removeRecursively();
    }
    Q_DISABLE_COPY(ConfiguredPump)

    static QString prefix() { return QStringLiteral("ProviderClients/"); }
    bool isWritten() const { return m_isWritten; }

private:
    bool m_isWritten = false;
};

// Lets the message log go to a file, one write for each line as to a standard error.
class LogFile
{
public:
    LogFile()
    {
        m_file.open();
        s_file = &m_file;
        m_before = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext& context, const QString& text) {
                s_file->write(qFormatLogMessage(type, context, text).toUtf8() + '\n');
                s_file->flush();
            });
    }
    ~LogFile() { qInstallMessageHandler(m_before); }
    Q_DISABLE_COPY(LogFile)

    bool isOpen() const { return m_file.isOpen(); }
    QByteArrayList lines()
    {
        m_file.seek(0);
        QByteArrayList result = m_file.readAll().split('\n');
        result.removeLast();
        return result;
    }

private:
    static QTemporaryFile* s_file;
    QTemporaryFile m_file;
    QtMessageHandler m_before = nullptr;
};
QTemporaryFile* LogFile::s_file = nullptr;

// What all threads of this process have computed. The time of day would tell more of what else the
// machine does; a call that waits for nothing is ended by its own limit.
qint64 processorMilliseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return qint64(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

// The arguments in the metadata of an event.
QJsonObject argumentsOf(const RecordedMessage& event)
{
    const auto object = [](const QString& text) {
        return QJsonDocument::fromJson(text.toUtf8()).object();
    };
    const QJsonObject additionalData = object(event.arguments[6].toString());
    return object(additionalData.value(QLatin1String("MetaData")).toString())
        .value(QLatin1String("Arguments"))
        .toObject();
}

// Methods, signals and their arguments by interface, as "logEvent(in as, in s)".
QMap<QString, QStringList> interfacesOf(const QByteArray& xml)
{
    QMap<QString, QStringList> result;
    QXmlStreamReader reader(xml);
    QString interface;
    while (!reader.atEnd())
    {
        const auto token = reader.readNext();
        if (token != QXmlStreamReader::StartElement)
        {
            continue;
        }
        const QXmlStreamAttributes attributes = reader.attributes();
        const QString name = attributes.value(QLatin1String("name")).toString();
        if (reader.name() == QLatin1String("interface"))
        {
            interface = name;
            result[interface];
        }
        else if (reader.name() == QLatin1String("method") ||
                 reader.name() == QLatin1String("signal"))
        {
            result[interface] << reader.name() + QLatin1Char(' ') + name;
        }
        else if (reader.name() == QLatin1String("arg"))
        {
            result[interface].last() += QLatin1Char(' ') +
                                        attributes.value(QLatin1String("direction")) +
                                        QLatin1Char(' ') + attributes.value(QLatin1String("type"));
        }
    }
    return result;
}
} // namespace
Q_DECLARE_METATYPE(TwiceTheArgument)

/// Clients in other processes and of other libraries, well-meaning and not.
class tst_ProviderClients : public CentralServiceTest
{
    Q_OBJECT
public:
    using Client = QByteArray (tst_ProviderClients::*)(const QString& url);

    tst_ProviderClients();

private Q_SLOTS:
    void everyClientLogsTheSameEvent_data();
    void everyClientLogsTheSameEvent();
    void answersAtOnceWhileTheCentralServiceIsFrozen();
    void oddValuesInTheArgumentsHarmNobody_data();
    void oddValuesInTheArgumentsHarmNobody();
    void oddValuesUnderTheFixedKeysHarmNobody_data();
    void oddValuesUnderTheFixedKeysHarmNobody();
    void callsOfAnotherShapeAreRefused_data();
    void callsOfAnotherShapeAreRefused();
    void theLastOfTwoEqualKeysCounts();
    void emptyKeysAndControlCharactersPass();
    void manyEntriesTakeNoLonger_data();
    void manyEntriesTakeNoLonger();

    void offersWhatItsInterfaceFileSays();
    void sendsSignalsUnderItsInterface();
    void warnsWhenItsPathIsTaken();
    void warnsWhenItsNameIsTakenAndTakesItWhenItIsFree();
    void warnsWithoutBusAndIsThereWhenTheBusComes();
    void isThereAgainAfterEachRestartOfTheBus();
    void isGoneWithItsObject();

private:
    static QString serviceName();
    bool isOffered() { return m_bus.hasOwner(serviceName()); }
    QDBusMessage call(const QVariantList& arguments);
    QDBusMessage callWith(const QVariantMap& dictionary);
    static QVariantMap dictionary(const QString& url);
    // Runs a client to its end while this process serves it, and gives its output.
    QByteArray run(const QString& program, const QStringList& arguments);
    // Log the worked example with a text url, and give what there is to complain about.
    QByteArray logWithQt(const QString& url);
    QByteArray logWithPython(const QString& url);
    QByteArray logWithGdbus(const QString& url);
    QByteArray logWithBusctl(const QString& url);

    FakeTextManager m_manager{FakeTextManager::pumpTexts()};
    const QVector<TextManagerData> m_texts{{QStringLiteral("PumpControl"), &m_manager}};
};

Q_DECLARE_METATYPE(tst_ProviderClients::Client)

tst_ProviderClients::tst_ProviderClients()
{
    qDBusRegisterMetaType<TwiceTheArgument>();
}

QString tst_ProviderClients::serviceName()
{
    return PropertyManagerConst::getDBusPrefix() + QStringLiteral(".PumpControl");
}

QVariantMap tst_ProviderClients::dictionary(const QString& url)
{
    const QString pump = QStringLiteral("PumpControl");
    return {{QStringLiteral("textSource"), 0},
            {QStringLiteral("moduleName"), pump},
            {QStringLiteral("ObjectName"), pump},
            {QStringLiteral("InstanceName"), QString()},
            {QStringLiteral("url"), url}};
}

QDBusMessage tst_ProviderClients::call(const QVariantList& arguments)
{
    const QString name = QStringLiteral("client");
    QDBusMessage message = QDBusMessage::createMethodCall(serviceName(), QStringLiteral("/Events"),
                                                          QStringLiteral("Interface.Events"),
                                                          QStringLiteral("logEvent"));
    message.setArguments(arguments);
    QDBusMessage reply;
    {
        QDBusPendingCall pending = m_bus.connect(name).asyncCall(message, 60000);
        waitUntil([&] { return pending.isFinished(); }, std::chrono::seconds(60));
        reply = pending.reply();
    }
    QDBusConnection::disconnectFromBus(name);
    return reply;
}

QDBusMessage tst_ProviderClients::callWith(const QVariantMap& descriptionData)
{
    return call(
        {QStringList{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("EventlistAlarmOn")},
         WorkedExample::time(), QStringLiteral("PumpControl"), descriptionData,
         QStringList{QStringLiteral("Error"), QStringLiteral("Firmware")}, QString(),
         WorkedExample::alarmId()});
}

QByteArray tst_ProviderClients::run(const QString& program, const QStringList& arguments)
{
    ChildProcess client;
    client.setProcessChannelMode(QProcess::MergedChannels);
    if (!client.startAndWait(program, arguments) ||
        !waitUntil([&] { return !client.isRunning(); }, std::chrono::seconds(50)))
    {
        return "The client does not run or does not end";
    }
    const QByteArray output = client.readAll();
    return client.exitCode() == 0 ? output : "The client has failed: " + output;
}

void tst_ProviderClients::everyClientLogsTheSameEvent_data()
{
    QTest::addColumn<Client>("client");
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("description");
    QTest::addColumn<QString>("additionalData");
    const QString language = LanguageDefinitions::getSecondFallbackLanguageFilename();
    // A text that is not found shows its key, and the arguments are left out.
    const QString misspelt = QStringLiteral("PumpControl/OverTemperatur");
    const QString key =
        json("{'%1':'PumpControl/PumpControl/PumpControl/OverTemperatur'}").arg(language);
    const QString dataOfKey =
        json("{'EventId':'PumpControl/OverTemperatur','MetaData':'{\\'Arguments\\':{},"
             "\\'DescriptionScheme\\':{\\'%1\\':"
             "\\'PumpControl/PumpControl/PumpControl/OverTemperatur\\'}}',"
             "'SourceHashType':0,'SourceHashes':''}")
            .arg(language);
    using Test = tst_ProviderClients;
    const std::initializer_list<std::pair<const char*, Client>> clients{
        {"QtDBus", &Test::logWithQt},
        {"python3-dbus", &Test::logWithPython},
        {"gdbus", &Test::logWithGdbus},
        {"busctl", &Test::logWithBusctl}};
    for (const auto& [name, client] : clients)
    {
        QTest::newRow(name) << client << WorkedExample::eventId() << WorkedExample::description()
                            << WorkedExample::additionalData();
        QTest::addRow("%s, misspelt url", name) << client << misspelt << key << dataOfKey;
    }
}

QByteArray tst_ProviderClients::logWithQt(const QString& url)
{
    QVariantMap name = dictionary(QStringLiteral("PumpControl/PumpName3"));
    name.insert(QStringLiteral("Placeholder"), QStringLiteral("%1"));
    const QVariantMap value{{QStringLiteral("Placeholder"), QStringLiteral("%2")},
                            {QStringLiteral("Argument"), QStringLiteral("97.5")}};
    QVariantMap data = dictionary(url);
    data.insert(QStringLiteral("Arguments"), QVariantList{value});
    data.insert(QStringLiteral("UrlArguments"), QVariantList{name});
    return callWith(data).errorMessage().toUtf8();
}

QByteArray tst_ProviderClients::logWithPython(const QString& url)
{
    return run(QStringLiteral("/usr/bin/python3"),
               {QStringLiteral(CLIENT_FOLDER "/client.py"), m_bus.address(), serviceName(),
                QStringLiteral("example"), url});
}

QByteArray tst_ProviderClients::logWithGdbus(const QString& url)
{
    const QString keys = QStringLiteral("'textSource': <0>, 'moduleName': <'PumpControl'>, "
                                        "'ObjectName': <'PumpControl'>, 'InstanceName': <''>, "
                                        "'url': ");
    const QString data =
        QLatin1Char('{') + keys + QStringLiteral("<'") + url +
        QStringLiteral("'>, 'Arguments': <[<{'Placeholder': <'%2'>, 'Argument': <'97.5'>}>]>, "
                       "'UrlArguments': <[<{") +
        keys + QStringLiteral("<'PumpControl/PumpName3'>, 'Placeholder': <'%1'>}>]>}");
    const QByteArray output =
        run(QStringLiteral("gdbus"),
            {QStringLiteral("call"), QStringLiteral("--address"), m_bus.address(),
             QStringLiteral("--dest"), serviceName(), QStringLiteral("--object-path"),
             QStringLiteral("/Events"), QStringLiteral("--method"),
             QStringLiteral("Interface.Events.logEvent"),
             QStringLiteral("['0', '1', 'EventlistAlarmOn']"),
             QStringLiteral("'%1'").arg(WorkedExample::time()), QStringLiteral("'PumpControl'"),
             data, QStringLiteral("['Error', 'Firmware']"), QStringLiteral("''"),
             QStringLiteral("'%1'").arg(WorkedExample::alarmId())});
    return output == "()\n" ? QByteArray() : output;
}

QByteArray tst_ProviderClients::logWithBusctl(const QString& url)
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("busctl"));
    if (program.isEmpty())
    {
        return "There is no busctl on this machine: install the package systemd";
    }
    const auto words = [](const char* text) {
        return QString::fromLatin1(text).split(QLatin1Char(' '));
    };
    const QString empty;
    QStringList arguments{QStringLiteral("--address=") + m_bus.address(), QStringLiteral("call"),
                          serviceName()};
    arguments << words("/Events Interface.Events logEvent asssa{sv}asss 3 0 1 EventlistAlarmOn")
              << WorkedExample::time()
              << words("PumpControl 7 textSource i 0 moduleName s PumpControl "
                       "ObjectName s PumpControl InstanceName s")
              << empty << words("url s") << url
              << words("Arguments av 1 a{sv} 2 Placeholder s %2 Argument s 97.5 "
                       "UrlArguments av 1 a{sv} 6 textSource i 0 moduleName s PumpControl "
                       "ObjectName s PumpControl InstanceName s")
              << empty << words("url s PumpControl/PumpName3 Placeholder s %1 2 Error Firmware")
              << empty << WorkedExample::alarmId();
    return run(program, arguments);
}

void tst_ProviderClients::everyClientLogsTheSameEvent()
{
    QFETCH(Client, client);
    QFETCH(QString, url);
    QFETCH(QString, description);
    QFETCH(QString, additionalData);
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());

    QCOMPARE((this->*client)(url), QByteArray());

    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].path, QStringLiteral("/EventlistWrite"));
    QCOMPARE(received[0].interface, QStringLiteral("Interface.EventlistWrite"));
    QCOMPARE(received[0].member, QStringLiteral("logEvent"));
    QCOMPARE(received[0].signature, QStringLiteral("assssassss"));
    QVERIFY(!received[0].isReplyExpected);
    QCOMPARE(received[0].arguments[3].toString(), description);
    QCOMPARE(received[0].arguments[6].toString(), additionalData);
    QCOMPARE(received[0].arguments,
             (QJsonArray{QJsonArray{QStringLiteral("0"), QStringLiteral("1"),
                                    QStringLiteral("EventlistAlarmOn")},
                         WorkedExample::time(), QStringLiteral("PumpControl"), description,
                         QJsonArray{QStringLiteral("Error"), QStringLiteral("Firmware")}, QString(),
                         additionalData, WorkedExample::alarmId()}));
}

void tst_ProviderClients::answersAtOnceWhileTheCentralServiceIsFrozen()
{
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    QVERIFY(m_service.freeze());
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i)
    {
        QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
    }
    // The service answers after the thaw only: whoever had waited for it would be waiting still.
    QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    m_service.thaw();
    QCOMPARE(m_service.received().size(), 20);
}

void tst_ProviderClients::oddValuesInTheArgumentsHarmNobody_data()
{
    QTest::addColumn<QString>("place");
    for (const char* const place :
         {"Arguments", "Arguments/element", "UrlArguments", "UrlArguments/element"})
    {
        QTest::newRow(place) << QString::fromLatin1(place);
    }
}

void tst_ProviderClients::oddValuesInTheArgumentsHarmNobody()
{
    QFETCH(QString, place);
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());

    const QByteArray output = run(QStringLiteral("/usr/bin/python3"),
                                  {QStringLiteral(CLIENT_FOLDER "/client.py"), m_bus.address(),
                                   serviceName(), QStringLiteral("odd"), place});

    const QVector<RecordedMessage> received = m_service.received();
    QStringList logged;
    for (const RecordedMessage& event : received)
    {
        logged << event.arguments[5].toString();
        // Nothing of it counts.
        QCOMPARE(event.arguments[3].toString(),
                 json("{'lang_de':'Übertemperatur an %1, Wert %2',"
                      "'lang_en':'Overtemperature at %1, value %2'}"));
    }
    QVERIFY(logged.size() > 20);
    QCOMPARE(QString::fromUtf8(output).split(QLatin1Char('\n')).mid(0, logged.size()), logged);
    // A translated argument that is an empty entry misses its keys. Nothing else is said, and
    // nothing by Qt.
    const QVector<LoggedMessage> messages = m_warnings.take();
    QCOMPARE(messages.isEmpty(), place.startsWith(QLatin1String("Arguments")));
    for (const LoggedMessage& message : messages)
    {
        QVERIFY2(message.text.startsWith(QLatin1String("Key for description not found: ")),
                 qPrintable(message.text));
    }
}

void tst_ProviderClients::oddValuesUnderTheFixedKeysHarmNobody_data()
{
    QTest::addColumn<QString>("place");
    for (const char* const place :
         {"textSource", "moduleName", "ObjectName", "InstanceName", "url", "unknown"})
    {
        QTest::newRow(place) << QString::fromLatin1(place);
    }
}

void tst_ProviderClients::oddValuesUnderTheFixedKeysHarmNobody()
{
    QFETCH(QString, place);
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());

    const QByteArray output = run(QStringLiteral("/usr/bin/python3"),
                                  {QStringLiteral(CLIENT_FOLDER "/client.py"), m_bus.address(),
                                   serviceName(), QStringLiteral("odd"), place});

    QStringList logged;
    const QVector<RecordedMessage> received = m_service.received();
    for (const RecordedMessage& event : received)
    {
        logged << event.arguments[5].toString();
    }
    QVERIFY(logged.size() > 20);
    QCOMPARE(QString::fromUtf8(output).split(QLatin1Char('\n')).mid(0, logged.size()), logged);
    const QVector<LoggedMessage> messages = m_warnings.take();
    for (const LoggedMessage& message : messages)
    {
        const bool isOurs =
            message.function.contains(QLatin1String("EventsDBusProviderBaseClass::")) ||
            message.text.startsWith(QLatin1String("Can't read configuration description"));
        QVERIFY2(isOurs, qPrintable(message.text));
    }
    if (place == QLatin1String("InstanceName") || place == QLatin1String("unknown"))
    {
        QVERIFY(messages.isEmpty());
    }
}

void tst_ProviderClients::callsOfAnotherShapeAreRefused_data()
{
    QTest::addColumn<QVariantList>("arguments");
    const QStringList list;
    const QVariantMap map;
    const QString text;
    QTest::newRow("nothing") << QVariantList();
    QTest::newRow("one short") << QVariantList{list, text, text, map, list, text};
    QTest::newRow("number as time") << QVariantList{list, 5, text, map, list, text, text};
    QTest::newRow("text as attributes") << QVariantList{text, text, text, map, list, text, text};
    QTest::newRow("list as dictionary") << QVariantList{list, text, text, list, list, text, text};
    QTest::newRow("list as user") << QVariantList{list, text, text, map, list, list, text};
}

void tst_ProviderClients::callsOfAnotherShapeAreRefused()
{
    QFETCH(QVariantList, arguments);
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    const QDBusMessage reply = call(arguments);
    QCOMPARE(reply.type(), QDBusMessage::ErrorMessage);
    QCOMPARE(reply.errorName(), QStringLiteral("org.freedesktop.DBus.Error.UnknownMethod"));
    QCOMPARE(m_service.received().size(), 0);
}

void tst_ProviderClients::theLastOfTwoEqualKeysCounts()
{
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    QVariantMap data = dictionary(WorkedExample::eventId());
    data.insert(QStringLiteral("Arguments"), QVariantList{QVariant::fromValue(TwiceTheArgument())});
    QCOMPARE(callWith(data).type(), QDBusMessage::ReplyMessage);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].arguments[3].toString(),
             json("{'lang_de':'Übertemperatur an %1, Wert last',"
                  "'lang_en':'Overtemperature at %1, value last'}"));
}

void tst_ProviderClients::emptyKeysAndControlCharactersPass()
{
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    const QString odd = QStringLiteral("a\n\x1b[31m\u202e\"\\");
    const QVariantMap value{{QString(), odd},
                            {QStringLiteral("Placeholder"), QStringLiteral("%2")},
                            {QStringLiteral("Argument"), odd}};
    QVariantMap data = dictionary(WorkedExample::eventId());
    data.insert(QString(), QVariantList{1});
    data.insert(odd, odd);
    data.insert(QStringLiteral("Arguments"), QVariantList{value});
    QCOMPARE(callWith(data).type(), QDBusMessage::ReplyMessage);
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    const QJsonObject texts =
        QJsonDocument::fromJson(received[0].arguments[3].toString().toUtf8()).object();
    QCOMPARE(texts.value(QStringLiteral("lang_en")).toString(),
             QStringLiteral("Overtemperature at %1, value ") + odd);
}

void tst_ProviderClients::manyEntriesTakeNoLonger_data()
{
    QTest::addColumn<QString>("list");
    QTest::addColumn<QVariantMap>("entry");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("warningsForEach");
    const QString translated = QStringLiteral("UrlArguments");
    constexpr int most = 100000;
    QTest::newRow("literal") << QStringLiteral("Arguments")
                             << QVariantMap{{QStringLiteral("Argument"), QStringLiteral("x")}}
                             << most << 0;
    QTest::newRow("language file")
        << translated << dictionary(QStringLiteral("PumpControl/PumpName3")) << most << 0;
    QTest::newRow("empty") << translated << QVariantMap() << most << 5;
    // Each one reads its file anew, so that a change counts at once.
    QVariantMap configured = dictionary(QStringLiteral("Limits/High"));
    configured.insert(QStringLiteral("textSource"), 1);
    configured.insert(QStringLiteral("InstanceName"), QStringLiteral("Channel1"));
    QTest::newRow("configuration") << translated << configured << 10000 << 0;
}

void tst_ProviderClients::manyEntriesTakeNoLonger()
{
    QFETCH(QString, list);
    QFETCH(QVariantMap, entry);
    QFETCH(int, count);
    QFETCH(int, warningsForEach);
    const ConfiguredPump configuration;
    QVERIFY(configuration.isWritten());
    const PumpEvents provider(m_texts, configuration.prefix());
    QTRY_VERIFY(isOffered());
    QVariantList entries;
    for (int i = 0; i < count; ++i)
    {
        if (!entry.isEmpty())
        {
            // In no order.
            entry.insert(QStringLiteral("Placeholder"),
                         QStringLiteral("#%1").arg((qint64(i) * 7919) % count));
        }
        entries << entry;
    }
    QVariantMap data = dictionary(WorkedExample::eventId());
    data.insert(list, entries);
    qint64 milliseconds = 0;
    QByteArrayList warnings;
    {
        LogFile log;
        QVERIFY(log.isOpen());
        const qint64 before = processorMilliseconds();
        QCOMPARE(callWith(data).type(), QDBusMessage::ReplyMessage);
        milliseconds = processorMilliseconds() - before;
        warnings = log.lines();
    }
    QTest::setBenchmarkResult(milliseconds, QTest::WalltimeMilliseconds);
    QVERIFY2(milliseconds < PROCESSOR_LIMIT_MS, qPrintable(QString::number(milliseconds)));
    QCOMPARE(warnings.size(), count * warningsForEach);
    for (const QByteArray& warning : qAsConst(warnings))
    {
        QVERIFY2(warning.startsWith("Key for description not found: "), warning.constData());
    }
    const QVector<RecordedMessage> received = m_service.received();
    QCOMPARE(received.size(), 1);
    QCOMPARE(received[0].arguments[3].toString(),
             json("{'lang_de':'Übertemperatur an %1, Wert %2',"
                  "'lang_en':'Overtemperature at %1, value %2'}"));
    QCOMPARE(argumentsOf(received[0]).size(), entry.isEmpty() ? 0 : count);
}

void tst_ProviderClients::offersWhatItsInterfaceFileSays()
{
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    QFile file(QStringLiteral(EVENTS_INTERFACE));
    QVERIFY(file.open(QFile::ReadOnly));
    const QMap<QString, QStringList> documented = interfacesOf(file.readAll());
    QCOMPARE(documented.keys(), QStringList{QStringLiteral("Interface.Events")});

    const QByteArray introspection =
        run(QStringLiteral("gdbus"),
            {QStringLiteral("introspect"), QStringLiteral("--xml"), QStringLiteral("--address"),
             m_bus.address(), QStringLiteral("--dest"), serviceName(),
             QStringLiteral("--object-path"), QStringLiteral("/Events")});

    QMap<QString, QStringList> offered = interfacesOf(introspection);
    QStringList own;
    for (const QString& interface : offered.keys())
    {
        if (!interface.startsWith(QLatin1String("org.freedesktop.DBus.")))
        {
            own << interface;
        }
    }
    QCOMPARE(own, documented.keys());
    QStringList& members = offered[QStringLiteral("Interface.Events")];
    // The signal is the test's own.
    QVERIFY2(members.removeOne(QStringLiteral("signal pumpStarted out s")),
             introspection.constData());
    QCOMPARE(members, documented.value(QStringLiteral("Interface.Events")));
}

void tst_ProviderClients::sendsSignalsUnderItsInterface()
{
    PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    BusMonitor monitor(m_bus);
    QVERIFY2(monitor.start(), monitor.errorText());
    Q_EMIT provider.pumpStarted(QStringLiteral("pump 3"));
    const auto signalOfPump = [&] {
        const QVector<RecordedMessage> messages = monitor.receivedSoFar();
        for (const RecordedMessage& message : messages)
        {
            if (message.member == QLatin1String("pumpStarted"))
            {
                return message.toText();
            }
        }
        return QByteArray();
    };
    QTRY_VERIFY(!signalOfPump().isEmpty());
    QVERIFY2(
        signalOfPump().startsWith("signal /Events Interface.Events.pumpStarted \"s\" [\"pump 3\"]"),
        signalOfPump().constData());
}

void tst_ProviderClients::warnsWhenItsPathIsTaken()
{
    const PumpEvents provider(m_texts);
    QTRY_VERIFY(isOffered());
    m_warnings.expectMatch(QStringLiteral(".*\"/Events\".*path is taken.*"));
    {
        const PumpEvents second(m_texts, QString(), QStringLiteral("Valve"));
        QTRY_COMPARE(m_warnings.messages().size(), 1);
    }
    QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(m_service.received().size(), 1);
}

void tst_ProviderClients::warnsWhenItsNameIsTakenAndTakesItWhenItIsFree()
{
    ForeignService other(m_bus, serviceName());
    QVERIFY2(other.start(), other.errorText());
    m_warnings.expectMatch(
        QStringLiteral(".*%1.*belongs to another process.*").arg(quoted(serviceName())));
    const PumpEvents provider(m_texts);
    QTRY_COMPARE(m_warnings.messages().size(), 1);

    other.kill();

    QTRY_VERIFY(isOffered());
    QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(m_service.received().size(), 1);
}

void tst_ProviderClients::warnsWithoutBusAndIsThereWhenTheBusComes()
{
    QVERIFY(takeBusAway());
    m_warnings.expectMatch(QStringLiteral(".*\"/Events\".*no connection to the bus"));
    const PumpEvents provider(m_texts);
    QTRY_COMPARE(m_warnings.messages().size(), 1);
    QVERIFY(bringBusBack());
    QTRY_VERIFY(isOffered());
    QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
    QCOMPARE(m_service.received().size(), 1);
}

void tst_ProviderClients::isThereAgainAfterEachRestartOfTheBus()
{
    const PumpEvents provider(m_texts);
    for (int restarts = 0; restarts < 3; ++restarts)
    {
        QTRY_VERIFY(isOffered());
        QVERIFY2(m_service.reset(), m_service.errorText());
        QVERIFY(waitUntilValid(EventlistHandlerDBusConnectorWrite(false)));
        QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
        QCOMPARE(m_service.received().size(), 1);
        QVERIFY(takeBusAway());
        QVERIFY(bringBusBack());
    }
}

void tst_ProviderClients::isGoneWithItsObject()
{
    {
        const PumpEvents provider(m_texts);
        QTRY_VERIFY(isOffered());
    }
    QTRY_VERIFY(!isOffered());
    const PumpEvents another(m_texts);
    QTRY_VERIFY(isOffered());
    QCOMPARE(callWith(dictionary(WorkedExample::eventId())).type(), QDBusMessage::ReplyMessage);
}

QTEST_GUILESS_MAIN(tst_ProviderClients)
#include "tst_ProviderClients.moc"
