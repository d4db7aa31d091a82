#pragma once

#include "Platform/PlatformExport.h"

#include <QString>

/// The language keys that the text services know by themselves. A language key is the base name of
/// a language file, such as "lang_de".
class PLATFORM_EXPORT LanguageDefinitions
{
public:
    /// The language of last resort: the key under which a text is filed that exists in one form
    /// only.
    /// Threads: any. The reference stays valid until the process ends.
    static const QString& getSecondFallbackLanguageFilename();
};
