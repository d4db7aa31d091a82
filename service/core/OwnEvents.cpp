#include "core/OwnEvents.h"

#include "core/Descriptions.h"
#include "core/ListAnswer.h"
#include "core/Names.h"

#include "Platform/LanguageDefinitions.h"
#include "Platform/ReadAllTextsHelper.h"

#include <QDateTime>

#include <unistd.h>

namespace eventlistd
{

namespace
{
QString firmware()
{
    return QStringLiteral("Firmware");
}
} // namespace

OwnEvents::OwnEvents(const TextManagerBase& texts) : m_texts(texts) {}

Event OwnEvents::powerOn() const
{
    return make(QStringLiteral("EventlistHandler/PowerOnEvent"),
                {QStringLiteral("PowerOnOff"), firmware()}, QStringLiteral("EventlistPowerOn"));
}

Event OwnEvents::restarted() const
{
    return make(QStringLiteral("EventlistHandler/SystemRestarted"),
                {QStringLiteral("Restart"), firmware()}, QStringLiteral("EventlistEvent"));
}

Event OwnEvents::eventlistDeleted() const
{
    Event event = make(QStringLiteral("EventlistHandler/EventlistDeleted"),
                       {QStringLiteral("User"), firmware()}, QStringLiteral("EventlistAuditTrail"));
    event.type = auditTrail;
    return event;
}

Event OwnEvents::eventsDropped(const QString& who, qint64 count) const
{
    return make(QStringLiteral("EventlistHandler/EventsDropped"),
                {QStringLiteral("Error"), firmware()}, QStringLiteral("EventlistEvent"),
                {{QStringLiteral("%1"), QString::number(count)}, {QStringLiteral("%2"), who}});
}

Event OwnEvents::processingSuppressed() const
{
    return make(QStringLiteral("EventlistHandler/EventProcessingSuppressed"),
                {QStringLiteral("Status"), firmware()}, QStringLiteral("EventlistEventOn"));
}

Event OwnEvents::processingResumed() const
{
    return make(QStringLiteral("EventlistHandler/EventProcessingResumed"),
                {QStringLiteral("Status"), firmware()}, QStringLiteral("EventlistEventOff"));
}

Event OwnEvents::databaseFault(bool isActive) const
{
    Event event = make(
        QStringLiteral("GlobalFaultTexts/DataBaseFault"), {QStringLiteral("Error"), firmware()},
        isActive ? QStringLiteral("EventlistFaultOn") : QStringLiteral("EventlistFaultOff"));
    event.type = fault;
    event.state = isActive ? active : inactive;
    event.alarmId = QStringLiteral("EventlistHandler/DataBaseFault");
    return event;
}

Event OwnEvents::alarmlistOverflow() const
{
    return make(QStringLiteral("EventlistHandler/AlarmlistOverflow"),
                {QStringLiteral("Error"), firmware()}, QStringLiteral("EventlistEvent"));
}

Event OwnEvents::alarmAcknowledged(const Event& alarm, const QString& user) const
{
    Event event = make(QStringLiteral("EventlistHandler/AlarmAcknowledged"),
                       {QStringLiteral("AlarmAck"), firmware()},
                       alarm.type == fault ? QStringLiteral("EventlistAcknowledgeFault")
                                           : QStringLiteral("EventlistAcknowledgeAlarm"));
    event.type = auditTrail;
    event.user = user;
    event.alarmId = alarm.alarmId;
    event.sourceHashType = alarm.sourceHashType;
    event.sourceHashes = alarm.sourceHashes;
    return event;
}

Event OwnEvents::centralDetector(bool isActive, const QString& user) const
{
    Event event =
        make(isActive ? QStringLiteral("EventlistHandler/CentralDetectorActive")
                      : QStringLiteral("EventlistHandler/CentralDetectorInactive"),
             {QStringLiteral("CentralDetector"), firmware()},
             isActive ? QStringLiteral("EventlistEventOn") : QStringLiteral("EventlistEventOff"));
    event.state = isActive ? active : inactive;
    event.user = user;
    return event;
}

QVariantMap OwnEvents::eventTypes(const QString& language) const
{
    ListAnswer answer({names::eventType(), names::description()});
    const QString urls[] = {QStringLiteral("EventlistHandler/EventTypeAlarm"),
                            QStringLiteral("EventlistHandler/EventTypeAuditTrail"),
                            QStringLiteral("EventlistHandler/EventTypeFault"),
                            QStringLiteral("EventlistHandler/EventTypeOtherEvent")};
    for (int type = alarm; type <= otherEvents; ++type)
    {
        answer.add({QString::number(type), text(urls[type], language)});
    }
    return answer.toMap();
}

QString OwnEvents::text(const QString& url, const QString& language) const
{
    Event event;
    describe(event, textObject(url), {});
    return inLanguage(event.description, language);
}

QVariantMap OwnEvents::textObject(const QString& url) const
{
    const QVariantMap texts = ReadAllTextsHelper::getAllTextsAsVariantMap(m_texts, url);
    return texts.isEmpty()
               ? QVariantMap{{LanguageDefinitions::getSecondFallbackLanguageFilename(), url}}
               : texts;
}

Event OwnEvents::make(const QString& url, const QStringList& keywords, const QString& icon,
                      const QMap<QString, QString>& arguments) const
{
    Event event;
    event.icon = icon;
    event.moduleName = names::moduleName();
    event.keywords = keywords;
    event.eventId = url;
    event.senderUid = ::getuid();
    event.senderPid = ::getpid();
    event.road = Road::own;
    describe(event, textObject(url), arguments);
    event.setArrival(QDateTime::currentMSecsSinceEpoch());
    return event;
}

} // namespace eventlistd
