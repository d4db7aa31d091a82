#pragma once

#include <QList>
#include <QStringList>
#include <QVariantMap>

namespace eventlistd
{

/// The rows of an answer on the bus.
using Rows = QList<QStringList>;

/// Puts an answer to a query together: a dictionary with "header" (as) and "data" (aas), and, only
/// when rows had to be left out because they did not fit into one bus message, "truncated" (b,
/// true). The bus throws a service out that sends more than a message may hold, so that the limit
/// is ours to keep.
class ListAnswer
{
public:
    /// A message on a system bus ends at 32 MiB; the rest is for its head and the dictionary.
    static constexpr qint64 defaultByteLimit = 31 * 1024 * 1024;

    explicit ListAnswer(const QStringList& header, qint64 byteLimit = defaultByteLimit);

    /// Adds a row at the end.
    /// Failure: false when it does not fit any more; the answer is then marked as truncated.
    bool add(const QStringList& row);

    bool isTruncated() const { return m_isTruncated; }
    const Rows& rows() const { return m_rows; }
    const QStringList& header() const { return m_header; }
    QVariantMap toMap() const;

    /// Makes the type of the rows known to QtDBus. Once, before the first answer.
    static void registerTypes();

private:
    const QStringList m_header;
    const qint64 m_byteLimit;
    qint64 m_bytes = 0;
    bool m_isTruncated = false;
    Rows m_rows;
};

} // namespace eventlistd

Q_DECLARE_METATYPE(eventlistd::Rows)
