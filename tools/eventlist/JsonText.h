#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

/// JSON as this tool writes it: for programs, and yet harmless on a terminal.
class JsonText
{
public:
    /// On one line, without its end.
    static QString of(const QJsonObject& object);

    /// An array with an element a line, so that a reader without a parser finds its way too.
    static QString of(const QJsonArray& objects);
};
