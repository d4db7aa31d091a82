#pragma once

#include "Platform/PlatformExport.h"

#include <QString>

class QJsonObject;
class QJsonValue;

/// Each reader takes a key, or several keys joined by "/" that step into nested objects, and
/// returns true when it found a value of the asked type; only then it fills its last argument. An
/// empty word in the path finds nothing. A value that is present and null counts as found by
/// readJsonValue.
/// Threads: any.
PLATFORM_EXPORT bool readJsonValue(const QString& key, const QJsonObject& object,
                                   QJsonValue& value);
PLATFORM_EXPORT bool readStringValueFromJson(const QString& key, const QJsonObject& object,
                                             QString& value);
PLATFORM_EXPORT bool readJsonObjectFromJson(const QString& key, const QJsonObject& object,
                                            QJsonObject& value);

/// Writes the object as compact JSON text to exactly this path. The file appears complete or not at
/// all; an existing file is replaced in one step, and of two equal names the last one wins. A
/// symbolic link at the path is replaced, its target stays untouched.
/// \param path  full path; its folder must exist. It must not contain U+0000.
/// Failure: false, and what stood at the path before stands there still, or nothing for a new name.
///          Only when the folder cannot be synced after a file was replaced, the new one stands
///          there, complete. Nothing is logged here.
/// Blocks:  until the data and the directory entry are on the disk.
/// Threads: any.
PLATFORM_EXPORT bool writeJsonObjectToFile(const QJsonObject& object, const QString& path);
