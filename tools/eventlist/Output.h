#pragma once

#include "eventlist/ExitCode.h"

#include <QByteArray>
#include <QString>

/// The standard output and the standard error of the tool.
///
/// A reader that has seen enough and closes the pipe is no failure: the tool then ends at once, in
/// silence, with the exit code that it would have had anyhow. An output that cannot be written for another reason ends it with a
/// message.
class Output
{
public:
    /// Lets write() hear of a closed pipe instead of being killed by it. Called once, at start.
    static void prepare();

    /// \param code  with which the tool would end; it does so here when nobody reads any more
    static void write(const QString& text, ExitCode code = ExitCode::success);

    /// One line on the standard error, behind the name of the tool. Foreign texts in it are shown
    /// escaped.
    static void error(const QString& text);

    /// One line on the standard error that the next one, or any other output, replaces. Only where
    /// a human reads it.
    static void status(const QString& text);
    static void clearStatus();

    /// True when a human reads the standard output.
    static bool isTerminal();

    /// True when colours help: on a terminal that knows them, unless NO_COLOR is set.
    static bool isColoured();

    /// Cells of a line. Without a terminal 0, which means any number.
    static int width();

    /// True when the standard output is a pipe, whose reader may go away.
    static bool isPipe();

    /// Ends the process because nobody reads any more.
    [[noreturn]] static void endQuietly(ExitCode code = ExitCode::success);
};
