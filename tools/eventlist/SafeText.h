#pragma once

#include <QString>

/// Texts of other programs, made fit for a terminal. What is in the list came from anybody: a
/// control sequence in it must not move the cursor of the one who reads it, and a bidirectional
/// mark must not turn a line around.
class SafeText
{
public:
    /// The text with control characters, format characters (bidirectional marks among them), line
    /// separators and lone surrogates written as "\n", "\t" or "\u202e".
    static QString escaped(const QString& text);

    /// JSON text whose dangerous characters are escapes. They can only stand inside of its strings.
    static QString escapedJson(const QString& json);

    /// Cells that an escaped text takes on a terminal.
    static int width(const QString& text);

    /// The text in at most so many cells, the last of them "…" when something was cut off.
    static QString cut(const QString& text, int cells);
};
