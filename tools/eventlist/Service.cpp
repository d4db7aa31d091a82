#include "eventlist/Service.h"

#include "eventlist/ExitCode.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Progress.h"

#include "Common/DBusTools/DBusConnectorBase.h"

#include "Platform/DBusConnection.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

bool Service::isThere(const DBusConnectorBase& connector)
{
    if (connector.isDBusInterfaceValid())
    {
        return true;
    }
    Output::error(absence(connector));
    return false;
}

QString Service::absence(const DBusConnectorBase& connector)
{
    if (!DBusConnection::getQDBusConnection().isConnected())
    {
        const QString address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
        return QStringLiteral("cannot reach the %1; start it, or set DBUS_SYSTEM_BUS_ADDRESS to "
                              "the address of the right one")
            .arg(address.isEmpty() ? QStringLiteral("system bus")
                                   : QStringLiteral("bus at '%1'").arg(address));
    }
    return QStringLiteral("the central service does not run: nobody owns the bus name %1; start "
                          "eventlistd")
        .arg(connector.getServiceName());
}

namespace
{
// The service limits what one client may ask for in a time.
constexpr std::chrono::seconds longestPause(60);
constexpr std::chrono::milliseconds betweenTries(200);
constexpr std::chrono::milliseconds betweenTicks(200);

QString failure(const DBusPendingReply& reply)
{
    return reply.isError() ? QStringLiteral("the service did not answer the query: %1 (%2)")
                                 .arg(reply.error().message(), reply.error().name())
                           : QString();
}

QString wrongShape()
{
    return QStringLiteral("the answer of the service cannot be read; is it another version?");
}
} // namespace

void Service::wait(DBusPendingReply& reply)
{
    Progress progress(QStringLiteral("waiting for the central service"));
    QEventLoop loop;
    QTimer ticker;
    QObject::connect(&reply, &DBusPendingReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(&ticker, &QTimer::timeout, &loop, [&progress] { progress.tell(); });
    ticker.start(betweenTicks);
    if (!reply.isFinished())
    {
        loop.exec();
    }
}

QString Service::readList(const DBusPendingReply& reply, ListReply& list)
{
    const QString problem = failure(reply);
    return problem.isEmpty() && !list.read(reply.values()) ? wrongShape() : problem;
}

int Service::waitForList(const DBusConnectorBase& connector,
                         const DBusPendingReply::SharedPointer& reply, ListReply& list)
{
    if (reply.isNull())
    {
        Output::error(absence(connector));
        return ExitCode::notReachable;
    }
    wait(*reply);
    const QString problem = readList(*reply, list);
    if (!problem.isEmpty())
    {
        Output::error(problem);
        return ExitCode::failed;
    }
    return ExitCode::success;
}

int Service::askForList(const DBusConnectorBase& connector,
                        const std::function<DBusPendingReply::SharedPointer()>& ask,
                        ListReply& list)
{
    const QDeadlineTimer patience(longestPause);
    for (;;)
    {
        const DBusPendingReply::SharedPointer reply = ask();
        if (!reply.isNull())
        {
            wait(*reply);
        }
        if (reply.isNull() || !reply->isError() ||
            reply->error().type() != QDBusError::LimitsExceeded || patience.hasExpired())
        {
            return waitForList(connector, reply, list);
        }
        QEventLoop pause;
        QTimer::singleShot(betweenTries, &pause, &QEventLoop::quit);
        pause.exec();
    }
}

int Service::waitForDictionary(const DBusConnectorBase& connector,
                               const DBusPendingReply::SharedPointer& reply,
                               QVariantMap& dictionary)
{
    if (reply.isNull())
    {
        Output::error(absence(connector));
        return ExitCode::notReachable;
    }
    wait(*reply);
    QString problem = failure(*reply);
    if (problem.isEmpty() && !ListReply::readDictionary(reply->values().value(0), dictionary))
    {
        problem = wrongShape();
    }
    if (!problem.isEmpty())
    {
        Output::error(problem);
        return ExitCode::failed;
    }
    return ExitCode::success;
}

int Service::flush(const DBusConnectorBase& connector)
{
    // A connection keeps the order of its messages: the answer comes after all that was sent.
    DBusPendingReply answer(DBusConnection::getQDBusConnection().asyncCall(
        QDBusMessage::createMethodCall(connector.getServiceName(), QStringLiteral("/"),
                                       QStringLiteral("org.freedesktop.DBus.Peer"),
                                       QStringLiteral("Ping"))));
    wait(answer);
    if (!answer.isError())
    {
        return ExitCode::success;
    }
    Output::error(QStringLiteral("the service went away before it took this over (%1); look at the "
                                 "list, and repeat it")
                      .arg(answer.error().message()));
    return ExitCode::notReachable;
}
