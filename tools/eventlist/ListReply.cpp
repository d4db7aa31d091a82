#include "eventlist/ListReply.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDBusArgument>

#include <algorithm>

namespace
{
// Reading an argument of another shape than it has would be undefined.
bool holds(const QVariant& value, const char* signature)
{
    return value.userType() == qMetaTypeId<QDBusArgument>() &&
           value.value<QDBusArgument>().currentSignature() == QLatin1String(signature);
}
} // namespace

bool ListReply::readDictionary(const QVariant& value, QVariantMap& dictionary)
{
    if (value.userType() == QMetaType::QVariantMap)
    {
        dictionary = value.toMap();
        return true;
    }
    if (!holds(value, "a{sv}"))
    {
        return false;
    }
    dictionary = qdbus_cast<QVariantMap>(value);
    return true;
}

bool ListReply::read(const QVariantList& values)
{
    QVariantMap dictionary;
    if (values.isEmpty() || !readDictionary(values.first(), dictionary))
    {
        return false;
    }
    const QVariant header = dictionary.value(EventlistHandlerDefinitions::getListHeaderName());
    const QVariant data = dictionary.value(EventlistHandlerDefinitions::getListDataName());
    if (header.userType() != QMetaType::QStringList || !holds(data, "aas"))
    {
        return false;
    }
    m_header = header.toStringList();
    for (int i = 0; i < m_header.size(); ++i)
    {
        m_columns.insert(m_header.at(i), i);
    }
    const QDBusArgument rows = data.value<QDBusArgument>();
    rows.beginArray();
    while (!rows.atEnd())
    {
        QStringList row;
        rows >> row;
        m_rows.append(row);
    }
    rows.endArray();
    m_isTruncated = dictionary.value(QStringLiteral("truncated")).toBool();
    return true;
}

QString ListReply::value(int row, const QString& column) const
{
    const auto found = m_columns.constFind(column);
    return found == m_columns.constEnd() ? QString() : m_rows.at(row).value(*found);
}

qint64 ListReply::number(int row, const QString& column) const
{
    return value(row, column).toLongLong();
}

void ListReply::reverse()
{
    std::reverse(m_rows.begin(), m_rows.end());
}

void ListReply::append(const ListReply& other)
{
    if (m_header.isEmpty())
    {
        *this = other;
        return;
    }
    m_rows += other.m_rows;
    m_isTruncated = other.m_isTruncated;
}
