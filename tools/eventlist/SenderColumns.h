#pragma once

#include <QString>

class ListReply;

/// Who sent an event: known by the service, and not a claim of the sender. The columns come on
/// request only.
class SenderColumns
{
public:
    static QString user();
    static QString process();

    /// "pump[812]": the user by name, if this machine knows it, and the process. Without a process
    /// the user alone; empty when nothing is known.
    static QString text(const ListReply& list, int row);
};
