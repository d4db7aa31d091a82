#pragma once

#include <QString>

/// Where the texts are that every device has.
class CommonTexts
{
public:
    /// The folder beside an installed tool; that of the build when it is not installed.
    static QString folder();
};
