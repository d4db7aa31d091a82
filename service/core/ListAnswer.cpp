#include "core/ListAnswer.h"

#include "core/Names.h"

#include <QDBusMetaType>

namespace eventlistd
{

namespace
{
// Bytes of a string on the wire: padding to 4, length, UTF-8, closing zero. The padding is taken at
// its worst.
qint64 wireSize(const QString& text)
{
    qint64 bytes = 3 + 4 + 1;
    for (const QChar unit : text)
    {
        const ushort code = unit.unicode();
        bytes += code < 0x80 ? 1 : (code < 0x800 ? 2 : 3);
    }
    return bytes;
}
} // namespace

ListAnswer::ListAnswer(const QStringList& header, qint64 byteLimit)
    : m_header(header), m_byteLimit(byteLimit)
{
}

bool ListAnswer::add(const QStringList& row)
{
    qint64 bytes = 3 + 4;
    for (const QString& text : row)
    {
        bytes += wireSize(text);
    }
    if (m_isTruncated || m_bytes + bytes > m_byteLimit)
    {
        m_isTruncated = true;
        return false;
    }
    m_bytes += bytes;
    m_rows.append(row);
    return true;
}

QVariantMap ListAnswer::toMap() const
{
    QVariantMap answer{{names::header(), m_header}, {names::data(), QVariant::fromValue(m_rows)}};
    if (m_isTruncated)
    {
        answer.insert(names::truncated(), true);
    }
    return answer;
}

void ListAnswer::registerTypes()
{
    qDBusRegisterMetaType<Rows>();
}

} // namespace eventlistd
