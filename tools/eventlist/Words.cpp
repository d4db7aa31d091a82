#include "eventlist/Words.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QStringList>

using Names = EventlistHandlerDefinitions;

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;

namespace
{
const QStringList& typeWords()
{
    static const QStringList words = {QStringLiteral("alarm"), QStringLiteral("audit"),
                                      QStringLiteral("fault"), QStringLiteral("event")};
    return words;
}
} // namespace

QString Words::type(int type)
{
    return typeWords().value(type, QString::number(type));
}

QString Words::state(int state)
{
    switch (state)
    {
    case State::active:
        return QStringLiteral("ON");
    case State::inactive:
        return QStringLiteral("off");
    default:
        return QString();
    }
}

bool Words::readType(const QString& word, EventType& type)
{
    const QStringList& names = EventlistHandlerDefinitions::getEventTypes();
    for (int i = 0; i < names.size() && !word.isEmpty(); ++i)
    {
        if (names.at(i).startsWith(word, Qt::CaseInsensitive) ||
            typeWords().at(i).startsWith(word, Qt::CaseInsensitive))
        {
            // "a" could be either of two.
            if (word.size() == 1 && word.compare(QLatin1String("a"), Qt::CaseInsensitive) == 0)
            {
                return false;
            }
            type = static_cast<EventType>(i);
            return true;
        }
    }
    return false;
}

bool Words::readState(const QString& word, State& state)
{
    static const QStringList words = {QStringLiteral("none"), QStringLiteral("on"),
                                      QStringLiteral("off")};
    const int index =
        qMax(words.indexOf(word), EventlistHandlerDefinitions::getStates().indexOf(word));
    if (index < 0)
    {
        return false;
    }
    state = static_cast<State>(index);
    return true;
}

QString Words::icon(EventType type, State state)
{
    switch (type)
    {
    case EventType::alarm:
        return state == State::active     ? Names::getIconNameAlarmOn()
               : state == State::inactive ? Names::getIconNameAlarmOff()
                                          : QString();
    case EventType::fault:
        return state == State::active     ? Names::getIconNameFaultOn()
               : state == State::inactive ? Names::getIconNameFaultOff()
                                          : QString();
    case EventType::otherEvents:
        return state == State::active     ? Names::getIconNameEventOn()
               : state == State::inactive ? Names::getIconNameEventOff()
                                          : Names::getIconNameEvent();
    case EventType::auditTrail:
        return state == State::neutral ? Names::getIconNameAuditTrail() : QString();
    }
    return QString();
}
