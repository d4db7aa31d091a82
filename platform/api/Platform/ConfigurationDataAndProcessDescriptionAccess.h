#pragma once

#include "Platform/PlatformExport.h"

#include <QSharedPointer>
#include <QString>

class ConfigurationAndProcessDataBase;
class QDir;

/// Reads the configuration descriptions of a module from files.
class PLATFORM_EXPORT ConfigurationDataAndProcessDescriptionAccess
{
public:
    ConfigurationDataAndProcessDescriptionAccess();
    ~ConfigurationDataAndProcessDescriptionAccess();
    Q_DISABLE_COPY(ConfigurationDataAndProcessDescriptionAccess)

    /// The parsed description of one instance: the file "<name>.json" in the folder, a JSON object
    /// that is the tree of ConfigurationAndProcessDataBase. It is read anew at each call.
    /// \param folder  the folder, from PropertyManagerConst::getConfigurationFolderPath
    /// \param name    name of the instance. May come from outside: a name that is no plain file
    ///                name is refused.
    /// \param withProcessData  has no meaning here
    /// Failure: null, with one warning that names the file: missing, unreadable, larger than 16
    ///          MiB, no JSON object, a key twice in one object, nested deeper than 64, or outside
    ///          the folder. Without a warning for the empty folder path, which
    ///          getConfigurationFolderPath has warned about.
    /// Threads: any.
    static QSharedPointer<ConfigurationAndProcessDataBase>
    getParsedConfigurationProcessDescription(const QDir& folder, const QString& name,
                                             bool withProcessData);
};
