#include "Platform/ConfigurationAndProcessDataTools.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationDataValue.h"

QVariant ConfigurationAndProcessDataTools::extractConfigValue(
    const QString& url, const QSharedPointer<ConfigurationAndProcessDataBase>& root)
{
    if (root.isNull())
    {
        return QVariant();
    }
    const auto leaf = root->getLeafConfigurationData(url);
    return leaf.isNull() ? QVariant() : leaf->getValue();
}
