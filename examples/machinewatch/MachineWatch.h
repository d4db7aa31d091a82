#pragma once

#include "machinewatch/Readings.h"

#include "EventHandlers/AlarmHandler.h"
#include "EventHandlers/AuditTrailHandler.h"
#include "EventHandlers/EventHandler.h"
#include "EventHandlers/FaultHandler.h"

#include <QString>

#include <map>
#include <memory>

class TextManager;

/// Watches this machine: an alarm for each reading that passes its limit, a fault while the watched
/// folder is missing, an audit trail entry when an operator changes a limit. One producer for each
/// thing that is watched.
class MachineWatch
{
public:
    /// \param texts   must outlive this
    /// \param folder  whose disk space is watched; it may come and go
    MachineWatch(const TextManager& texts, const QString& folder);

    /// Takes the readings and tells them to all producers.
    void look();

    /// Reports what was read last, into a spool file: a report of every hour is not worth the bus.
    void report();

    /// What an operator does.
    /// \param name  "load", "memory" or "disk"
    /// Failure: false for any other name.
    bool setLimit(const QString& name, double limit, const QString& user);

    /// An event whose text url is in no language file: the url itself becomes the text.
    void logWithoutText();

    /// One line about the readings, for whoever watches the watcher.
    QString line() const;

private:
    struct Watched
    {
        QString nameUrl; ///< text url of the reading's name
        QString unit;
        double limit;
        double reading;
        std::unique_ptr<AlarmHandler> alarm;
    };

    void addWatched(const QString& name, const QString& nameUrl, const QString& unit, double limit);
    QString diskText() const;

    const TextManager& m_texts;
    const QString m_folder;
    Readings m_readings;
    std::map<QString, Watched> m_watched;
    EventHandler m_events;
    EventHandler m_reports;
    FaultHandler m_folderMissing;
    AuditTrailHandler m_limitChanged;
};
