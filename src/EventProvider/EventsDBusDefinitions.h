#pragma once

#include "Definitions/EventlistHandlerExport.h"

#include <QString>

/// The names of a provider's interface and the keys of the description dictionary that its clients
/// send. The mix of small and capital first letters belongs to the wire format.
/// Threads: any. The references stay valid until the process ends.
class EVENTLISTHANDLER_EXPORT EventsDBusDefinitions
{
public:
    /// Where the texts of a description are. Travels as a number, of which every one but 0 means
    /// `configuration`.
    enum TextSource : int
    {
        languageFile = 0, ///< in a language file of the provider's module
        configuration = 1 ///< in a leaf of the module's configuration
    };

    EventsDBusDefinitions();
    virtual ~EventsDBusDefinitions();

    // The provider's object on the bus.
    static const QString& getObjectNameEvents();    ///< "Events"
    static const QString& getInterfaceNameEvents(); ///< "Interface.Events"

    // Keys of the description dictionary and of its argument entries.
    static const QString& getEventDBusKeyModuleName();   ///< "moduleName"
    static const QString& getEventDBusKeyTextSource();   ///< "textSource"
    static const QString& getEventDBusKeyUrl();          ///< "url"
    static const QString& getEventDBusKeyObjectName();   ///< "ObjectName"
    static const QString& getEventDBusKeyInstanceName(); ///< "InstanceName"
    static const QString& getEventDBusKeyPlaceholder();  ///< "Placeholder"
    static const QString& getEventDBusKeyArgument();     ///< "Argument"
    static const QString& getEventDBusKeyArguments();    ///< "Arguments"
    static const QString& getEventDBusKeyUrlArguments(); ///< "UrlArguments"
};
