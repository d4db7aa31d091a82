#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"
#include "Definitions/EventlistHandlerStructs.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventProvider/EventsDBusDefinitions.h"
#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include "Platform/ConfigurationDataAndProcessDescriptionAccess.h"
#include "Platform/DBusServiceProviderBaseClass.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <QVector>

class TextManager;

/// Base of a module's object on the bus through which other processes log events in the module's
/// name. They send the fields of an event and a dictionary that only names its texts; this class
/// finds the texts in the module's language files or configuration and sends the finished event on.
///
/// The object lies under the module's bus name, path "/Events", interface "Interface.Events". What
/// it offers is decided by the class that a module derives: each public slot is a D-Bus method,
/// each signal a D-Bus signal. A deriving class writes
///
///     class PumpEvents : public EventsDBusProviderBaseClass
///     {
///         Q_OBJECT
///         Q_CLASSINFO("D-Bus Interface", "Interface.Events")
///     public:
///         explicit PumpEvents(const QVector<TextManagerData>& texts)
///             : EventsDBusProviderBaseClass("PumpControl", "PumpControl", texts, "") {}
///     public Q_SLOTS:
///         void logEvent(const QStringList& eventAttributes, const QString& timestamp,
///                       const QString& moduleName, const QVariantMap& descriptionData,
///                       const QStringList& keywords, const QString& user, const QString& alarmId)
///         {
///             logEventWithDescriptionInDBusFormat(eventAttributes, timestamp, moduleName,
///                                                 descriptionData, keywords, user, alarmId);
///         }
///     Q_SIGNALS:
///         void eventLogged(const QString& moduleName);
///     };
///
/// The Q_CLASSINFO line is needed for signals: without it Qt sends them under a name of its own. It
/// must name this interface; it is not inherited from here.
///
/// The event. Nothing is added to what the caller gives: time, module name, icon, keywords, user
/// and alarm id are his. It always takes the bus road.
/// Failure: warnings in the message log only; no caller learns of one.
/// Blocks:  while texts and configuration are read; never for the central service.
/// Threads: the one that made it, which needs an event loop. One event at a time.
class EVENTLISTHANDLER_EXPORT EventsDBusProviderBaseClass : public DBusServiceProviderBaseClass
{
    Q_OBJECT
public:
    /// The texts that a dictionary may select by its key "ObjectName".
    struct TextManagerData
    {
        QString objectName;             ///< compared exactly; the first of two equal names wins
        const TextManager* textManager; ///< not owned
    };

    /// Publishes the object: see DBusServiceProviderBaseClass.
    /// \param moduleName               this module. Dictionaries that name another one are refused.
    /// \param objectName               entry of the list that holds the module's own texts
    /// \param textManagerDataList      kept by reference: it must outlive this object, unchanged
    /// \param configurationPathPrefix  stands in front of the object name when a configuration
    ///                           folder is looked up, with nothing between them: end it with "/"
    ///                           when it names a folder. May be empty.
    EventsDBusProviderBaseClass(const QString& moduleName, const QString& objectName,
                                const QVector<TextManagerData>& textManagerDataList,
                                const QString& configurationPathPrefix);
    ~EventsDBusProviderBaseClass() override;

    /// The text manager of an object name, or null.
    const TextManager* getTextManager(const QString& objectName) const;

    /// Logs an event with a description dictionary as it came from the bus, containers and all.
    /// This is what a slot calls. The dictionary may be of any shape; what does not fit counts as
    /// missing.
    /// \param eventAttributes  three strings: event type and state as decimal text, and the icon
    ///                         name
    /// \param timestamp        time of the event, as IsoDateConverter gives it
    /// \param moduleName       module that reports the event, which need not be this one
    /// \param descriptionData  the dictionary: see convertDescriptionData()
    /// \param user             user to whom the event belongs, or empty
    /// \param alarmId          identity of the alarm or fault, or empty
    void logEventWithDescriptionInDBusFormat(const QStringList& eventAttributes,
                                             const QString& timestamp, const QString& moduleName,
                                             const QVariantMap& descriptionData,
                                             const QStringList& keywords, const QString& user,
                                             const QString& alarmId);

    /// The same with a dictionary of plain values: lists are QVariantList, entries QVariantMap.
    ///
    /// The event is always logged. When its text is not found, for whatever reason, the text is the
    /// key that was looked for (generateUrl()), under the language of last resort, and without
    /// arguments. The event id is the dictionary's "url".
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QVariantMap& descriptionData,
                  const QStringList& keywords, const QString& user, const QString& alarmId,
                  const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

