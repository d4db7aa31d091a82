#pragma once

#include "core/Event.h"

#include <QStringList>
#include <QVector>

namespace eventlistd
{

/// The columns of the event list, as an answer shows them. Every value is a text.
/// The usual columns hold what a sender claims; what the service knows about it, its user and its
/// process, comes on request only.
class EventColumns
{
public:
    using Text = QString (*)(const Event& event, const QString& language);
    struct Column
    {
        QString name;
        Text text;
    };

    /// The usual columns, in the order in which an answer has them.
    static const QVector<Column>& all();

    /// \param wanted  names of columns, "*" for all usual ones; unknown ones are left out, none means
    ///                the usual ones
    explicit EventColumns(const QStringList& wanted = {});

    QStringList header() const;
    bool contains(const QString& name) const;
    /// \param language  language key of the description; empty: all languages as JSON text
    QStringList row(const Event& event, const QString& language) const;

private:
    void add(const Column& column);

    QVector<Column> m_columns;
};

} // namespace eventlistd
