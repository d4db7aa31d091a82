#include "eventlist/Table.h"

#include "eventlist/SafeText.h"

namespace
{
constexpr int gap = 2;
constexpr int narrowestLastColumn = 10;

QString colour(const QString& style, const QString& text)
{
    return QStringLiteral("\x1b[") + style + QLatin1Char('m') + text + QStringLiteral("\x1b[0m");
}
} // namespace

Table::Table(const QVector<Column>& columns) : m_columns(columns) {}

void Table::add(const QStringList& cells, const QString& style)
{
    QStringList safe;
    for (const QString& cell : cells)
    {
        safe.append(SafeText::escaped(cell));
    }
    m_rows.append({safe, style});
}

QVector<int> Table::widths(bool hasTitles) const
{
    QVector<int> widths;
    for (int i = 0; i < m_columns.size(); ++i)
    {
        const Column& column = m_columns.at(i);
        int cells = qMax(column.minimum, hasTitles ? SafeText::width(column.title) : 0);
        for (const Row& row : m_rows)
        {
            cells = qMax(cells, SafeText::width(row.cells.value(i)));
        }
        widths.append(column.maximum > 0 ? qMin(cells, column.maximum) : cells);
    }
    return widths;
}

QString Table::line(const QStringList& cells, const QVector<int>& widths, int lineWidth) const
{
    QString line;
    int used = 0;
    for (int i = 0; i < m_columns.size(); ++i)
    {
        const bool isLast = i == m_columns.size() - 1;
        QString cell = cells.value(i);
        if (isLast)
        {
            const int left = qMax(lineWidth - used, narrowestLastColumn);
            line += lineWidth > 0 ? SafeText::cut(cell, left) : cell;
            break;
        }
        if (lineWidth > 0)
        {
            cell = SafeText::cut(cell, widths.at(i));
        }
        const QString padding(qMax(0, widths.at(i) - SafeText::width(cell)), QLatin1Char(' '));
        line += m_columns.at(i).isRight ? padding + cell : cell + padding;
        line += QString(gap, QLatin1Char(' '));
        used += widths.at(i) + gap;
    }
    while (line.endsWith(QLatin1Char(' ')))
    {
        line.chop(1);
    }
    return line;
}

QString Table::text(int lineWidth, bool isColoured, bool hasTitles) const
{
    const QVector<int> cells = widths(hasTitles);
    QString text;
    if (hasTitles)
    {
        QStringList titles;
        for (const Column& column : m_columns)
        {
            titles.append(column.title);
        }
        const QString head = line(titles, cells, lineWidth);
        text += (isColoured ? colour(QStringLiteral("1"), head) : head) + QLatin1Char('\n');
    }
    for (const Row& row : m_rows)
    {
        const QString body = line(row.cells, cells, lineWidth);
        text += (isColoured && !row.style.isEmpty() ? colour(row.style, body) : body) +
                QLatin1Char('\n');
    }
    return text;
}
