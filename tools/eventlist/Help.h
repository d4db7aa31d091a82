#pragma once

#include <QString>
#include <QStringList>

/// The texts that tell which commands there are. What one command says of itself is
/// Command::help().
class Help
{
public:
    /// The text of "eventlist --help".
    static QString overview();

    /// Every text of help there is, one behind the other.
    static QString all();

    /// The names of the commands of a group ("spool"), without the group's name; empty when there
    /// is no such group.
    static QStringList groupMembers(const QString& group);

    /// The text of "eventlist GROUP --help".
    static QString group(const QString& group);
};
