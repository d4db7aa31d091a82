#pragma once

#include <QByteArray>
#include <QString>

/// What the central service refuses in a JSON text, and a parser lets pass.
class JsonCheck
{
public:
    /// A member that stands twice in one object, or nesting deeper than 64.
    /// \param json  a text that a parser takes, or not: that is not looked at here
    /// \returns the fault, empty when there is none
    static QString findFault(const QByteArray& json);
};
