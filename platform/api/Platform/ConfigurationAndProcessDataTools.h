#pragma once

#include "Platform/PlatformExport.h"

#include <QSharedPointer>
#include <QString>
#include <QVariant>

class ConfigurationAndProcessDataBase;

/// Reads values out of parsed configuration descriptions.
class PLATFORM_EXPORT ConfigurationAndProcessDataTools
{
public:
    /// The value of the leaf at this path.
    /// \param url   path of the leaf, words joined by "/"
    /// \param root  the tree; may be null
    /// Failure: an invalid QVariant for a null tree, a missing element or one without a value. No
    ///          warning.
    /// Threads: any.
    static QVariant extractConfigValue(const QString& url,
                                       const QSharedPointer<ConfigurationAndProcessDataBase>& root);
};
