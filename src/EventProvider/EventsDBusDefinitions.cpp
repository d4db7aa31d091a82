#include "EventProvider/EventsDBusDefinitions.h"

EventsDBusDefinitions::EventsDBusDefinitions() = default;

EventsDBusDefinitions::~EventsDBusDefinitions() = default;

const QString& EventsDBusDefinitions::getObjectNameEvents()
{
    static const QString value = QStringLiteral("Events");
    return value;
}

const QString& EventsDBusDefinitions::getInterfaceNameEvents()
{
    static const QString value = QStringLiteral("Interface.Events");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyModuleName()
{
    static const QString value = QStringLiteral("moduleName");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyTextSource()
{
    static const QString value = QStringLiteral("textSource");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyUrl()
{
    static const QString value = QStringLiteral("url");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyObjectName()
{
    static const QString value = QStringLiteral("ObjectName");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyInstanceName()
{
    static const QString value = QStringLiteral("InstanceName");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyPlaceholder()
{
    static const QString value = QStringLiteral("Placeholder");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyArgument()
{
    static const QString value = QStringLiteral("Argument");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyArguments()
{
    static const QString value = QStringLiteral("Arguments");
    return value;
}

const QString& EventsDBusDefinitions::getEventDBusKeyUrlArguments()
{
    static const QString value = QStringLiteral("UrlArguments");
    return value;
}
