#include "Platform/ConfigurationAndProcessDataDefinitions.h"

const QString& ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue()
{
    static const QString key = QStringLiteral("value");
    return key;
}
