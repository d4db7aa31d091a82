#include "PathCheck.h"

#include <QFileInfo>

bool PathCheck::leadsOutOf(const QString& folder, const QString& path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    const QString inside = QFileInfo(folder).canonicalFilePath();
    if (target.isEmpty() || target == inside)
    {
        return false;
    }
    const QString prefix = inside.endsWith(QLatin1Char('/')) ? inside : inside + QLatin1Char('/');
    return inside.isEmpty() || !target.startsWith(prefix);
}

QString PathCheck::shortened(const QString& name)
{
    constexpr int maxLength = 1024;
    return name.left(maxLength);
}
