#pragma once

#include <QString>

class ListReply;

/// Prints the alarm list and its changes.
class AlarmPrinter
{
public:
    explicit AlarmPrinter(bool isJson);

    /// The list, what needs attention first.
    void printList(const ListReply& alarms);

    /// One line that tells a change of one alarm.
    /// \param change  such as "came"
    void printChange(const QString& change, const ListReply& alarms, int row);

    void printCentralDetector(bool isOn);

private:
    const bool m_isJson;
    bool m_hasTitles = true;
};
