#pragma once

#include "eventlist/Arguments.h"
#include "eventlist/SpoolFile.h"

/// What the commands of the spool folder have in common.
class SpoolOptions
{
public:
    /// --spool
    static Option folderOption();

    /// The folder that is meant, without a closing slash.
    static QString folder(const Arguments& arguments);

    /// Reads all files of the folder; tells on the standard error what cannot be read.
    static QVector<SpoolFile> readAll(const Arguments& arguments, bool& isComplete);

    /// What can be shown of the text of a file, in a language; the fault of a file that has none.
    static QString description(const SpoolFile& file, const QString& language);
};
