#include "Platform/PropertyManagerConst.h"

#include "PathCheck.h"

#include <QDebug>

const QString& PropertyManagerConst::getDBusPrefix()
{
    static const QString prefix = QStringLiteral(EVENTLISTHANDLER_BUS_PREFIX);
    return prefix;
}

QString PropertyManagerConst::getConfigurationFolderPath(const QString& relativePath)
{
    const QString root = QStringLiteral(EVENTLISTHANDLER_DATA_ROOT "etc/configuration/");
    // The one path with a leading slash that is meant: neither prefix nor object name before it.
    const QString path = relativePath == QLatin1String("/") ? QString() : relativePath;
    const QString folder = root + path;
    if (path.startsWith(QLatin1Char('/')) || path.contains(QChar::Null) ||
        path.split(QLatin1Char('/')).contains(QStringLiteral("..")) ||
        PathCheck::leadsOutOf(root, folder))
    {
        qWarning() << "Configuration folder refused, it is outside of" << root << ":"
                   << PathCheck::shortened(relativePath);
        return QString();
    }
    return folder;
}
