#pragma once

#include "Platform/PlatformExport.h"

#include <QString>
#include <QVariantMap>

/// A collection of texts in all languages of a module.
class PLATFORM_EXPORT TextManagerBase
{
public:
    virtual ~TextManagerBase();

    /// The text of this url in every language that has it: language key to text. Empty when no
    /// language does.
    /// \param url  words joined by "/", such as "PumpControl/OverTemperature"; the id in the
    ///             language files
    /// Threads: any, also several at once.
    virtual QVariantMap getAllTexts(const QString& url) const = 0;
};
