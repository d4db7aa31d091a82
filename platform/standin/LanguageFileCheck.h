#pragma once

#include <QByteArray>
#include <QString>

/// Checks a compiled language file before QTranslator reads it: that one trusts every length and
/// offset in the file, so a damaged one could end the process at any later look-up.
class LanguageFileCheck
{
public:
    /// What is wrong with the file, for a warning that names it itself; empty for a good one.
    static QString findFault(const QByteArray& file);
};
