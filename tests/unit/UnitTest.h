#pragma once

#include "Common/DBusTools/DBusConnectorBase.h"
#include "TestSupport/SpoolFolder.h"
#include "TestSupport/WarningRecorder.h"

#include <QDebug>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

/// What several unit tests need.

inline QString text(const char* literal)
{
    return QString::fromUtf8(literal);
}

/// A string as a warning shows it.
inline QString quoted(const QString& text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

inline QByteArray compactJson(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// A spool file without its time, whose form is compared where the time is what it is about.
inline QByteArray eventWithoutTime(const SpoolFolder& spool, const QString& entry)
{
    QJsonObject event = spool.read(entry);
    event.remove(QStringLiteral("DateTimeMsUTC"));
    return compactJson(event);
}

/// The two warnings of a call that cannot be placed: no unit test has a bus.
inline void expectRefusedCall(WarningRecorder& warnings, const DBusConnectorBase& connector,
                              const QString& operation = QStringLiteral("syncCallNoBlock"))
{
    for (int i = 0; i < 2; ++i)
    {
        warnings.expect(quoted(connector.getInvalidDBusInterfaceMessage()),
                        QStringLiteral("DBusConnectorBase"),
                        QLatin1String("DBusConnectorBase::") + operation);
    }
}

/// The one of a query.
inline void expectRefusedQuery(WarningRecorder& warnings, const DBusConnectorBase& connector)
{
    warnings.expect(quoted(connector.getInvalidDBusInterfaceMessage()),
                    QStringLiteral("DBusConnectorBase"),
                    QStringLiteral("DBusConnectorBase::asyncCallHelper"));
}
