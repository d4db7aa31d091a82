#pragma once

#include <QString>

class ListReply;

/// Prints rows of the event list: as a table for a reader, as JSON for a program.
class EventPrinter
{
public:
    enum Form : int
    {
        wholeTable, ///< all rows at once, columns as wide as these rows need
        lines,      ///< rows that come one after the other, in columns of fixed width
        jsonArray,  ///< one array, an object a line
        jsonLines   ///< an object a line, as they come
    };

    explicit EventPrinter(Form form);

    void print(const ListReply& list);

    /// One row as a JSON object on one line. Fields that are numbers, lists or JSON themselves
    /// become so.
    static QString jsonText(const ListReply& list, int row);

    /// "2026-03-14T09:26:53.589" as "2026-03-14 09:26:53".
    static QString shortTime(const QString& time);

private:
    void printTable(const ListReply& list, bool isStream);
    void printJson(const ListReply& list);

    const Form m_form;
    bool m_hasTitles = true;
};
