#include "TestSupport/ForeignService.h"

#include "TestSupport/PrivateBus.h"

#include "Platform/DBusConnection.h"
#include "Platform/PropertyManagerConst.h"

#include <QDBusMessage>
#include <QDebug>
#include <QFile>
#include <QJsonDocument>

namespace
{
// The interpreter of the distribution: another python of $PATH has no dbus module.
const QString& interpreter()
{
    static const QString path = QStringLiteral("/usr/bin/python3");
    return path;
}

RecordedMessage messageFrom(const QJsonObject& object)
{
    RecordedMessage message;
    message.kind = object.value(QLatin1String("kind")).toString();
    message.sender = object.value(QLatin1String("sender")).toString();
    message.destination = object.value(QLatin1String("destination")).toString();
    message.path = object.value(QLatin1String("path")).toString();
    message.interface = object.value(QLatin1String("interface")).toString();
    message.member = object.value(QLatin1String("member")).toString();
    message.signature = object.value(QLatin1String("signature")).toString();
    message.arguments = object.value(QLatin1String("arguments")).toArray();
    message.isReplyExpected = object.value(QLatin1String("isReplyExpected")).toBool();
    message.isAutoStartAllowed = object.value(QLatin1String("isAutoStartAllowed")).toBool();
    message.serial = quint32(object.value(QLatin1String("serial")).toDouble());
    return message;
}

QJsonObject commandNamed(const char* name)
{
    return {{QStringLiteral("command"), QLatin1String(name)}};
}

bool isOk(const QJsonObject& answer)
{
    return answer.value(QLatin1String("ok")).toBool();
}
} // namespace

// The resource is part of a static library, so nothing else asks for it. The macro must stand
// outside of any namespace.
static void initialiseResources()
{
    Q_INIT_RESOURCE(TestSupport);
}

QByteArray RecordedMessage::toText() const
{
    return (kind + QLatin1Char(' ') + path + QLatin1Char(' ') + interface + QLatin1Char('.') +
            member + QLatin1String(" \"") + signature + QLatin1String("\" "))
               .toUtf8() +
           QJsonDocument(arguments).toJson(QJsonDocument::Compact) +
           (isReplyExpected ? "" : " no reply expected");
}

ForeignService::ForeignService(const PrivateBus& bus, const QString& busName)
    : ForeignService(bus, busName, false)
{
}

ForeignService::ForeignService(const PrivateBus& bus, const QString& busName, bool isMonitor)
    : m_bus(bus), m_busName(busName), m_isMonitor(isMonitor)
{
    initialiseResources();
}

ForeignService::~ForeignService() = default;

BusMonitor::BusMonitor(const PrivateBus& bus) : ForeignService(bus, QString(), true) {}

QString ForeignService::centralServiceName()
{
    return PropertyManagerConst::getDBusPrefix() + QStringLiteral(".EventlistHandler");
}

bool ForeignService::start()
{
    if (isRunning())
    {
        return true;
    }
    const QString script = m_folder.filePath(QStringLiteral("recording_service.py"));
    if (!QFile::exists(script) &&
        !QFile::copy(QStringLiteral(":/EventlistHandlerTestSupport/recording_service.py"), script))
    {
        m_errorText = "The script of the service cannot be written: " + script.toUtf8();
        return false;
    }
    QStringList arguments{script, QStringLiteral("--address"), m_bus.address()};
    if (m_isMonitor)
    {
        arguments << QStringLiteral("--monitor");
    }
    else
    {
        arguments << QStringLiteral("--name") << m_busName;
    }
    m_records.clear();
    m_process = std::make_unique<ChildProcess>();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    if (!m_process->startAndWait(interpreter(), arguments))
    {
        m_errorText = "The service does not start: " + m_process->errorString().toUtf8();
        return false;
    }
    const QJsonObject ready = readAnswer();
    m_uniqueName = ready.value(QLatin1String("uniqueName")).toString();
    if (!isOk(ready))
    {
        m_process->killHard();
    }
    return isOk(ready);
}

QJsonObject ForeignService::readAnswer()
{
    const QByteArray line = m_process->readOutputLine();
    QJsonObject answer = QJsonDocument::fromJson(line).object();
    if (!isOk(answer))
    {
        m_errorText = answer.value(QLatin1String("error")).toString().toUtf8();
        if (answer.isEmpty())
        {
            m_errorText = "The service does not answer";
        }
    }
    return answer;
}

QJsonObject ForeignService::execute(const QJsonObject& command)
{
    if (!isRunning())
    {
        m_errorText = "The service does not run";
        return {};
    }
    m_process->write(QJsonDocument(command).toJson(QJsonDocument::Compact) + '\n');
    return readAnswer();
}

bool ForeignService::stop()
{
    if (isRunning() && isOk(execute(commandNamed("quit"))))
    {
        return m_process->waitForFinished(int(defaultDeadline.count()));
    }
    return !isRunning();
}

void ForeignService::kill()
{
    if (m_process)
    {
        m_process->killHard();
    }
}

bool ForeignService::restart()
{
    kill();
    return start();
}

bool ForeignService::freeze()
{
    return isRunning() && m_process->freeze();
}

void ForeignService::thaw()
{
    if (m_process)
    {
        m_process->thaw();
    }
}

bool ForeignService::reconnect()
{
    const QJsonObject answer = execute(commandNamed("reconnect"));
    m_uniqueName = answer.value(QLatin1String("uniqueName")).toString();
    return isOk(answer);
}

bool ForeignService::own(const QString& busName)
{
    QJsonObject command = commandNamed("own");
    command.insert(QStringLiteral("name"), busName);
    return isOk(execute(command));
}

