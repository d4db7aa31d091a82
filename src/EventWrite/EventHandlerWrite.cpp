#include "EventWrite/EventHandlerWrite.h"

#include "EventWrite/EventlistHandlerDBusConnectorWrite.h"

#include "Platform/TranslateableTextHelper.h"

#include <QDebug>
#include <QJsonObject>

EventHandlerWrite::EventHandlerWrite(const QString& moduleName, QObject* parent)
    : QObject(parent),
      m_moduleName(moduleName),
      m_connector(EventlistHandlerDBusConnectorWrite::createAndConnect(false))
{
}

EventHandlerWrite::~EventHandlerWrite() = default;

void EventHandlerWrite::setEventToFile(const QString& fileName)
{
    m_bEventToFile = true;
    m_eventToFileName = fileName;
}

void EventHandlerWrite::logEvent(EventlistHandlerEnums::EventType eventType,
                                 EventlistHandlerEnums::State state, const QString& icon,
                                 const QStringList& keywords,
                                 const QVariantMap& descriptionTextList, const QString& user,
                                 const QString& eventId, const QJsonObject& metaData,
                                 const QString& alarmId, const QString& sourceHashes,
                                 EventlistHandlerEnums::SourceHashType sourceHashType)
{
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(descriptionTextList);
    const QString description = helper.getTranslateableTextObjectAsJsonString();
    if (m_bEventToFile)
    {
        spoolEvent(eventType, state, icon, keywords, description, user, eventId, metaData, alarmId,
                   sourceHashes, sourceHashType);
        return;
    }
    if (m_connector.isNull())
    {
        qWarning() << "Invalid pointer to connector!";
        return;
    }
    m_connector->logEvent(eventType, state, icon, m_moduleName, description, keywords, user,
                          eventId, metaData, alarmId, sourceHashes, sourceHashType);
}

void EventHandlerWrite::spoolEvent(EventlistHandlerEnums::EventType eventType,
                                   EventlistHandlerEnums::State state, const QString& icon,
                                   const QStringList& keywords, const QString& description,
                                   const QString& user, const QString& eventId,
                                   const QJsonObject& metaData, const QString& alarmId,
                                   const QString& sourceHashes,
                                   EventlistHandlerEnums::SourceHashType sourceHashType)
{
    m_eventToFile.logEvent(eventType, state, icon, m_moduleName, description, keywords, user,
                           eventId, metaData, alarmId, sourceHashes, sourceHashType,
                           m_eventToFileName);
}

void EventHandlerWrite::sendEvent(EventlistHandlerEnums::EventType eventType,
                                  EventlistHandlerEnums::State state, const QString& icon,
                                  const QStringList& keywords, const QString& description,
                                  const QString& user, const QString& additionalData,
                                  const QString& alarmId)
{
    m_connector->sendEvent(eventType, state, icon, m_moduleName, description, keywords, user,
                           additionalData, alarmId);
}
