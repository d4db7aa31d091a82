#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "EventHandlers/EventHandlerBaseClass.h"

/// Reports what is neither an alarm nor a fault: one-shot events, and conditions that come and go.
/// See EventHandlerBaseClass for failures, threads and ownership.
///
/// Mind the order wherever there are url arguments: they stand behind the place where they are
/// looked up, and the literal arguments LAST. The two lists have one type, so that a mix-up
/// compiles.
class EVENTLISTHANDLER_EXPORT EventHandler : public EventHandlerBaseClass
{
public:
    /// The arguments are those of EventHandlerBaseClass.
    EventHandler(const QString& moduleName, const TextManager& textManager,
                 QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                 const QString& description, const QStringList& keywords);
    EventHandler(const QString& moduleName, const TextManager& textManager,
                 const QString& description, const QStringList& keywords);
    ~EventHandler() override;

    using EventHandlerBaseClass::changeState;
    using EventHandlerBaseClass::logEvent;

    /// Tells the condition: true when it is there. Nothing happens unless it has changed.
    /// \param arguments  what fills the placeholders of the description
    void changeState(bool state,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// \param root          tree of the url arguments; may be null when there are none
    /// \param urlArguments  placeholder, and path of a leaf that holds a text object
    void changeState(bool state, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// \param textManager   texts of the url arguments; need not be this module's
    /// \param urlArguments  placeholder, and text url
    void changeState(bool state, const TextManager& textManager,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// Logs one event with the state `neutral`, each time. The condition of changeState() is not
    /// touched.
    void logEvent(const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logEvent(QSharedPointer<ConfigurationAndProcessDataBase>& root,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logEvent(const TextManager& textManager,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// The same with a description for this one event, which becomes its event id too.
    void logEvent(const QString& description,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logEvent(const QString& description, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logEvent(const QString& description, const TextManager& textManager,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                  const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
};
