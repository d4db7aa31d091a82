#pragma once

#include "core/AlarmList.h"
#include "core/CoalescedSignal.h"
#include "core/Database.h"
#include "core/EventDecoder.h"
#include "core/EventStore.h"
#include "core/HashRegister.h"
#include "core/OwnEvents.h"
#include "core/SenderRegistry.h"
#include "core/SpoolReader.h"
#include "core/WorkQueue.h"

#include <QMap>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

class TextManagerBase;

namespace eventlistd
{

/// The central service without its bus: what comes in is queued and written in batches, what is
/// asked is answered from the database, what has changed is told by signals.
///
/// What changes the lists is only queued by a call, so that the caller goes on reading the bus; the
/// batch follows as soon as the event loop has nothing else to do, but not before a short time has
/// passed since the last one. A query first has everything written that came before it.
/// Threads: the one that made it.
class EventlistService : public QObject
{
    Q_OBJECT
public:
    struct Settings
    {
        QString databasePath;
        SpoolReader::Settings spool;
        qint64 maximumRows = 1000000;
        qint64 maximumBytes = qint64(1024) * 1024 * 1024;
        int maximumAlarms = 10000;
        qint64 maximumAlarmSize = 64 * 1024 * 1024;
        int maximumHashes = 10000;
        /// What may wait in memory while the database takes nothing, in UTF-16 units; and how much
        /// more of acknowledgements.
        qint64 maximumQueue = 64 * 1024 * 1024;
        qint64 acknowledgementReserve = 8 * 1024 * 1024;
        /// Two batches begin at least this far apart.
        int batchIntervalMs = 20;
        /// A changed list is told at most once in this time.
        int changeIntervalMs = 100;
        /// The same as at the last start: the device was not switched off in between.
        QString bootId;
        /// Program that is called with "--check <database>" when the file is large, and ends with
        /// exitCodeDamaged when it is damaged. Empty: such a file is not checked as a whole.
        QString checkProgram;
        SenderRegistry::Limits senderLimits;
    };

    /// \param texts  language files with the service's texts. Must outlive this.
    EventlistService(const Settings& settings, const TextManagerBase& texts,
                     QObject* parent = nullptr);
    ~EventlistService() override;

    /// Opens the database, logs the start, takes what lies in the spool folder. A database that
    /// cannot be opened now, on a full disk say, is tried again each second; events wait meanwhile.
    /// Failure: false, with a warning: another process has the database, or there is no folder.
    bool start();

    /// Writes what is queued, and notes that the end was an orderly one.
    void stop();

    SenderRegistry& senders() { return m_senders; }

    /// To be called whenever the service has become reachable: what changed while nobody could hear
    /// it is told now.
    void onReachable();

    /// Counts an event of a sender before anything is spent on it.
    /// \return false when it is to be dropped
    bool admitsEvent(const QString& sender);

    // What changes something. All of it is queued.
    void takeEvent(const DecodedEvent& decoded, const QString& sender);
    void deleteEventlist(const QString& sender);
    void acknowledgeAlarms(const QStringList& alarmIds, const QString& user, const QString& sender);
    void acknowledgeCentralDetector(const QString& user, const QString& sender);

    /// While it is suppressed, events of the bus are dropped and counted, and spool files stay
    /// where they are. Ends with the service: a device must not stay silent for ever.
    void suppressEventProcessing(bool isSuppressed, const QString& sender);

    // What asks. The failure of the database is an error text, and an empty answer.
    QVariantMap events(const EventFilter& filter, QString& error);
    QVariantMap eventTypes(const QString& language) const;
    QVariantMap alarms(const QString& language, QString& error);
    QVariantMap alarmState();

    /// Remembers a hash and tells its last icon.
    HashRegister::Result registerHash(const QString& hash);

    /// Writes everything that is queued.
    /// Failure: false; it stays queued.
    bool flush();

Q_SIGNALS:
    void eventlistChanged();
    void alarmlistChanged();
    /// After a change of at least one of them, and what they were when they were told last.
    void alarmStatesChanged(const AlarmList::States& now, const AlarmList::States& before);
    void iconAvailable(const QString& hash, const QString& icon);

private:
    /// What a transaction changes beside the file, and what is to be told after it.
    struct Changes
    {
        bool hasChangedEvents = false;
        bool hasChangedAlarms = false;
        bool isTellingAllWanted = false;
        /// The last alarm found no room of its own, which stands in the event list already.
        bool isAlarmlistFull = false;
        QMap<QString, QString> announcements;
    };

    Database::Opened openDatabase();
    void reopenDatabase();
    bool loadAll();
    void logStart();
    void enqueue(Work work);
    void enqueueAcknowledgement(Work work);
    void push(Work work);
    void logOwn(const Event& event);
    void scheduleBatch();
    void onBatchTimer();
    void onSecond();
    void purgeSome();
    bool writeBatch(int count);
    bool writeOne(Work& work);
    bool writePowerOn(Work& work);
    bool writeEvent(Event& event);
    bool writeOwn(const Event& event);
    bool writeAudit(Event entry, const Work& work);
    bool writeAcknowledgement(const Work& work);
    bool storeSpoolItems(QVector<SpoolReader::Item>& items);
    bool begin();
    void rollback();
    bool commit();
    void onFailure();
    void beginWaiting();
    void onStoring();
    void replaceDatabase();
    void announce();
    void checkDatabaseBeside();

    const Settings m_settings;
    OwnEvents m_ownEvents;
    EventDecoder m_decoder;
    Database m_database;
    EventStore m_events;
    AlarmList m_alarms;
    HashRegister m_hashes;
    SenderRegistry m_senders;
    SpoolReader m_spool;

    // What waits to be written.
    WorkQueue m_queue;
    QTimer m_batchTimer;
    qint64 m_lastBatchMs = 0;

    // What the open transaction has changed, and as it was when that began.
    Changes m_changes;
    Changes m_changesBefore;
    // What is told after it.
    AlarmList::States m_toldStates;
    CoalescedSignal m_eventlistSignal;
    CoalescedSignal m_alarmlistSignal;

    // Trouble.
    QTimer m_secondTimer;
    QTimer m_purgeTimer;
    bool m_isFailing = false;
    bool m_isStartLogged = false;
    bool m_isSuppressed = false;
    qint64 m_lostEvents = 0;
    qint64 m_suppressedEvents = 0;
    qint64 m_refusedEvents = 0;
    LogLimiter m_refusalLimiter;
    LogLimiter m_acknowledgementLimiter;
};

} // namespace eventlistd
