#pragma once

#include "eventlist/Arguments.h"

#include <QString>
#include <QVector>

#include <memory>
#include <vector>

/// One sub-command of the tool.
class Command
{
public:
    virtual ~Command();

    /// One word, or two for a command of a group: "list", "spool list".
    virtual QString name() const = 0;
    /// What else it may be called: the words of other tools for the same.
    virtual QStringList aliases() const { return {}; }
    /// What it does, in a line of the list of commands.
    virtual QString summary() const = 0;
    /// What stands behind the name in the line of usage.
    virtual QString usage() const = 0;
    /// What --help says besides: a few sentences, ready for the terminal.
    virtual QString explanation() const = 0;
    virtual QVector<Option> options() const = 0;
    /// Command lines, one each, without the name of the tool.
    virtual QStringList examples() const = 0;
    /// What the exit codes mean, in one line of --help.
    virtual QString exitCodes() const;

    /// \returns the exit code
    virtual int run(const Arguments& arguments) = 0;

    /// The whole text of --help.
    QString help() const;

    /// Parses the words behind the name and runs; answers --help and complains about a wrong
    /// command line.
    int execute(const QStringList& words);

    /// All sub-commands, in the order in which --help lists them.
    static const std::vector<std::unique_ptr<Command>>& all();

    /// The command that a command line begins with, by its name or an alias; null when there is
    /// none.
    /// \param used  receives the number of words that name it
    static Command* find(const QStringList& words, int& used);

protected:
    /// Complains about the command line. \returns the exit code for it
    int complain(const QString& text) const;
};
