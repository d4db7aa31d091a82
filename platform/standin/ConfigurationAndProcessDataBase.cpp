#include "Platform/ConfigurationAndProcessDataBase.h"

#include "Platform/ConfigurationAndProcessDataDefinitions.h"
#include "Platform/ConfigurationDataValue.h"

#include <QStringList>

ConfigurationAndProcessDataBase::ConfigurationAndProcessDataBase(const QVariantMap& properties)
    : m_properties(properties)
{
}

ConfigurationAndProcessDataBase::~ConfigurationAndProcessDataBase() = default;

QSharedPointer<ConfigurationDataValue>
ConfigurationAndProcessDataBase::getLeafConfigurationData(const QString& path)
{
    const QVariant value = getLeafByPath(path)->getDataProperty(
        ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue());
    if (!value.isValid())
    {
        return QSharedPointer<ConfigurationDataValue>();
    }
    return QSharedPointer<ConfigurationDataValue>::create(value);
}

QSharedPointer<ConfigurationAndProcessDataBase>
ConfigurationAndProcessDataBase::getLeafByPath(const QString& path)
{
    QVariantMap properties = m_properties;
    const QStringList words = path.split(QLatin1Char('/'));
    for (const QString& word : words)
    {
        // What is no map has no properties: its empty map ends the way down by itself. An empty
        // word is never found, as in the JSON readers.
        properties = word.isEmpty() ? QVariantMap() : properties.value(word).toMap();
    }
    return QSharedPointer<ConfigurationAndProcessDataBase>::create(properties);
}

QVariant ConfigurationAndProcessDataBase::getDataProperty(const QString& key)
{
    return m_properties.value(key);
}
