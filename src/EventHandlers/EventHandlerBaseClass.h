#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerExport.h"
#include "Definitions/EventlistHandlerStructs.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventWrite/EventHandlerWrite.h"

#include <QList>
#include <QObject>
#include <QSharedPointer>
#include <QString>
#include <QStringList>
#include <QVariantMap>

class ConfigurationAndProcessDataBase;
class QJsonObject;
class TextManager;

/// What the four producers have in common: AlarmHandler, FaultHandler, EventHandler and
/// AuditTrailHandler. A module makes one producer for each thing that it watches, and owns it.
///
/// A producer knows the text url of its description, its keywords, its icons and its source tags,
/// and remembers whether the watched condition is on. Each report becomes one event, which carries
/// its description in all languages, finished and with placeholders.
///
/// Where texts come from. The description comes from the text manager given at construction, or,
/// when a configuration tree was given, from a leaf of that tree. A url argument comes from the
/// place that is given with it, which may be another module's text manager or tree.
///
/// Failure: no operation returns or throws anything. A text that is missing, an argument that
///          cannot be found and an event that cannot be sent give warnings in the message log; the
///          event goes on whenever it still can.
/// Blocks:  never on the bus road; the first producer of a process waits at most 1 s for the bus
///          (see DBusConnectorBase). On the file road until the file is durable.
/// Threads: the one that made it. Different producers may work on different threads.
/// Owner:   the text manager stays the module's and must outlive the producer. Destroying a
///          producer logs nothing, also while its condition is on.
class EVENTLISTHANDLER_EXPORT EventHandlerBaseClass : public QObject
{
    Q_OBJECT
public:
    /// A producer whose description is a path in a configuration tree.
    /// \param moduleName         module that reports the events
    /// \param textManager        the module's texts, for url arguments and as the place to return
    ///                           to
    /// \param descriptionalLeaf  the tree; null takes the description from the text manager
    /// \param description        path of the leaf that holds the description. It must exist.
    /// \param keywords           keywords of every event; "Firmware" is added behind them unless it
    ///                           is there
    EventHandlerBaseClass(const QString& moduleName, const TextManager& textManager,
                          QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                          const QString& description, const QStringList& keywords);

    /// A producer whose description is a text url of the text manager.
    EventHandlerBaseClass(const QString& moduleName, const TextManager& textManager,
                          const QString& description, const QStringList& keywords);
    ~EventHandlerBaseClass() override;
    Q_DISABLE_COPY(EventHandlerBaseClass)

    /// Turns all later events of this producer to spool files; there is no way back.
    /// \param fileName  name of the spool files without folder and ending, each event replacing the
    ///                  one before it; empty means numbered files. Must not come from outside the
    ///                  module.
    void setEventToFile(const QString& fileName);

    /// Replaces the icon of a state.
    /// Failure: a state that is none gives a warning and changes nothing.
    void setIconType(EventlistHandlerEnums::State state, const QString& icon);

    /// Replaces the description, from the next event on. Alarms and faults refuse this.
    virtual void changeDescription(const QString& description);

    /// Replaces the configuration tree of the description; null returns to the text manager.
    void setDescriptionalLeaf(const QSharedPointer<ConfigurationAndProcessDataBase>& leaf);

    /// The type given with the last source tag that was really added.
    EventlistHandlerEnums::SourceHashType getSourceHashType() const;

    /// The source tags, in the order they were added.
    QStringList getAllSourceTags() const;

    /// Adds a keyword to every later event, unless it is there already. Capitals count.
    void addKeyword(const QString& keyword);

    /// Adds a source to which the events of this producer belong. An event carries the hashes of
    /// the tags, one behind the other, and the one type of them all.
    /// \param tag   a name in the form of a url; a tag that is there already changes nothing, not
    ///              even the type
    /// \param type  replaces the type of the producer
    void addSourceTag(const QString& tag, EventlistHandlerEnums::SourceHashType type);

    /// Removes a source tag. The type stays.
    void removeSourceTag(const QString& tag);

    /// Removes all source tags. The type stays.
    void removeAllSourceTags();

    /// Logs one event with a description of its own, which becomes its event id too.
    /// \param description  text url, or path of a configuration leaf; this producer's own stays
    /// \param arguments    what fills the placeholders
    /// \param user         user to whom the event belongs, or empty
    /// \param alarmId      identity of the alarm or fault, or empty
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QString& description,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const QString& user, const QString& alarmId);

    /// Logs one event with this producer's description.
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const QString& user, const QString& alarmId);

    /// The same two with url arguments from a configuration tree. Mind the order: here the literal
    /// arguments stand BEFORE the place and the url arguments behind it; in the derived classes it
    /// is the other way round.
    /// \param root          the tree of the url arguments; may be null when there are none
    /// \param urlArguments  placeholder, and path of a leaf that holds a text object
    /// Failure: a path that is not there, and a leaf that holds no text object, give one warning
    ///          each and leave their placeholder in the text; the event goes on.
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QString& description,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  QSharedPointer<ConfigurationAndProcessDataBase>& root,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QString& user, const QString& alarmId);
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  QSharedPointer<ConfigurationAndProcessDataBase>& root,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QString& user, const QString& alarmId);

    /// The same two with url arguments from a text manager, which need not be this producer's.
    /// \param urlArguments  placeholder, and text url
    /// Failure: none. A url that has no text fills its placeholder with an empty text.
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QString& description,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const TextManager& textManager,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QString& user, const QString& alarmId);
    void logEvent(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                  const TextManager& textManager,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QString& user, const QString& alarmId);

    /// Tells the condition. Logs an event only when it differs from the condition told last; a new
    /// producer starts with false. True logs the state `active`, false `inactive`, both with this
    /// producer's description and without a user. What was told counts as told also when the event
    /// is lost.
    void changeState(bool state, EventlistHandlerEnums::EventType type,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                     const QString& alarmId);

    /// The same with url arguments, in the order and with the failures of logEvent. When the
    /// condition has not changed, nothing is looked up.
    void changeState(bool state, EventlistHandlerEnums::EventType type,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                     QSharedPointer<ConfigurationAndProcessDataBase>& root,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                     const QString& alarmId);
    void changeState(bool state, EventlistHandlerEnums::EventType type,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
                     const TextManager& textManager,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                     const QString& alarmId);

    /// The text object of a description, from the place where this producer's descriptions are: one
    /// text per language. Empty when there is none.
    QVariantMap getDescriptionTextList(const QString& description) const;

private:
    void createSourceHashes();
    bool takeState(bool state);
    const QString* iconOf(EventlistHandlerEnums::State state) const;
    void logTexts(
        EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
        const QString& description, const QVariantMap& textObject,
        const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments,
        const QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>& urlArguments,
        const QString& user, const QString& alarmId);
    void logEventIntern(EventlistHandlerEnums::EventType type, EventlistHandlerEnums::State state,
                        const QString& eventId, const QString& user, const QJsonObject& metaData,
                        const QString& alarmId);

    QSharedPointer<ConfigurationAndProcessDataBase> m_descriptionalLeaf;
    const TextManager& m_textManager;
    EventHandlerWrite m_eventWriter;
    QString m_description;
    QString m_iconActive;
    QString m_iconInactive;
    QString m_iconNeutral;
    QStringList m_keywords;
    bool m_currentState = false;
    QStringList m_sourceTags;
    EventlistHandlerEnums::SourceHashType m_sourceHashType =
        EventlistHandlerEnums::SourceHashType::noSourceHash;
    QString m_sourceHashes;
};
