#pragma once

#include <QJsonObject>
#include <QString>

/// One event, an alarm that became active, in all its forms, byte for byte as they stand on the
/// wire.
namespace WorkedExample
{
const QString& eventId();
const QString& time();
const QString& alarmId();

/// The finished texts.
const QString& description();

/// The description with its placeholders.
const QString& metaData();
QJsonObject metaDataObject();

/// All that the write call carries beside its plain arguments.
const QString& additionalData();
} // namespace WorkedExample
