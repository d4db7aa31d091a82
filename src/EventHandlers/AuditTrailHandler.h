#pragma once

#include "Definitions/EventlistHandlerExport.h"
#include "EventHandlers/EventHandlerBaseClass.h"

/// Writes audit trail entries: who did what. The only producer whose entries carry a user.
/// See EventHandlerBaseClass for failures, threads and ownership.
///
/// Mind two orders that compile either way: the user stands BEFORE the description, and the url
/// arguments stand behind the place where they are looked up, with the literal arguments LAST.
class EVENTLISTHANDLER_EXPORT AuditTrailHandler : public EventHandlerBaseClass
{
public:
    /// The arguments are those of EventHandlerBaseClass.
    AuditTrailHandler(const QString& moduleName, const TextManager& textManager,
                      QSharedPointer<ConfigurationAndProcessDataBase>& descriptionalLeaf,
                      const QString& description, const QStringList& keywords);
    AuditTrailHandler(const QString& moduleName, const TextManager& textManager,
                      const QString& description, const QStringList& keywords);
    ~AuditTrailHandler() override;

    /// Logs one entry without a user.
    /// \param arguments  what fills the placeholders of the description
    void logAuditTrail(const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// Logs one entry of a user.
    /// \param user  who did it; a claim of this module that nobody verifies
    void logAuditTrail(const QString& user,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// \param root          tree of the url arguments; may be null when there are none
    /// \param urlArguments  placeholder, and path of a leaf that holds a text object
    void logAuditTrail(const QString& user, QSharedPointer<ConfigurationAndProcessDataBase>& root,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// \param textManager   texts of the url arguments; need not be this module's
    /// \param urlArguments  placeholder, and text url
    void logAuditTrail(const QString& user, const TextManager& textManager,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);

    /// The same with a description for this one entry, which becomes its event id too.
    void logAuditTrail(const QString& user, const QString& description,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logAuditTrail(const QString& user, const QString& description,
                       QSharedPointer<ConfigurationAndProcessDataBase>& root,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
    void logAuditTrail(const QString& user, const QString& description,
                       const TextManager& textManager,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& urlArguments,
                       const QList<EventlistHandlerStructs::stDescriptionArgument>& arguments);
};
