#include "Platform/ConfigurationDataValue.h"

ConfigurationDataValue::ConfigurationDataValue(const QVariant& value) : m_value(value) {}

ConfigurationDataValue::~ConfigurationDataValue() = default;

QVariant ConfigurationDataValue::getValue() const
{
    return m_value;
}
