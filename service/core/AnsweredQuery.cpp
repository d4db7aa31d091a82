#include "core/AnsweredQuery.h"

#include "core/BusObject.h"
#include "core/MonotonicClock.h"
#include "core/SenderRegistry.h"

namespace eventlistd
{

QVariantMap answeredQuery(const BusObject& object, SenderRegistry& senders,
                          const std::function<QVariantMap(QString& error)>& query)
{
    if (!object.message().isReplyRequired())
    {
        return {};
    }
    if (!senders.admitQuery(object.caller()))
    {
        object.sendErrorReply(QStringLiteral("org.freedesktop.DBus.Error.LimitsExceeded"),
                              QStringLiteral("Too many queries, try again later"));
        return {};
    }
    QString error;
    const qint64 begin = monotonicMs();
    QVariantMap answer = query(error);
    senders.chargeQuery(object.caller(), monotonicMs() - begin);
    if (!error.isEmpty())
    {
        object.sendErrorReply(QStringLiteral("org.freedesktop.DBus.Error.IOError"), error);
    }
    return answer;
}

} // namespace eventlistd
