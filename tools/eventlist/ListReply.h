#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

/// The answer to a query of a list: rows of texts under named columns. Columns are found by their
/// names, so that a service may have more of them and in another order.
class ListReply
{
public:
    /// Takes the values of an answer: one a{sv} with "header" (as) and "data" (aas).
    /// Failure: false when they have another shape.
    bool read(const QVariantList& values);

    /// Takes a dictionary (a{sv}) as QtDBus delivers it.
    /// Failure: false when the value is none.
    static bool readDictionary(const QVariant& value, QVariantMap& dictionary);

    int size() const { return m_rows.size(); }
    const QStringList& header() const { return m_header; }

    /// A field; empty when the answer has no such column.
    QString value(int row, const QString& column) const;
    qint64 number(int row, const QString& column) const;
    bool hasColumn(const QString& column) const { return m_columns.contains(column); }

    /// True when the service has left rows out because an answer holds no more.
    bool isTruncated() const { return m_isTruncated; }

    /// Newest rows come first over the bus; a reader wants them last.
    void reverse();

    /// Adds the rows of an answer with the same columns behind these.
    void append(const ListReply& other);

private:
    QStringList m_header;
    QHash<QString, int> m_columns;
    QList<QStringList> m_rows;
    bool m_isTruncated = false;
};
