#pragma once

#include "Platform/PlatformExport.h"

#include <QSharedPointer>
#include <QString>
#include <QVariant>
#include <QVariantMap>

class ConfigurationDataValue;

/// A node of a module's configuration tree. A node has properties, by key, and those that are maps
/// are its children too. A leaf is a node with the property
/// ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue(); a text that was entered in
/// configuration is a leaf whose value is a text object:
///
///     {"Limits": {"High": {"value": {"lang_de": "Grenzwert überschritten", "lang_en": "Limit exceeded"}}}}
///
/// Held by QSharedPointer. A tree does not change after it is made, so any thread may read it.
class PLATFORM_EXPORT ConfigurationAndProcessDataBase
{
public:
    /// \param properties  the properties of this node; children are values that are maps themselves
    explicit ConfigurationAndProcessDataBase(const QVariantMap& properties = QVariantMap());
    virtual ~ConfigurationAndProcessDataBase();

    /// The value of the leaf at this path, words joined by "/", such as "Limits/High".
    /// Failure: null when the tree has no such element or the element has no value.
    QSharedPointer<ConfigurationDataValue> getLeafConfigurationData(const QString& path);

    /// The node at this path.
    /// Failure: a node without properties when the tree has no such element; never null.
    virtual QSharedPointer<ConfigurationAndProcessDataBase> getLeafByPath(const QString& path);

    /// A property of this node.
    /// Failure: an invalid QVariant when the node has no such property.
    virtual QVariant getDataProperty(const QString& key);

private:
    QVariantMap m_properties;
};
