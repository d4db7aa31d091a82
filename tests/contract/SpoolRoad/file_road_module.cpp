// A module on the file road, which logs what it is told on the standard input, one line each:
//
//   alarm on|off <number>    its alarm, in the spool file "alarm"
//   event <number>           its event, in a numbered spool file
//
// The number fills the place "%1" of the texts, which are the arguments: file_road_module <German>
// <English>. It says "done" behind each.

#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/EventHandler.h"
#include "TestSupport/FakeTextManager.h"

#include <iostream>
#include <string>

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
        const QList<EventlistHandlerStructs::stDescriptionArgument> places{
            {QStringLiteral("%1"), QString::fromStdString(number)}};
        if (isAlarm)
        {
            alarm.changeState(word == "on", places);
        }
        else
        {
            event.logEvent(places);
        }
        std::cout << "done" << std::endl;
    }
    return 0;
}
