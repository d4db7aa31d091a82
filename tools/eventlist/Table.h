#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// A table of texts for a terminal: columns as wide as they need to be, the last one cut to what is
/// left of the line.
class Table
{
public:
    struct Column
    {
        QString title;
        int minimum = 0; ///< cells that it always has; for rows that are still to come
        int maximum = 0; ///< cells that it never exceeds; 0: any
        bool isRight = false;
    };

    explicit Table(const QVector<Column>& columns);

    /// \param style  colour of the row, as a terminal wants it, such as "1;31"; empty for none
    /// \param cells  foreign texts are welcome: they are shown escaped
    void add(const QStringList& cells, const QString& style = QString());

    /// The titles and the rows as lines.
    /// \param lineWidth   cells of a line; 0 cuts nothing
    /// \param isColoured  whether the styles count
    QString text(int lineWidth, bool isColoured, bool hasTitles = true) const;

private:
    struct Row
    {
        QStringList cells;
        QString style;
    };

    QVector<int> widths(bool hasTitles) const;
    QString line(const QStringList& cells, const QVector<int>& widths, int lineWidth) const;

    const QVector<Column> m_columns;
    QVector<Row> m_rows;
};
