#include "Platform/DBusReply.h"

#include <QDBusArgument>
#include <QDBusVariant>
#include <QVariantList>
#include <QVariantMap>

namespace
{
/// The value with every gap closed by an empty string: D-Bus knows no missing value, and libdbus
/// ends the process when one stands in a container.
QVariant withoutGaps(const QVariant& value)
{
    if (!value.isValid())
    {
        return QString();
    }
    if (value.userType() == QMetaType::QVariantList)
    {
        QVariantList list = value.toList();
        for (QVariant& element : list)
        {
            element = withoutGaps(element);
        }
        return list;
    }
    if (value.userType() == QMetaType::QVariantMap)
    {
        QVariantMap map = value.toMap();
        for (QVariant& element : map)
        {
            element = withoutGaps(element);
        }
        return map;
    }
    return value;
}
} // namespace

DBusReply::DBusReply() = default;

void DBusReply::setError(int code, const QString& text)
{
    m_errorCode = code;
    m_errorText = text;
    m_value.clear();
}

void DBusReply::setValue(const QVariant& value)
{
    m_errorCode = 0;
    m_errorText.clear();
    m_value = value;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, DBusReply& reply)
{
    // Asked first: QtDBus warns, and some shapes end the process, when they are read as another.
    if (argument.currentSignature() != QLatin1String("(isv)"))
    {
        return argument;
    }
    QDBusVariant value;
    argument.beginStructure();
    argument >> reply.m_errorCode >> reply.m_errorText >> value;
    argument.endStructure();
    reply.m_value = value.variant();
    return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const DBusReply& reply)
{
    argument.beginStructure();
    argument << reply.m_errorCode << reply.m_errorText << QDBusVariant(withoutGaps(reply.m_value));
    argument.endStructure();
    return argument;
}
