#pragma once

#include "core/Event.h"

#include <QByteArray>

class TextManagerBase;

namespace eventlistd
{

/// An event that was understood, or the reason why it was not.
struct DecodedEvent
{
    Event event;
    QString error; ///< empty: the event is good

    bool isGood() const { return error.isEmpty(); }
};

/// Reads events as they come on the two roads. Everything that comes is hostile until checked.
class EventDecoder
{
public:
    /// \param texts  the service's own language files, for events that bring no text. Must outlive
    ///               this.
    explicit EventDecoder(const TextManagerBase& texts);

    /// The eight arguments of the method "logEvent".
    /// Failure: an error when type or state is none or when the event is too large. Additional data
    ///          that cannot be read costs only what it holds: the event itself is worth keeping.
    static DecodedEvent fromBus(const QStringList& eventAttributes, const QString& timestamp,
                                const QString& moduleName, const QString& description,
                                const QStringList& keywords, const QString& user,
                                const QString& additionalData, const QString& alarmId);

    /// The content of a spool file: one JSON object with exactly the thirteen members of an event,
    /// each of its type. Metadata in the emergency form is resolved.
    /// Failure: an error; nothing of such a file is kept.
    DecodedEvent fromSpoolFile(const QByteArray& content) const;

private:
    const TextManagerBase& m_texts;
};

} // namespace eventlistd
