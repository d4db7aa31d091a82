#pragma once

#include <QString>

class ListReply;

/// Prints rows of the event list: as a table for a reader, as JSON for a program.
class EventPrinter
{
public:
    enum Form : int
    {
        table,     ///< all rows at once, columns as wide as these rows need
        lines,     ///< rows that come one after the other, in columns of fixed width
        jsonArray, ///< one array, an object a line
        jsonLines  ///< an object a line, as they come
    };

    explicit EventPrinter(Form form);

    void print(const ListReply& list);

private:
    void printTable(const ListReply& list, bool isStream);
    void printJson(const ListReply& list);

    const Form m_form;
    bool m_hasTitles = true;
};
