#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "EventWrite/detail/PresentTime.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace
{

QString compactJson(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}

QStringList attributesOf(EventlistHandlerEnums::EventType eventType,
                         EventlistHandlerEnums::State state, const QString& icon)
{
    return {QString::number(int(eventType), 10), QString::number(int(state), 10), icon};
}

} // namespace

EventlistHandlerDBusConnectorWrite::EventlistHandlerDBusConnectorWrite(bool)
    : DBusConnectorBase(EventlistHandlerDefinitions::getModuleName(),
                        EventlistHandlerDefinitions::getObjectNameEventlistWrite(),
                        EventlistHandlerDefinitions::getInterfaceNameEventlistWrite(), nullptr,
                        defaultMode)
{
}

EventlistHandlerDBusConnectorWrite::~EventlistHandlerDBusConnectorWrite() = default;

QSharedPointer<EventlistHandlerDBusConnectorWrite>
EventlistHandlerDBusConnectorWrite::createAndConnect(bool pollingMode)
{
    QSharedPointer<EventlistHandlerDBusConnectorWrite> connector(
        new EventlistHandlerDBusConnectorWrite(pollingMode));
    if (connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return connector;
    }
    connector->initObject();
    return connector;
}

void EventlistHandlerDBusConnectorWrite::logEvent(
    EventlistHandlerEnums::EventType eventType, EventlistHandlerEnums::State state,
    const QString& icon, const QString& moduleName, const QVariant& description,
    const QStringList& keywords, const QString& user, const QString& eventId,
    const QJsonObject& metaData, const QString& alarmId, const QString& sourceHashes,
    EventlistHandlerEnums::SourceHashType sourceHashType)
{
    logEvent(attributesOf(eventType, state, icon), PresentTime::toText(), moduleName, description,
             keywords, user, eventId, metaData, alarmId, sourceHashes, sourceHashType);
}

void EventlistHandlerDBusConnectorWrite::logEvent(
    const QStringList& eventAttributes, const QString& timestamp, const QString& moduleName,
    const QVariant& description, const QStringList& keywords, const QString& user,
    const QString& eventId, const QJsonObject& metaData, const QString& alarmId,
    const QString& sourceHashes, EventlistHandlerEnums::SourceHashType sourceHashType)
{
    // The metadata travel as text inside the text, unlike in a spool file.
    QJsonObject additionalData;
    additionalData.insert(EventlistHandlerDefinitions::getListColumnNameEventId(), eventId);
    additionalData.insert(EventlistHandlerDefinitions::getListColumnNameMetaData(),
                          compactJson(metaData));
    additionalData.insert(EventlistHandlerDefinitions::getListColumnNameSourceHashType(),
                          int(sourceHashType));
    additionalData.insert(EventlistHandlerDefinitions::getListColumnNameSourceHashes(),
                          sourceHashes);
    sendEvent(eventAttributes, timestamp, moduleName, description, keywords, user,
              compactJson(additionalData), alarmId);
}

void EventlistHandlerDBusConnectorWrite::sendEvent(EventlistHandlerEnums::EventType eventType,
                                                   EventlistHandlerEnums::State state,
                                                   const QString& icon, const QString& moduleName,
                                                   const QVariant& description,
                                                   const QStringList& keywords, const QString& user,
                                                   const QString& additionalData,
                                                   const QString& alarmId)
{
    sendEvent(attributesOf(eventType, state, icon), PresentTime::toText(), moduleName, description,
              keywords, user, additionalData, alarmId);
}

void EventlistHandlerDBusConnectorWrite::sendEvent(
    const QStringList& eventAttributes, const QString& timestamp, const QString& moduleName,
    const QVariant& description, const QStringList& keywords, const QString& user,
    const QString& additionalData, const QString& alarmId)
{
    syncCallNoBlock(QStringLiteral("logEvent"), eventAttributes, timestamp, moduleName, description,
                    keywords, user, additionalData, alarmId);
}

void EventlistHandlerDBusConnectorWrite::deleteEventlist()
{
    syncCallNoBlock(QStringLiteral("deleteEventlist"));
}

void EventlistHandlerDBusConnectorWrite::suppressEventProcessing(bool suppress)
{
    syncCallNoBlock(QStringLiteral("suppressEventProcessing"), suppress);
}
