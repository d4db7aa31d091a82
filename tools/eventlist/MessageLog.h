#pragma once

/// Takes the message log of Qt and of the library. A module's log is for its developer; whoever
/// calls this tool gets one line of the tool itself. With --verbose the log is shown as well.
class MessageLog
{
public:
    /// Called once, at start.
    static void take();

    static void setVerbose(bool isVerbose);
};