    /// Logs an event of the module itself, with a text url of its own texts and literal arguments.
    /// Failure: when the object name of the constructor is not in the list, one warning, and the
    ///          event is dropped. A url without a text becomes the text itself, after a warning.
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QString& url,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const QStringList& keywords, const QString& user, const QString& alarmId,
                  const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

    /// The same with event type, state and icon by themselves. The time is the caller's here too.
    void logEvent(EventlistHandlerEnums::EventType eventType, EventlistHandlerEnums::State state,
                  const QString& iconType, const QString& timestamp, const QString& moduleName,
                  const QString& url,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const QStringList& keywords, const QString& user, const QString& alarmId,
                  const QString& sourceHashes,
                  EventlistHandlerEnums::SourceHashType sourceHashType);

    /// Reads the five fixed keys of a dictionary, or of an entry of "UrlArguments", in this order:
    ///
    ///     "textSource"    i  EventsDBusDefinitions::TextSource
    ///     "moduleName"    s  module that owns the texts: this provider's, not empty
    ///     "ObjectName"    s  entry of the list of text managers, or folder; not empty
    ///     "InstanceName"  s  name of the configuration instance; may be empty
    ///     "url"           s  text url, or path of the configuration leaf; not empty
    ///
    /// Returns true when moduleName, objectName and url are not empty afterwards.
    /// Failure: a missing key, and a textSource that is no number, give one warning each and leave
    ///          their output as it was.
    bool convertDescriptionData(EventsDBusDefinitions::TextSource& textSource, QString& moduleName,
                                QString& objectName, QString& instanceName, QString& url,
                                const QVariantMap& descriptionData) const;

    /// Reads the two optional lists first, then the five keys:
    ///
    ///     "Arguments"     av of a{sv}  "Placeholder" s, "Argument" s
    ///     "UrlArguments"  av of a{sv}  "Placeholder" s, and the five fixed keys
    ///
    /// Failure: a value that is no list gives one warning and leaves its output as it was.
    bool convertDescriptionData(EventsDBusDefinitions::TextSource& textSource, QString& moduleName,
                                QString& objectName, QString& instanceName, QString& url,
                                QVariantList& arguments, QVariantList& urlArguments,
                                const QVariantMap& descriptionData) const;

    /// Unpacks a list as it came from the bus into a QVariantList of QVariantMap, which it appends
    /// to result. What is not an av holds no entries, an element that is not an a{sv} is an empty
    /// entry.
    void convertArguments(QVariantList& result, const QVariant& arguments) const;

    /// Appends one record for each entry that is not empty; a missing key gives an empty string.
    /// Failure: an element that is no map gives one warning and is skipped.
    void
    convertDescriptionArgumentData(QList<EventlistHandlerStructs::stDescriptionArgument>& result,
                                   const QVariantList& arguments) const;

    /// Looks the text of each entry up and appends a record. A text that is not found is the key
    /// that was looked for, under the language of last resort.
    /// Failure: an element that is no map gives one warning and is skipped; an entry without
    ///          module, object or url is skipped after the warnings about its missing keys.
    void convertDescriptionUrlArgumentData(
        QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>& result,
        const QVariantList& urlArguments) const;

    /// The key that stands in for a text that was not found: module, object, instance and url
    /// joined by "/". The module is always followed by "/"; an empty object or instance is left
    /// out.
    QString generateUrl(const QString& moduleName, const QString& objectName,
                        const QString& instanceName, const QString& url) const;

    /// Finds a text in all languages. The parameters are those of convertDescriptionData().
    /// Failure: an empty map; after a warning, unless it is only a text url without a text or a
    ///          leaf that holds an empty map. Texts of another module than this provider's are
    ///          never found.
    QVariantMap getTextFromLanguageFileOrConfiguration(EventsDBusDefinitions::TextSource textSource,
                                                       const QString& moduleName,
                                                       const QString& objectName,
                                                       const QString& instanceName,
                                                       const QString& url) const;

private:
    void
    send(const QStringList& eventAttributes, const QString& timestamp, const QString& moduleName,
         const QVariantMap& textObject,
         const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
         const QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>& urlArguments,
         const QStringList& keywords, const QString& user, const QString& url,
         const QString& alarmId, const QString& sourceHashes,
         EventlistHandlerEnums::SourceHashType sourceHashType);

    const QString m_objectName;
    const QVector<TextManagerData>& m_textManagerDataList;
    const QString m_configurationPathPrefix;
    EventlistHandlerDBusConnectorWrite m_connector;
    ConfigurationDataAndProcessDescriptionAccess m_configurationAccess;
};
