#include "TestSupport/PrivateBus.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QUuid>

namespace
{
const char addressVariable[] = "DBUS_SYSTEM_BUS_ADDRESS";

// A socket's path has at most 107 bytes, whatever the folder for temporary files is called.
QString folderTemplate()
{
    const QString name = QStringLiteral("/bus-XXXXXX");
    const QString folder = QDir::tempPath();
    return (QFile::encodeName(folder).size() < 80 ? folder : QStringLiteral("/tmp")) + name;
}

QString limitElements()
{
    const QStringList names = {QStringLiteral("max_incoming_bytes"),
                               QStringLiteral("max_outgoing_bytes"),
                               QStringLiteral("max_message_size"),
                               QStringLiteral("max_completed_connections"),
                               QStringLiteral("max_incomplete_connections"),
                               QStringLiteral("max_connections_per_user"),
                               QStringLiteral("max_pending_service_starts"),
                               QStringLiteral("max_names_per_connection"),
                               QStringLiteral("max_match_rules_per_connection"),
                               QStringLiteral("max_replies_per_connection")};
    QString elements;
    for (const QString& name : names)
    {
        elements += QStringLiteral("  <limit name=\"%1\">1000000000</limit>\n").arg(name);
    }
    return elements;
}

QString allowEverything()
{
    return QStringLiteral("  <policy context=\"default\">\n"
                          "    <allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
                          "    <allow eavesdrop=\"true\"/>\n"
                          "    <allow own=\"*\"/>\n"
                          "  </policy>\n");
}

// What a device allows before any service brings its own rules: the bus itself, answers and signals.
// Without it a client would wait in vain for the answer to its very first call.
QString allowWhatASystemBusAllows()
{
    return QStringLiteral("  <policy context=\"default\">\n"
                          "    <allow user=\"*\"/>\n"
                          "    <deny own=\"*\"/>\n"
                          "    <deny send_type=\"method_call\"/>\n"
                          "    <allow send_type=\"signal\"/>\n"
                          "    <allow send_requested_reply=\"true\" send_type=\"method_return\"/>\n"
                          "    <allow send_requested_reply=\"true\" send_type=\"error\"/>\n"
                          "    <allow receive_type=\"method_call\"/>\n"
                          "    <allow receive_type=\"method_return\"/>\n"
                          "    <allow receive_type=\"error\"/>\n"
                          "    <allow receive_type=\"signal\"/>\n"
                          "    <allow send_destination=\"org.freedesktop.DBus\"/>\n"
                          "  </policy>\n");
}
} // namespace

PrivateBus::PrivateBus() : PrivateBus(Options()) {}

PrivateBus::PrivateBus(const Options& options)
    : m_options(options),
      m_folder(folderTemplate()),
      m_addressBefore(qgetenv(addressVariable)),
      m_wasAddressSet(qEnvironmentVariableIsSet(addressVariable))
{
    // A client of another user must be able to reach the socket.
    QFile::setPermissions(m_folder.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                               QFile::ReadGroup | QFile::ExeGroup |
                                               QFile::ReadOther | QFile::ExeOther);
    qputenv(addressVariable, address().toUtf8());
}

PrivateBus::~PrivateBus()
{
    kill();
    if (m_wasAddressSet)
    {
        qputenv(addressVariable, m_addressBefore);
    }
    else
    {
        qunsetenv(addressVariable);
    }
}

QString PrivateBus::address() const
{
    return QStringLiteral("unix:path=") + m_folder.filePath(QStringLiteral("socket"));
}

QString PrivateBus::folder() const
{
    return m_folder.path();
}

bool PrivateBus::writeConfiguration()
{
    QString text = QStringLiteral(
        "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\"\n"
        " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
        "<busconfig>\n  <type>system</type>\n  <auth>EXTERNAL</auth>\n");
    text += QStringLiteral("  <listen>%1</listen>\n").arg(address().toHtmlEscaped());
    if (!m_options.activationFolder.isEmpty())
    {
        text += QStringLiteral("  <servicedir>%1</servicedir>\n")
                    .arg(m_options.activationFolder.toHtmlEscaped());
    }
    text += m_options.policy.isEmpty() ? allowEverything()
                                       : QString(allowWhatASystemBusAllows() + m_options.policy);
    if (m_options.limits == Limits::none)
    {
        text += limitElements();
    }
    text += QStringLiteral("</busconfig>\n");

    QFile file(m_folder.filePath(QStringLiteral("bus.conf")));
    const QByteArray bytes = text.toUtf8();
    return file.open(QFile::WriteOnly) && file.write(bytes) == bytes.size() && file.flush();
}

bool PrivateBus::start()
{
    if (m_daemon.isRunning())
    {
        return true;
    }
    const QString program = QStandardPaths::findExecutable(QStringLiteral("dbus-daemon"));
    if (program.isEmpty())
    {
        m_errorText = "There is no dbus-daemon on this machine";
        return false;
    }
    if (!m_folder.isValid() || !writeConfiguration())
    {
        m_errorText = "The folder of the bus cannot be written: " + m_folder.path().toUtf8();
        return false;
    }
    m_daemon.setStandardErrorFile(m_folder.filePath(QStringLiteral("dbus-daemon.log")));
    const QString configuration = m_folder.filePath(QStringLiteral("bus.conf"));
    if (!m_daemon.startAndWait(program,
                               {QStringLiteral("--config-file=") + configuration,
                                QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                                QStringLiteral("--nosyslog"), QStringLiteral("--print-address")}))
    {
        m_errorText = "dbus-daemon does not start: " + m_daemon.errorString().toUtf8();
        return false;
    }
    return waitUntilReady();
}

bool PrivateBus::waitUntilReady()
{
    // The daemon prints its address when it listens.
    if (m_daemon.readOutputLine().isNull())
    {
        QFile log(m_folder.filePath(QStringLiteral("dbus-daemon.log")));
        const bool isReadable = log.open(QFile::ReadOnly);
        m_errorText = "dbus-daemon ends at once: " + (isReadable ? log.readAll() : QByteArray());
        m_daemon.killHard();
        return false;
    }
    const QString name = QStringLiteral("ready-") + QUuid::createUuid().toString();
    const QDBusConnection probe = connect(name);
    const bool isReady = probe.isConnected();
    if (!isReady)
    {
        m_errorText = "dbus-daemon takes no connection: " + probe.lastError().message().toUtf8();
    }
    QDBusConnection::disconnectFromBus(name);
    return isReady;
}

void PrivateBus::stop()
{
    m_daemon.stop();
}

void PrivateBus::kill()
{
    m_daemon.killHard();
}

bool PrivateBus::restart()
{
    kill();
    return start();
}

bool PrivateBus::freeze()
{
    return m_daemon.freeze();
}

void PrivateBus::thaw()
{
    m_daemon.thaw();
}

bool PrivateBus::isRunning() const
{
    return m_daemon.isRunning();
}

qint64 PrivateBus::processId() const
{
    return m_daemon.processId();
}

const char* PrivateBus::errorText() const
{
    return m_errorText.constData();
}

QDBusConnection PrivateBus::connect(const QString& connectionName) const
{
    return QDBusConnection::connectToBus(address(), connectionName);
}

bool PrivateBus::hasOwner(const QString& busName) const
{
    const QString name = QStringLiteral("owner-") + QUuid::createUuid().toString();
    bool isOwned = false;
    {
        const QDBusConnection connection = connect(name);
        isOwned = connection.isConnected() &&
                  connection.interface()->isServiceRegistered(busName).value();
    }
    QDBusConnection::disconnectFromBus(name);
    return isOwned;
}
