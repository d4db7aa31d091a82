#include "Platform/ConfigurationDataAndProcessDescriptionAccess.h"

#include "JsonLoader.h"
#include "PathCheck.h"

#include "Platform/ConfigurationAndProcessDataBase.h"

#include <QDebug>
#include <QDir>

namespace
{
constexpr qint64 maxDescriptionBytes = 16 * 1024 * 1024;

// The name comes from the bus. A leading point would also give hidden files.
bool isPlainFileName(const QString& name)
{
    constexpr int maxNameLength = 255;
    return !name.isEmpty() && name.size() <= maxNameLength && !name.contains(QLatin1Char('/')) &&
           !name.contains(QChar::Null) && !name.startsWith(QLatin1Char('.'));
}
} // namespace

ConfigurationDataAndProcessDescriptionAccess::ConfigurationDataAndProcessDescriptionAccess() =
    default;

ConfigurationDataAndProcessDescriptionAccess::~ConfigurationDataAndProcessDescriptionAccess() =
    default;

QSharedPointer<ConfigurationAndProcessDataBase>
ConfigurationDataAndProcessDescriptionAccess::getParsedConfigurationProcessDescription(
    const QDir& folder, const QString& name, bool withProcessData)
{
    Q_UNUSED(withProcessData)
    // A refused folder path is empty, for QDir the working directory. It was warned about already.
    if (folder.path() == QLatin1String("."))
    {
        return QSharedPointer<ConfigurationAndProcessDataBase>();
    }
    const QString path = folder.filePath(name + QStringLiteral(".json"));
    JsonLoader::Result description;
    if (!isPlainFileName(name))
    {
        description.error = QStringLiteral("the instance name is no plain file name");
    }
    else if (PathCheck::leadsOutOf(folder.path(), path))
    {
        description.error = QStringLiteral("a symbolic link leads out of the folder");
    }
    else
    {
        description = JsonLoader::fromFile(path, maxDescriptionBytes);
    }
    if (!description.isLoaded())
    {
        qWarning() << "Can't read configuration description" << PathCheck::shortened(path) << ":"
                   << description.error;
        return QSharedPointer<ConfigurationAndProcessDataBase>();
    }
    return QSharedPointer<ConfigurationAndProcessDataBase>::create(
        description.object.toVariantMap());
}
