#pragma once

#include "Platform/DBusPendingReply.h"

#include <QVariantMap>

#include <functional>

class DBusConnectorBase;
class ListReply;

/// The central service, from the side of a tool that does one thing and ends.
class Service
{
public:
    /// True when a call can be placed; otherwise says on the standard error what is missing.
    static bool isThere(const DBusConnectorBase& connector);

    /// Why no call can be placed, and what to do.
    static QString absence(const DBusConnectorBase& connector);

    /// Waits for the answer to a call, and tells so when that takes long.
    static void wait(DBusPendingReply& reply);

    /// Waits for the answer to a query and reads it.
    /// \param reply  null when the service is not there
    /// \returns an exit code; anything but success after a message on the standard error
    static int waitForList(const DBusConnectorBase& connector,
                           const DBusPendingReply::SharedPointer& reply, ListReply& list);

    /// The same for one of many queries in a row: asks again when the service wants a pause.
    static int askForList(const DBusConnectorBase& connector,
                          const std::function<DBusPendingReply::SharedPointer()>& ask,
                          ListReply& list);

    /// The same for an answer that is one dictionary.
    static int waitForDictionary(const DBusConnectorBase& connector,
                                 const DBusPendingReply::SharedPointer& reply,
                                 QVariantMap& dictionary);

    /// Why a finished reply holds no list; empty when it does.
    static QString readList(const DBusPendingReply& reply, ListReply& list);

    /// Waits until the service has taken all that this process has sent: calls are only queued, and
    /// what is queued is lost with the process.
    /// \returns an exit code; anything but success after a message on the standard error
    static int flush(const DBusConnectorBase& connector);
};
