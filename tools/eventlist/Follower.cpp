#include "eventlist/Follower.h"

#include "eventlist/ExitCode.h"
#include "eventlist/ListReply.h"
#include "eventlist/Output.h"
#include "eventlist/Service.h"

#include "Common/DBusTools/DBusConnectorBase.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <chrono>

#include <unistd.h>

namespace
{
// Costs nothing: the presence is known in the process. It only decides how soon a return is seen.
constexpr std::chrono::milliseconds presenceInterval(200);
} // namespace

Follower::Follower(const DBusConnectorBase& connector) : m_connector(connector)
{
    connect(&m_presence, &QTimer::timeout, this, &Follower::watchPresence);
    if (Output::isPipe())
    {
        // Becomes readable only by the end of its reader.
        m_reader = std::make_unique<QSocketNotifier>(STDOUT_FILENO, QSocketNotifier::Read);
        connect(m_reader.get(), &QSocketNotifier::activated, [] { Output::endQuietly(); });
    }
}

Follower::~Follower() = default;

int Follower::run()
{
    m_presence.start(presenceInterval);
    watchPresence();
    return QCoreApplication::exec();
}

void Follower::watchPresence()
{
    const bool isThere = m_connector.isDBusInterfaceValid();
    if (isThere == m_isThere && (isThere || m_wasTold))
    {
        if (isThere && m_hasFailed)
        {
            look();
        }
        return;
    }
    if (!isThere)
    {
        Output::error(Service::absence(m_connector) + QStringLiteral("; waiting for it"));
    }
    else if (m_wasTold)
    {
        Output::error(QStringLiteral("the service is there again"));
    }
    m_isThere = isThere;
    m_wasTold = !isThere;
    if (isThere)
    {
        m_reply.reset();
        serviceIsBack();
        look();
    }
}

void Follower::look()
{
    m_isStale = true;
    if (!m_reply.isNull())
    {
        return;
    }
    m_isStale = false;
    m_reply = ask();
    if (!m_reply.isNull())
    {
        connect(m_reply.data(), &DBusPendingReply::finished, this, &Follower::finish);
    }
}

void Follower::finish()
{
    const DBusPendingReply::SharedPointer reply = m_reply;
    m_reply.reset();
    if (reply.isNull())
    {
        return;
    }
    ListReply list;
    const QString problem = Service::readList(*reply, list);
    if (!problem.isEmpty())
    {
        // What a restart has cut off is asked for anew when the service is back.
        if (!m_hasFailed && m_connector.isDBusInterfaceValid())
        {
            Output::error(problem + QStringLiteral("; trying again"));
        }
        m_hasFailed = true;
        return;
    }
    m_hasFailed = false;
    if (take(list) || m_isStale)
    {
        look();
    }
}
