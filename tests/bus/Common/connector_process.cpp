// A module without QCoreApplication and without any event loop: its connector is made before main()
// begins and ends after main(). It does what it is told on the standard input, one word a line.
// "constructed" asks how many milliseconds the connector took to be made.

#include "Common/DBusTools/DBusConnectorBase.h"

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
class Connector : public DBusConnectorBase
{
public:
    Connector()
        : DBusConnectorBase(QStringLiteral("EventlistHandler"), QStringLiteral("Pump"),
                            QStringLiteral("Interface.Pump"), nullptr, defaultMode)
    {
    }

    bool send(const QString& text) const
    {
        return !syncCallNoBlock(QStringLiteral("log"), text).isError();
    }

    QString ask() const
    {
        const DBusPendingReply::SharedPointer reply = asyncCallHelper(QStringLiteral("state"));
        if (reply.isNull())
        {
            return QStringLiteral("not placed");
        }
        reply->waitForFinished();
        return reply->isError() ? reply->error().message() : reply->values().value(0).toString();
    }
};

using Clock = std::chrono::steady_clock;

const Clock::time_point beforeConnector = Clock::now();
Connector connector;
const Clock::time_point behindConnector = Clock::now();

/// What a child sees that goes on without exec().
bool isInvalidInForkedChild()
{
    const pid_t child = fork();
    if (child == 0)
    {
        const Connector late;
        _exit(!connector.isDBusInterfaceValid() && !late.isDBusInterfaceValid() ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
} // namespace

int main()
{
    std::string command;
    while (std::getline(std::cin, command))
    {
        if (command == "valid")
        {
            std::cout << connector.isDBusInterfaceValid() << std::endl;
        }
        else if (command == "constructed")
        {
            std::cout << std::chrono::duration_cast<std::chrono::milliseconds>(behindConnector -
                                                                               beforeConnector)
                             .count()
                      << std::endl;
        }
        else if (command == "send")
        {
            std::cout << connector.send(QStringLiteral("hello")) << std::endl;
        }
        else if (command == "ask")
        {
            std::cout << connector.ask().toStdString() << std::endl;
        }
        else if (command == "fork")
        {
            std::cout << isInvalidInForkedChild() << std::endl;
        }
        else if (command == "exit")
        {
            std::exit(3);
        }
        else if (command == "return")
        {
            return 4;
        }
    }
    return 5;
}
