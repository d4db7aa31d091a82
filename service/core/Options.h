#pragma once

#include "core/EventlistService.h"

#include <QStringList>

namespace eventlistd
{

/// What the command line asks for.
struct Options
{
    enum class Action
    {
        run,
        /// Print a text and end well.
        print,
        /// Print a text as an error and end with it.
        refuse,
        /// Check the database and end.
        check
    };

    Action action = Action::run;
    QString text;
    QString textsFolder;
    EventlistService::Settings service;

    /// \param arguments  the command line, the program first
    static Options parse(const QStringList& arguments);
};

} // namespace eventlistd
