#pragma once

#include "Definitions/EventlistHandlerEnums.h"

#include <QString>

/// The words of this tool for types and states, and back.
class Words
{
public:
    /// "alarm", "audit", "fault", "event"; the number itself when it is none of them.
    static QString type(int type);

    /// "ON", "off", or nothing for an event that neither begins nor ends. Capitals, so that what is
    /// on stands out without colour.
    static QString state(int state);

    /// Takes the words of type(), the names of the types in the event list, and their beginnings.
    /// Failure: false.
    static bool readType(const QString& word, EventlistHandlerEnums::EventType& type);

    /// Takes "on", "active", "off", "inactive", "none" and "neutral".
    /// Failure: false.
    static bool readState(const QString& word, EventlistHandlerEnums::State& state);

    /// The icon that a producer of this type sets for this state; may be empty.
    static QString icon(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state);
};
