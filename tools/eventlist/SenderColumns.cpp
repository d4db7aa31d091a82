#include "eventlist/SenderColumns.h"

#include "eventlist/ListReply.h"

#include <pwd.h>

QString SenderColumns::user()
{
    return QStringLiteral("SenderUid");
}

QString SenderColumns::process()
{
    return QStringLiteral("SenderPid");
}

QString SenderColumns::text(const ListReply& list, int row)
{
    const QString uid = list.value(row, user());
    if (uid.isEmpty())
    {
        return QString();
    }
    const passwd* entry = ::getpwuid(uid_t(uid.toULongLong()));
    const QString name = entry != nullptr ? QString::fromLocal8Bit(entry->pw_name) : uid;
    const QString pid = list.value(row, process());
    return pid.isEmpty() ? name : name + QLatin1Char('[') + pid + QLatin1Char(']');
}