bool ForeignService::disown(const QString& busName)
{
    QJsonObject command = commandNamed("disown");
    command.insert(QStringLiteral("name"), busName);
    return isOk(execute(command));
}

bool ForeignService::isRunning() const
{
    return m_process && m_process->isRunning();
}

qint64 ForeignService::processId() const
{
    return m_process ? m_process->processId() : 0;
}

QString ForeignService::busName() const
{
    return m_busName;
}

QString ForeignService::uniqueName() const
{
    return m_uniqueName;
}

const char* ForeignService::errorText() const
{
    return m_errorText.constData();
}

bool ForeignService::synchronise(const QDBusConnection& sender)
{
    // Answered in its turn among all messages of this connection, and not recorded. Not a ping,
    // which the library of a BusMonitor would answer too, and be disconnected for it.
    const QDBusMessage ping = QDBusMessage::createMethodCall(
        m_uniqueName, QStringLiteral("/"), QStringLiteral("org.eventlist.RecordingService"),
        QStringLiteral("Synchronise"));
    const QDBusMessage answer = sender.call(ping, QDBus::Block, int(defaultDeadline.count()));
    if (answer.type() != QDBusMessage::ReplyMessage)
    {
        m_errorText = "The service does not answer over the sender's connection: " +
                      answer.errorMessage().toUtf8();
        return false;
    }
    return true;
}

QVector<RecordedMessage> ForeignService::received()
{
    return received(DBusConnection::getQDBusConnection());
}

QVector<RecordedMessage> ForeignService::received(const QDBusConnection& sender)
{
    if (!synchronise(sender))
    {
        qWarning() << "ForeignService:" << m_errorText;
        return {};
    }
    return receivedSoFar();
}

QVector<RecordedMessage> ForeignService::receivedSoFar()
{
    // In portions: one line of a hundred thousand records is slow to find the end of.
    constexpr int portion = 2000;
    QJsonArray records;
    do
    {
        QJsonObject command = commandNamed("received");
        command.insert(QStringLiteral("from"), m_records.size());
        command.insert(QStringLiteral("count"), portion);
        const QJsonObject answer = execute(command);
        if (!isOk(answer))
        {
            qWarning() << "ForeignService:" << m_errorText;
            return {};
        }
        records = answer.value(QLatin1String("received")).toArray();
        for (const QJsonValue& record : qAsConst(records))
        {
            m_records.append(messageFrom(record.toObject()));
        }
    }
    while (records.size() == portion);
    return m_records;
}

int ForeignService::countSoFar()
{
    return execute(commandNamed("count")).value(QLatin1String("count")).toInt(-1);
}

void ForeignService::clear()
{
    m_records.clear();
    if (!isOk(execute(commandNamed("clear"))))
    {
        qWarning() << "ForeignService:" << m_errorText;
    }
}

bool ForeignService::reset()
{
    m_records.clear();
    return isOk(execute(commandNamed("reset")));
}

bool ForeignService::setRule(const QString& member, const QJsonObject& rule)
{
    QJsonObject command = commandNamed("answer");
    command.insert(QStringLiteral("member"), member);
    command.insert(QStringLiteral("rule"), rule);
    return isOk(execute(command));
}

bool ForeignService::answer(const QString& member, const QString& signature,
                            const QJsonArray& values)
{
    return setRule(member, {{QStringLiteral("answer"), QStringLiteral("reply")},
                            {QStringLiteral("signature"), signature},
                            {QStringLiteral("arguments"), values}});
}

bool ForeignService::answerVariant(const QString& member, const QString& signature,
                                   const QJsonValue& value)
{
    const QJsonObject variant{{QStringLiteral("variant"), signature},
                              {QStringLiteral("value"), value}};
    return answer(member, QStringLiteral("v"), QJsonArray{variant});
}

bool ForeignService::answerError(const QString& member, const QString& errorName,
                                 const QString& text)
{
    return setRule(member, {{QStringLiteral("answer"), QStringLiteral("error")},
                            {QStringLiteral("name"), errorName},
                            {QStringLiteral("text"), text}});
}

bool ForeignService::answerNothing(const QString& member)
{
    return setRule(member, {{QStringLiteral("answer"), QStringLiteral("nothing")}});
}

bool ForeignService::hold(const QString& member)
{
    return setRule(member, {{QStringLiteral("answer"), QStringLiteral("hold")}});
}

int ForeignService::release(const QString& signature, const QJsonArray& values)
{
    QJsonObject command = commandNamed("release");
    command.insert(QStringLiteral("rule"),
                   QJsonObject{{QStringLiteral("answer"), QStringLiteral("reply")},
                               {QStringLiteral("signature"), signature},
                               {QStringLiteral("arguments"), values}});
    return execute(command).value(QLatin1String("count")).toInt(-1);
}

bool ForeignService::emitSignal(const QString& path, const QString& interface,
                                const QString& member, const QString& signature,
                                const QJsonArray& values, int times)
{
    // What this process has subscribed to stands at the bus when the answer is here: subscribing is
    // asynchronous, and the signal comes over another connection.
    if (QDBusConnection connection = DBusConnection::getQDBusConnection(); connection.isConnected())
    {
        synchronise(connection);
    }
    QJsonObject command = commandNamed("emit");
    command.insert(QStringLiteral("path"), path);
    command.insert(QStringLiteral("interface"), interface);
    command.insert(QStringLiteral("member"), member);
    command.insert(QStringLiteral("signature"), signature);
    command.insert(QStringLiteral("arguments"), values);
    command.insert(QStringLiteral("times"), times);
    return isOk(execute(command));
}
