#pragma once

#include "Platform/PlatformExport.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// The one way in for JSON that somebody else wrote: configuration descriptions, and the spool
/// files that the central service reads. Not part of the platform's interface.
///
/// The text is checked before Qt's parser sees it: that one leaks the value of a key that stands
/// twice, and a deep text costs it its stack.
class PLATFORM_EXPORT JsonLoader
{
public:
    struct Result
    {
        QJsonObject object;
        QString error; ///< why nothing was loaded, for a warning that names the source itself

        bool isLoaded() const { return error.isEmpty(); }
    };

    /// Loads a regular file that holds one JSON object in UTF-8; a byte order mark is skipped.
    /// Failure: an error and an empty object: missing, unreadable, larger than maxBytes, no JSON
    ///          object, a key twice in one object, nested deeper than 64.
    /// Threads: any.
    static Result fromFile(const QString& path, qint64 maxBytes);

    /// The same for a text that was read already.
    static Result fromBytes(const QByteArray& json, qint64 maxBytes);
};
