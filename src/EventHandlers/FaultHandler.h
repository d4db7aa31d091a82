#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "EventHandlers/EventHandlerBaseClass.h"

/// Reports one fault: something that does not work. As an AlarmHandler, with event type and icons
/// of a fault.
///
/// A module may tell the condition as often as it polls; only a change makes an event. The events
/// of one object carry one alarm id, new with each object and each start of the module, and its
/// text url as event id, and belong together by these. The description is fixed at construction.
///
/// A new object is off, whatever the service knows from an earlier run, and destroying one that is
/// on tells the service nothing. See EventHandlerBaseClass for failures, threads and ownership.
class EVENTLISTHANDLER_EXPORT FaultHandler : public EventHandlerBaseClass
{
public:
    /// The arguments are those of EventHandlerBaseClass.
    FaultHandler(const QString& moduleName, const TextManager& textManager,
                 QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                 const QString& description, const QStringList& keywords);
    FaultHandler(const QString& moduleName, const TextManager& textManager,
                 const QString& description, const QStringList& keywords);
    ~FaultHandler() override;

    using EventHandlerBaseClass::changeState;

    /// Tells the condition: true when the fault is there. Nothing happens unless it has changed.
    /// \param arguments  what fills the placeholders of the description
    void changeState(bool state,
                     const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// The same with url arguments. Mind the order of the two lists, which have one type: the url
    /// arguments stand behind the place where they are looked up, and the literal arguments LAST.
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

    /// Refused, with a warning: the description belongs to the identity of the fault.
    void changeDescription(const QString& description) override;

private:
    QString m_alarmId;
};
