#pragma once

#include "core/Event.h"

#include <QStringList>
#include <QVector>

namespace eventlistd
{

/// The columns of the event list, as an answer shows them. Every value is a text.
class EventColumns
{
public:
    using Text = QString (*)(const Event& event, const QString& language);
    struct Column
    {
        QString name;
        Text text;
    };

    /// All columns, in the order in which an answer has them.
    static const QVector<Column>& all();

    /// \param wanted  names of columns; unknown ones are left out, none means all
    explicit EventColumns(const QStringList& wanted = {});

    QStringList header() const;
    bool contains(const QString& name) const;
    /// \param language  language key of the description; empty: all languages as JSON text
    QStringList row(const Event& event, const QString& language) const;

private:
    QVector<Column> m_columns;
};

} // namespace eventlistd
