#include "core/EventlistService.h"

#include "core/DatabaseCheck.h"
#include "core/EventColumns.h"
#include "core/MonotonicClock.h"
#include "core/Names.h"
#include "core/StorableText.h"

#include <QDateTime>
#include <QDebug>

#include <algorithm>
#include <utility>

namespace eventlistd
{

namespace
{
constexpr int eventsPerTransaction = 5000;
constexpr int credentialsWaitMs = 100;
constexpr int credentialsPollMs = 5;
constexpr int retryMs = 1000;
constexpr int purgeIntervalMs = 20;
constexpr int rowsPerPurge = 2000;

QString cleanKey()
{
    return QStringLiteral("clean_stop");
}

QString bootKey()
{
    return QStringLiteral("boot_id");
}
} // namespace

EventlistService::EventlistService(const Settings& settings, const TextManagerBase& texts,
                                   QObject* parent)
    : QObject(parent),
      m_settings(settings),
      m_ownEvents(texts),
      m_decoder(texts),
      m_database(settings.databasePath),
      m_events(m_database, settings.maximumRows, settings.maximumBytes),
      m_alarms(m_database, settings.maximumAlarms, settings.maximumAlarmSize),
      m_hashes(m_database, settings.maximumHashes),
      m_senders(settings.senderLimits),
      m_spool(settings.spool, m_decoder,
              [this](QVector<SpoolReader::Item>& items) { return storeSpoolItems(items); }),
      m_eventlistSignal(settings.changeIntervalMs),
      m_alarmlistSignal(settings.changeIntervalMs)
{
    m_batchTimer.setSingleShot(true);
    QObject::connect(&m_batchTimer, &QTimer::timeout, this, &EventlistService::onBatchTimer);
    m_secondTimer.setInterval(retryMs);
    QObject::connect(&m_secondTimer, &QTimer::timeout, this, &EventlistService::onSecond);
    m_purgeTimer.setSingleShot(true);
    m_purgeTimer.setInterval(purgeIntervalMs);
    QObject::connect(&m_purgeTimer, &QTimer::timeout, this, &EventlistService::purgeSome);
    QObject::connect(&m_eventlistSignal, &CoalescedSignal::changed, this,
                     &EventlistService::eventlistChanged);
    QObject::connect(&m_alarmlistSignal, &CoalescedSignal::changed, this,
                     &EventlistService::alarmlistChanged);
}

EventlistService::~EventlistService() = default;

bool EventlistService::start()
{
    const Database::Opened opened = openDatabase();
    if (opened == Database::Opened::failed)
    {
        return false;
    }
    m_spool.start();
    m_secondTimer.start();
    if (opened == Database::Opened::notNow)
    {
        beginWaiting();
        return true;
    }
    m_toldStates = m_alarms.states();
    logStart();
    flush();
    checkDatabaseBeside();
    return true;
}

void EventlistService::stop()
{
    m_spool.setPaused(true);
    m_batchTimer.stop();
    m_secondTimer.stop();
    m_purgeTimer.stop();
    if (flush())
    {
        m_database.setMetaValue(cleanKey(), 1);
    }
    else
    {
        qWarning() << "The end of the service loses events:" << qint64(m_queue.count());
    }
    m_database.close();
}

void EventlistService::onReachable()
{
    m_eventlistSignal.touch();
    if (m_changes.isTellingAllWanted)
    {
        m_alarmlistSignal.touch();
        const AlarmList::States& now = m_alarms.states();
        Q_EMIT alarmStatesChanged(now, {!now.hasAlarm, !now.hasActiveAlarm, !now.hasFault,
                                        !now.hasActiveFault, !now.isCentralDetectorActive});
    }
    m_changes.isTellingAllWanted = true;
}

bool EventlistService::admitsEvent(const QString& sender)
{
    if (!m_senders.admitEvent(sender))
    {
        return false;
    }
    m_suppressedEvents += m_isSuppressed;
    return !m_isSuppressed;
}

void EventlistService::takeEvent(const DecodedEvent& decoded, const QString& sender)
{
    if (!decoded.isGood())
    {
        ++m_refusedEvents;
        if (m_refusalLimiter.allows())
        {
            qWarning() << "An event of" << sender << "is refused:" << decoded.error;
        }
        return;
    }
    Work work;
    work.event = decoded.event;
    work.event.setArrival(QDateTime::currentMSecsSinceEpoch());
    work.sender = sender;
    work.size = decoded.event.size();
    enqueue(std::move(work));
}

void EventlistService::deleteEventlist(const QString& sender)
{
    if (m_senders.admitEvent(sender))
    {
        Work work;
        work.kind = Work::Kind::deletion;
        work.event = m_ownEvents.eventlistDeleted();
        work.sender = sender;
        enqueue(std::move(work));
    }
}

void EventlistService::acknowledgeAlarms(const QStringList& alarmIds, const QString& user,
                                         const QString& sender)
{
    Work work;
    work.kind = Work::Kind::acknowledgement;
    work.alarmIds = storable(alarmIds);
    work.user = user.left(longestLogValue);
    work.sender = sender;
    for (const QString& id : alarmIds)
    {
        work.size += id.size();
    }
    enqueueAcknowledgement(std::move(work));
}

void EventlistService::acknowledgeCentralDetector(const QString& user, const QString& sender)
{
    Work work;
    work.kind = Work::Kind::detectorAcknowledgement;
    work.user = user.left(longestLogValue);
    work.sender = sender;
    enqueueAcknowledgement(std::move(work));
}

void EventlistService::suppressEventProcessing(bool isSuppressed, const QString& sender)
{
    if (isSuppressed == m_isSuppressed || !m_senders.admitEvent(sender))
    {
        return;
    }
    m_isSuppressed = isSuppressed;
    m_spool.setPaused(isSuppressed || m_isFailing);
    if (isSuppressed)
    {
        qWarning() << "Event processing is suppressed by" << sender;
    }
    else
    {
        qWarning() << "Event processing goes on by" << sender
                   << "- events dropped meanwhile:" << std::exchange(m_suppressedEvents, 0);
    }
    Work work;
    work.event =
        isSuppressed ? m_ownEvents.processingSuppressed() : m_ownEvents.processingResumed();
    work.sender = sender;
    enqueue(std::move(work));
}

QVariantMap EventlistService::events(const EventFilter& filter, QString& error)
{
    const EventColumns columns(filter.columns);
    ListAnswer answer(columns.header());
    if (!flush())
    {
        error = QStringLiteral("The database takes nothing");
    }
    else if (!m_events.read(filter, columns, answer))
    {
        onFailure();
        error = QStringLiteral("The database does not answer");
    }
    if (answer.isTruncated())
    {
        qWarning() << "An answer is truncated after" << answer.rows().size() << "rows";
    }
    return answer.toMap();
}

QVariantMap EventlistService::eventTypes(const QString& language) const
{
    return m_ownEvents.eventTypes(language);
}

QVariantMap EventlistService::alarms(const QString& language, QString& error)
{
    ListAnswer answer(AlarmList::header());
    if (!flush())
    {
        error = QStringLiteral("The database takes nothing");
    }
    else if (!m_alarms.read(language, answer))
    {
        onFailure();
        error = QStringLiteral("The database does not answer");
    }
    if (answer.isTruncated())
    {
        qWarning() << "An answer is truncated after" << answer.rows().size() << "alarms";
    }
    return answer.toMap();
}

QVariantMap EventlistService::alarmState()
{
    flush();
    return m_alarms.stateAnswer();
}

HashRegister::Result EventlistService::registerHash(const QString& hash)
{
    QString icon;
    HashRegister::Result result = HashRegister::Result::failed;
    if (flush() && begin())
    {
        result = m_hashes.registerHash(hash, icon);
        if (result == HashRegister::Result::failed || !m_database.commit())
        {
            result = HashRegister::Result::failed;
            rollback();
            onFailure();
        }
    }
    if (result == HashRegister::Result::registered && !icon.isEmpty())
    {
        Q_EMIT iconAvailable(hash, icon);
    }
    return result;
}

bool EventlistService::flush()
{
    m_senders.waitForAnswers();
    m_batchTimer.stop();
    if (!m_database.isOpen())
    {
        return false;
    }
    while (!m_queue.isEmpty())
    {
        m_lastBatchMs = monotonicMs();
        if (!writeBatch(std::min(eventsPerTransaction, m_queue.count())))
        {
            return false;
        }
    }
    return true;
}

Database::Opened EventlistService::openDatabase()
{
    Database::Opened opened = m_database.open();
    if (m_database.isOpen() && !loadAll())
    {
        if (m_database.failure() != Database::Failure::damaged ||
            m_database.replaceDamaged() != Database::Opened::inPlaceOfDamaged || !loadAll())
        {
            m_database.close();
            return Database::Opened::notNow;
        }
        opened = Database::Opened::inPlaceOfDamaged;
    }
    if (opened == Database::Opened::inPlaceOfDamaged)
    {
        logOwn(m_ownEvents.databaseFault(true));
        logOwn(m_ownEvents.databaseFault(false));
    }
    return opened;
}

void EventlistService::reopenDatabase()
{
    if (openDatabase(); !m_database.isOpen())
    {
        return;
    }
    m_toldStates = m_alarms.states();
    if (m_isStartLogged)
    {
        m_database.setMetaValue(bootKey(), m_settings.bootId);
    }
    else
    {
        logStart();
    }
    if (flush())
    {
        // What was asked meanwhile had no answer.
        onReachable();
    }
    checkDatabaseBeside();
}

bool EventlistService::loadAll()
{
    m_database.clearFailure();
    return m_events.load() && m_alarms.load() && m_hashes.load() &&
           m_database.failure() == Database::Failure::none;
}

void EventlistService::logStart()
{
    const bool isSameBoot = !m_settings.bootId.isEmpty() &&
                            m_database.metaValue(bootKey()).toString() == m_settings.bootId;
    if (isSameBoot)
    {
        logOwn(m_ownEvents.restarted());
    }
    else
    {
        Work work;
        work.kind = Work::Kind::powerOn;
        work.event = m_ownEvents.powerOn();
        work.size = work.event.size();
        // What waits since then belongs to this boot already.
        m_queue.prepend(std::move(work));
    }
    // After any other end a change may stand in the file that was never told.
    m_changes.isTellingAllWanted = m_database.metaValue(cleanKey()).toInt() == 0;
    m_database.setMetaValue(cleanKey(), 0);
    m_isStartLogged = true;
}

void EventlistService::enqueue(Work work)
{
    if (m_queue.size() + work.size > m_settings.maximumQueue)
    {
        ++m_lostEvents;
        return;
    }
    push(std::move(work));
}

// What an operator has done must not drown in what modules send: it has limits of its own, and is
// never lost without a word about who did it.
void EventlistService::enqueueAcknowledgement(Work work)
{
    const char* reason = nullptr;
    if (!m_senders.admitAcknowledgement(work.sender))
    {
        reason = "too many of them";
    }
    else if (m_queue.size() + work.size >
             m_settings.maximumQueue + m_settings.acknowledgementReserve)
    {
        reason = "the queue is full";
    }
    if (reason == nullptr)
    {
        work.arrivalMs = QDateTime::currentMSecsSinceEpoch();
        push(std::move(work));
    }
    else if (m_acknowledgementLimiter.allows())
    {
        qWarning() << "An acknowledgement by" << work.user << "from" << work.sender
                   << "is refused:" << reason;
    }
}

void EventlistService::push(Work work)
{
    m_queue.append(std::move(work));
    scheduleBatch();
}

void EventlistService::logOwn(const Event& event)
{
    Work work;
    work.event = event;
    work.size = event.size();
    enqueue(std::move(work));
}

void EventlistService::scheduleBatch()
{
    if (!m_batchTimer.isActive() && !m_isFailing)
    {
        const qint64 wait = m_lastBatchMs + m_settings.batchIntervalMs - monotonicMs();
        m_batchTimer.start(int(std::max<qint64>(0, wait)));
    }
}

void EventlistService::onBatchTimer()
{
    // The daemon tells who a new sender is a moment after its first event.
    if (m_senders.isWaiting() && monotonicMs() - m_queue.filledSinceMs() < credentialsWaitMs)
    {
        m_batchTimer.start(credentialsPollMs);
        return;
    }
    flush();
}

void EventlistService::onSecond()
{
    const auto dropped = m_senders.takeDropped();
    for (auto it = dropped.begin(); it != dropped.end(); ++it)
    {
        const auto identity = m_senders.identity(it.key());
        qWarning() << "Too many events of" << it.key() << "- dropped:" << it.value();
        logOwn(m_ownEvents.eventsDropped(
            QStringLiteral("%1, pid %2, uid %3").arg(it.key()).arg(identity.pid).arg(identity.uid),
            it.value()));
    }
    if (!m_isFailing && m_lostEvents > 0)
    {
        const qint64 lost = std::exchange(m_lostEvents, 0);
        qWarning() << "The queue was full - events dropped:" << lost;
        logOwn(m_ownEvents.eventsDropped(names::moduleName(), lost));
    }
    if (m_isFailing && !m_database.isOpen())
    {
        reopenDatabase();
    }
    else if (m_isFailing)
    {
        if (m_queue.isEmpty())
        {
            // Something to try it with.
            m_isFailing = !m_database.setMetaValue(cleanKey(), 0);
            if (!m_isFailing)
            {
                onStoring();
            }
        }
        flush();
    }
}

bool EventlistService::writeBatch(int count)
{
    if (!begin())
    {
        onFailure();
        return false;
    }
    for (int i = 0; i < count; ++i)
    {
        Work& work = m_queue.at(i);
        m_senders.identify(work.event, work.sender);
        if (!writeOne(work))
        {
            rollback();
            onFailure();
            return false;
        }
    }
    if (!commit())
    {
        return false;
    }
    m_queue.removeFirst(count);
    onStoring();
    announce();
    return true;
}

bool EventlistService::writeOne(Work& work)
{
    switch (work.kind)
    {
    case Work::Kind::event:
        return writeEvent(work.event);
    case Work::Kind::powerOn:
        return writePowerOn(work);
    case Work::Kind::deletion:
        return m_events.removeAll() && writeEvent(work.event);
    case Work::Kind::acknowledgement:
        return writeAcknowledgement(work);
    case Work::Kind::detectorAcknowledgement:
        break;
    }
    const AlarmList::Effect effect = m_alarms.setCentralDetector(false);
    return effect == AlarmList::Effect::none ||
           (effect == AlarmList::Effect::changed &&
            writeAudit(m_ownEvents.centralDetector(false, work.user), work));
}

bool EventlistService::writePowerOn(Work& work)
{
    // No module of the last boot is left to say that its alarm has gone, and one that finds it
    // again reports it under a new id. Where one of the boots has no name nothing is known.
    const QString lastBoot = m_database.metaValue(bootKey()).toString();
    if (!lastBoot.isEmpty() && !m_settings.bootId.isEmpty() && lastBoot != m_settings.bootId)
    {
        const AlarmList::Effect effect = m_alarms.endAll();
        if (effect == AlarmList::Effect::failed)
        {
            return false;
        }
        if (effect == AlarmList::Effect::changed)
        {
            qWarning() << "The device was switched on anew: what was active counts as gone";
            m_changes.hasChangedAlarms = true;
            m_changes.isTellingAllWanted = true;
        }
    }
    return m_database.setMetaValue(bootKey(), m_settings.bootId) && writeEvent(work.event);
}

bool EventlistService::writeEvent(Event& event)
{
    // All roads meet here, so that the lists in memory hold what the file does.
    makeStorable(event);
    if (!m_events.append(event) || !m_hashes.apply(event, m_changes.announcements))
    {
        return false;
    }
    m_changes.hasChangedEvents = true;
    const AlarmList::Effect effect = m_alarms.apply(event);
    const bool isLoss =
        effect == AlarmList::Effect::overflow || effect == AlarmList::Effect::displaced;
    const bool isNew = isLoss || effect == AlarmList::Effect::occurred;
    m_changes.hasChangedAlarms = m_changes.hasChangedAlarms ||
                                 effect == AlarmList::Effect::changed ||
                                 (isNew && effect != AlarmList::Effect::overflow);
    if (!isNew)
    {
        return effect != AlarmList::Effect::failed;
    }
    // One entry for as long as it lasts.
    const bool wasFull = std::exchange(m_changes.isAlarmlistFull, isLoss);
    if (isLoss && !wasFull && !writeOwn(m_ownEvents.alarmlistOverflow()))
    {
        return false;
    }
    // Also where the list had no room for it: somebody has to come.
    const AlarmList::Effect detector = m_alarms.setCentralDetector(true);
    return detector == AlarmList::Effect::none ||
           (detector == AlarmList::Effect::changed &&
            writeOwn(m_ownEvents.centralDetector(true, QString())));
}

bool EventlistService::writeOwn(const Event& event)
{
    Event own = event;
    return writeEvent(own);
}

// An entry about what somebody did, at the time at which it was done: the database may have been
// away for long since then.
bool EventlistService::writeAudit(Event entry, const Work& work)
{
    entry.senderUid = work.event.senderUid;
    entry.senderPid = work.event.senderPid;
    entry.timestamp.clear();
    entry.setArrival(work.arrivalMs);
    return writeEvent(entry);
}

bool EventlistService::writeAcknowledgement(const Work& work)
{
    for (const QString& id : work.alarmIds)
    {
        Event alarm;
        const AlarmList::Effect effect = m_alarms.acknowledge(id, work.user, work.arrivalMs, alarm);
        if (effect == AlarmList::Effect::unknown)
        {
            if (!m_alarms.countRefused())
            {
                return false;
            }
            if (m_refusalLimiter.allows())
            {
                qWarning() << "Nobody knows the alarm" << shortened(id)
                           << "that shall be acknowledged by" << shortened(work.user);
            }
        }
        else if (effect == AlarmList::Effect::changed)
        {
            m_changes.hasChangedAlarms = true;
            if (!writeAudit(m_ownEvents.alarmAcknowledged(alarm, work.user), work))
            {
                return false;
            }
        }
        else if (effect == AlarmList::Effect::failed)
        {
            return false;
        }
    }
    return true;
}

bool EventlistService::storeSpoolItems(QVector<SpoolReader::Item>& items)
{
    if (m_isFailing || m_isSuppressed || !flush())
    {
        return false;
    }
    if (!begin())
    {
        onFailure();
        return false;
    }
    for (SpoolReader::Item& item : items)
    {
        bool isRepeated = false;
        if (!m_events.rememberSpoolFile(item.key, isRepeated) ||
            (!isRepeated && !writeEvent(item.event)))
        {
            rollback();
            onFailure();
            return false;
        }
    }
    if (!commit())
    {
        return false;
    }
    announce();
    return true;
}

bool EventlistService::begin()
{
    m_database.clearFailure();
    m_changesBefore = m_changes;
    return m_database.begin();
}

void EventlistService::rollback()
{
    m_database.rollback();
    m_changes = m_changesBefore;
}

bool EventlistService::commit()
{
    if (m_events.prune() && m_events.saveCounters() && m_database.commit())
    {
        return true;
    }
    rollback();
    onFailure();
    return false;
}

void EventlistService::onFailure()
{
    if (m_database.failure() == Database::Failure::damaged)
    {
        replaceDatabase();
        return;
    }
    beginWaiting();
    if (m_database.failure() == Database::Failure::readOnly)
    {
        m_database.close();
        return;
    }
    m_events.load();
    m_alarms.load();
    m_hashes.load();
}

void EventlistService::beginWaiting()
{
    if (!m_isFailing)
    {
        m_isFailing = true;
        m_spool.setPaused(true);
        qWarning() << "The database takes nothing; events wait in memory";
        logOwn(m_ownEvents.databaseFault(true));
    }
}

void EventlistService::onStoring()
{
    if (m_isFailing)
    {
        m_isFailing = false;
        qWarning() << "The database works again";
        m_spool.setPaused(m_isSuppressed);
        logOwn(m_ownEvents.databaseFault(false));
    }
}

void EventlistService::replaceDatabase()
{
    if (m_database.replaceDamaged() != Database::Opened::inPlaceOfDamaged || !loadAll())
    {
        m_database.close();
        beginWaiting();
        return;
    }
    m_database.setMetaValue(bootKey(), m_settings.bootId);
    m_changes.hasChangedEvents = true;
    m_changes.hasChangedAlarms = true;
    logOwn(m_ownEvents.databaseFault(true));
    logOwn(m_ownEvents.databaseFault(false));
}

void EventlistService::purgeSome()
{
    if (m_isFailing || !m_events.hasLeftovers())
    {
        return;
    }
    if (!begin())
    {
        onFailure();
    }
    else if (!m_events.purge(rowsPerPurge) || !m_database.commit())
    {
        rollback();
        onFailure();
    }
    else if (m_events.hasLeftovers())
    {
        m_purgeTimer.start();
    }
}

void EventlistService::announce()
{
    if (m_events.hasLeftovers() && !m_purgeTimer.isActive())
    {
        m_purgeTimer.start();
    }
    if (std::exchange(m_changes.hasChangedEvents, false))
    {
        m_eventlistSignal.touch();
    }
    if (std::exchange(m_changes.hasChangedAlarms, false))
    {
        m_alarmlistSignal.touch();
    }
    if (!(m_alarms.states() == m_toldStates))
    {
        const AlarmList::States before = std::exchange(m_toldStates, m_alarms.states());
        Q_EMIT alarmStatesChanged(m_toldStates, before);
    }
    const auto announcements = std::exchange(m_changes.announcements, {});
    for (auto it = announcements.begin(); it != announcements.end(); ++it)
    {
        Q_EMIT iconAvailable(it.key(), it.value());
    }
}

void EventlistService::checkDatabaseBeside()
{
    if (!m_database.needsCheck() || m_settings.checkProgram.isEmpty())
    {
        return;
    }
    auto* check = new DatabaseCheck(m_settings.checkProgram, m_settings.databasePath, this);
    QObject::connect(check, &DatabaseCheck::damageFound, this, &EventlistService::replaceDatabase);
}

} // namespace eventlistd
