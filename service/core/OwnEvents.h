#pragma once

#include "core/Event.h"

#include <QMap>
#include <QVariantMap>

class TextManagerBase;

namespace eventlistd
{

/// The entries that the service itself writes into the list, so that a reader of the list is not
/// left with a riddle: why it is short, why something is missing, who silenced the detector.
class OwnEvents
{
public:
    /// \param texts  language files with the service's texts. Must outlive this. A text that is
    ///               missing there is answered with its url.
    explicit OwnEvents(const TextManagerBase& texts);

    /// The first start of the service after the device was switched on.
    Event powerOn() const;
    /// Any further start of the service.
    Event restarted() const;
    /// The list was deleted; stands first in the new one.
    Event eventlistDeleted() const;
    /// Events were refused or lost by the service.
    /// \param who    what they came from
    /// \param count  how many, since the last such entry
    Event eventsDropped(const QString& who, qint64 count) const;
    /// Events are not taken any more, or again.
    Event processingSuppressed() const;
    Event processingResumed() const;
    /// The database failed, or works again.
    Event databaseFault(bool isActive) const;
    /// An alarm found no room in the alarm list.
    Event alarmlistOverflow() const;
    /// \param alarm  what was acknowledged
    Event alarmAcknowledged(const Event& alarm, const QString& user) const;
    Event centralDetector(bool isActive, const QString& user) const;

    /// The text of a url in one language; all languages as JSON text when that is empty.
    QString text(const QString& url, const QString& language) const;

    /// The answer that lists the types of events with their names.
    QVariantMap eventTypes(const QString& language) const;

private:
    Event make(const QString& url, const QStringList& keywords, const QString& icon,
               const QMap<QString, QString>& arguments = {}) const;
    QVariantMap textObject(const QString& url) const;

    const TextManagerBase& m_texts;
};

} // namespace eventlistd
