#pragma once

#include "Platform/PlatformExport.h"

#include <QString>
#include <QVariantMap>

class TextManagerBase;

/// Reads a text in all languages at once.
class PLATFORM_EXPORT ReadAllTextsHelper
{
public:
    /// The text object of a text url: language key to text, for every language that has the text.
    /// Failure: an unknown url gives an empty map, without a warning; the caller decides what that
    ///          means.
    /// Threads: any.
    static QVariantMap getAllTextsAsVariantMap(const TextManagerBase& textManager,
                                               const QString& url);
};
