#pragma once

#include "Platform/PlatformExport.h"

#include <QString>
#include <QVariant>

class QDBusArgument;

/// The result of a synchronous call: an error, or a value that may be empty. A plain value, copied
/// freely. On the bus it is the structure (isv): code, text, value.
class PLATFORM_EXPORT DBusReply
{
public:
    /// No error and no value.
    DBusReply();

    /// Turns this into an error reply.
    /// \param code  not 0
    void setError(int code, const QString& text);

    /// Sets the value and takes an error away.
    void setValue(const QVariant& value);

    /// Whether the call has failed: then it has a code, other than 0, and a text; else a value.
    bool isError() const { return m_errorCode != 0; }
    int getErrorCode() const { return m_errorCode; }
    const QString& getErrorText() const { return m_errorText; }
    const QVariant& getValue() const { return m_value; }

private:
    friend PLATFORM_EXPORT const QDBusArgument& operator>>(const QDBusArgument& argument,
                                                           DBusReply& reply);
    friend PLATFORM_EXPORT QDBusArgument& operator<<(QDBusArgument& argument,
                                                     const DBusReply& reply);

    int m_errorCode = 0;
    QString m_errorText;
    QVariant m_value;
};

/// Reads a reply. An argument of any other shape leaves the reply as it was, without a warning.
PLATFORM_EXPORT const QDBusArgument& operator>>(const QDBusArgument& argument, DBusReply& reply);

/// Writes a reply; a reply without a value carries the empty string in its place.
PLATFORM_EXPORT QDBusArgument& operator<<(QDBusArgument& argument, const DBusReply& reply);
