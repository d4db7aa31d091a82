#pragma once

#include "Platform/PlatformExport.h"

#include <QVariant>

/// The value of one configuration leaf, as it was when it was asked for.
class PLATFORM_EXPORT ConfigurationDataValue
{
public:
    /// Keeps a copy of the value.
    explicit ConfigurationDataValue(const QVariant& value);
    virtual ~ConfigurationDataValue();

    /// The value; a text object is a QVariantMap from language key to text.
    QVariant getValue() const;

private:
    QVariant m_value;
};
