#pragma once

#include <QString>
#include <QVariantMap>

#include <functional>

namespace eventlistd
{

class BusObject;
class SenderRegistry;

/// Answers a query of the present caller, and charges it for the time. One that wants no answer is
/// not run: nobody would notice but those who wait behind it. One that has used up its time is
/// refused with "org.freedesktop.DBus.Error.LimitsExceeded".
/// \param query  makes the answer; what it writes into its argument makes an
///               "org.freedesktop.DBus.Error.IOError" of it
QVariantMap answeredQuery(const BusObject& object, SenderRegistry& senders,
                          const std::function<QVariantMap(QString& error)>& query);

} // namespace eventlistd
