// A module on the file road, which logs what it is told on the standard input, one line each:
//
//   alarm on|off <number>    its alarm, in the spool file "alarm"
//   event <number>           its event, in a numbered spool file
//   storm <number>           both in turn, with this number and those that follow, until it is killed
//
// The number fills the place "%1" of the texts, which are the arguments: file_road_module <German>
// <English>. It says "done" behind each.

#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/EventHandler.h"
#include "TestSupport/FakeTextManager.h"

#include <iostream>
#include <string>

namespace
{
QList<EventlistHandlerStructs::stDescriptionArgument> places(const std::string& number)
{
    return {{QStringLiteral("%1"), QString::fromStdString(number)}};
}
} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3)
    {
        return 2;
    }
    const QString url = QStringLiteral("PumpControl/State");
    FakeTextManager texts;
    texts.setTexts(url, QString::fromUtf8(arguments[1]), QString::fromUtf8(arguments[2]));
    AlarmHandler alarm(QStringLiteral("PumpControl"), texts, url, QStringList());
    alarm.setEventToFile(QStringLiteral("alarm"));
    EventHandler event(QStringLiteral("PumpControl"), texts, url, QStringList());
    event.setEventToFile(QString());

    std::string word;
    while (std::cin >> word)
    {
        const bool isAlarm = word == "alarm";
        if (isAlarm)
        {
            std::cin >> word;
        }
        std::string number;
        std::cin >> number;
        for (int next = std::stoi(number); word == "storm"; ++next)
        {
            event.logEvent(places(std::to_string(next)));
            alarm.changeState(next % 2 == 0, places(std::to_string(next)));
        }
        if (isAlarm)
        {
            alarm.changeState(word == "on", places(number));
        }
        else
        {
            event.logEvent(places(number));
        }
        std::cout << "done" << std::endl;
    }
    return 0;
}
