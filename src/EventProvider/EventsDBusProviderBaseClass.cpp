#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "Description/EventTextWriter.h"

#include "Platform/ConfigurationAndProcessDataBase.h"
#include "Platform/ConfigurationAndProcessDataTools.h"
#include "Platform/LanguageDefinitions.h"
#include "Platform/PropertyManagerConst.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"

#include <QDBusArgument>
#include <QDebug>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMultiMap>

using Definitions = EventsDBusDefinitions;
using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;
using UrlArgumentList = QList<EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument>;

namespace
{

// What a warning about a dictionary shows behind its head: the values as they are at that moment.
struct StateTail
{
    const EventsDBusDefinitions::TextSource& textSource;
    const QString& moduleName;
    const QString& objectName;
    const QString& instanceName;
    const QString& url;
};

QDebug operator<<(QDebug debug, const StateTail& tail)
{
    return debug << "textSource::" << int(tail.textSource) << "moduleName:" << tail.moduleName
                 << "objectName:" << tail.objectName
                 << "descriptionInstanceName:" << tail.instanceName
                 << "descriptionUrl:" << tail.url;
}

// Whether a value is a container from the bus of exactly this shape. To read one of another shape
// can end the process, so this is asked before every reading.
bool holds(const QVariant& value, const char* signature)
{
    return value.userType() == qMetaTypeId<QDBusArgument>() &&
           value.value<QDBusArgument>().currentSignature() == QLatin1String(signature);
}

QVariantMap readMap(const QVariant& value)
{
    QMultiMap<QString, QVariant> entries;
    if (holds(value, "a{sv}"))
    {
        // Through a const object: the other one would be written to.
        const QDBusArgument argument = value.value<QDBusArgument>();
        argument.beginMap();
        while (!argument.atEnd())
        {
            QString key;
            QVariant content;
            argument.beginMapEntry();
            argument >> key >> content;
            argument.endMapEntry();
            entries.insert(key, content);
        }
        argument.endMap();
    }
    QVariantMap map;
    map = entries;
    return map;
}

QVariantList readList(const QVariant& value)
{
    QVariantList list;
    if (holds(value, "av"))
    {
        const QDBusArgument argument = value.value<QDBusArgument>();
        argument.beginArray();
        while (!argument.atEnd())
        {
            QVariant element;
            argument >> element;
            list.append(element);
        }
        argument.endArray();
    }
    return list;
}

} // namespace

EventsDBusProviderBaseClass::EventsDBusProviderBaseClass(
    const QString& moduleName, const QString& objectName,
    const QVector<TextManagerData>& textManagerDataList, const QString& configurationPathPrefix)
    : DBusServiceProviderBaseClass(
          moduleName, Definitions::getObjectNameEvents(), Definitions::getInterfaceNameEvents(),
          true, QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals),
      m_objectName(objectName),
      m_textManagerDataList(textManagerDataList),
      m_configurationPathPrefix(configurationPathPrefix),
      m_connector(false)
{
}

EventsDBusProviderBaseClass::~EventsDBusProviderBaseClass() = default;

const TextManager* EventsDBusProviderBaseClass::getTextManager(const QString& objectName) const
{
    for (const TextManagerData& data : m_textManagerDataList)
    {
        if (data.objectName == objectName)
        {
            return data.textManager;
        }
    }
    return nullptr;
}

void EventsDBusProviderBaseClass::logEventWithDescriptionInDBusFormat(
    const QStringList& eventAttributes, const QString& timestamp, const QString& moduleName,
    const QVariantMap& descriptionData, const QStringList& keywords, const QString& user,
    const QString& alarmId)
{
    QVariantMap plainData = descriptionData;
    for (const QString& key :
         {Definitions::getEventDBusKeyArguments(), Definitions::getEventDBusKeyUrlArguments()})
    {
        const QVariant value = plainData.value(key);
        if (value.isValid())
        {
            QVariantList list;
            convertArguments(list, value);
            plainData.insert(key, list);
        }
    }
    logEvent(eventAttributes, timestamp, moduleName, plainData, keywords, user, alarmId, QString(),
             EventlistHandlerEnums::SourceHashType::noSourceHash);
}

void EventsDBusProviderBaseClass::logEvent(const QStringList& eventAttributes,
                                           const QString& timestamp, const QString& moduleName,
                                           const QVariantMap& descriptionData,
                                           const QStringList& keywords, const QString& user,
                                           const QString& alarmId, const QString& sourceHashes,
                                           EventlistHandlerEnums::SourceHashType sourceHashType)
{
    Definitions::TextSource textSource = Definitions::languageFile;
    QString textModuleName;
    QString objectName;
    QString instanceName;
    QString url;
    QVariantList arguments;
    QVariantList urlArguments;
    QVariantMap textObject;
    if (convertDescriptionData(textSource, textModuleName, objectName, instanceName, url, arguments,
                               urlArguments, descriptionData))
    {
        textObject = getTextFromLanguageFileOrConfiguration(textSource, textModuleName, objectName,
                                                            instanceName, url);
    }
    ArgumentList literalArguments;
    UrlArgumentList translatedArguments;
    if (textObject.isEmpty())
    {
        // The arguments are left out on purpose, so that the event shows the whole key of the text
        // that was not found.
        textObject.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(),
                          generateUrl(textModuleName, objectName, instanceName, url));
    }
    else
    {
        convertDescriptionArgumentData(literalArguments, arguments);
        convertDescriptionUrlArgumentData(translatedArguments, urlArguments);
    }
    send(eventAttributes, timestamp, moduleName, textObject, literalArguments, translatedArguments,
         keywords, user, url, alarmId, sourceHashes, sourceHashType);
}

void EventsDBusProviderBaseClass::logEvent(const QStringList& eventAttributes,
                                           const QString& timestamp, const QString& moduleName,
                                           const QString& url, const ArgumentList& arguments,
                                           const QStringList& keywords, const QString& user,
                                           const QString& alarmId, const QString& sourceHashes,
                                           EventlistHandlerEnums::SourceHashType sourceHashType)
{
    const TextManager* textManager = getTextManager(m_objectName);
    if (textManager == nullptr)
    {
        qWarning() << "ObjectName not in textManagerDataList:" << m_objectName;
        return;
    }
    const QVariantMap textObject = ReadAllTextsHelper::getAllTextsAsVariantMap(*textManager, url);
    send(eventAttributes, timestamp, moduleName, textObject, arguments, UrlArgumentList(), keywords,
         user, url, alarmId, sourceHashes, sourceHashType);
}

void EventsDBusProviderBaseClass::logEvent(EventlistHandlerEnums::EventType eventType,
                                           EventlistHandlerEnums::State state,
                                           const QString& iconType, const QString& timestamp,
                                           const QString& moduleName, const QString& url,
                                           const ArgumentList& arguments,
                                           const QStringList& keywords, const QString& user,
                                           const QString& alarmId, const QString& sourceHashes,
                                           EventlistHandlerEnums::SourceHashType sourceHashType)
{
    const QStringList eventAttributes{QString::number(int(eventType), 10),
                                      QString::number(int(state), 10), iconType};
    logEvent(eventAttributes, timestamp, moduleName, url, arguments, keywords, user, alarmId,
             sourceHashes, sourceHashType);
}

bool EventsDBusProviderBaseClass::convertDescriptionData(Definitions::TextSource& textSource,
                                                         QString& moduleName, QString& objectName,
                                                         QString& instanceName, QString& url,
                                                         const QVariantMap& descriptionData) const
{
    const StateTail tail{textSource, moduleName, objectName, instanceName, url};
    const QString& keyTextSource = Definitions::getEventDBusKeyTextSource();
    if (!descriptionData.contains(keyTextSource))
    {
        qWarning() << "Key for description not found:" << keyTextSource << tail;
    }
    else if (const QVariant value = descriptionData.value(keyTextSource);
             !value.canConvert(QMetaType::Int))
    {
        qWarning() << "No valid descriptionTextSource (Can't convert to int)" << tail;
    }
    else
    {
        textSource = Definitions::TextSource(value.toInt());
    }

    struct Text
    {
        const QString& key;
        QString& output;
    };
    // The order of the warnings: each one shows what was read before it.
    const Text texts[] = {{Definitions::getEventDBusKeyModuleName(), moduleName},
                          {Definitions::getEventDBusKeyObjectName(), objectName},
                          {Definitions::getEventDBusKeyInstanceName(), instanceName},
                          {Definitions::getEventDBusKeyUrl(), url}};
    for (const Text& text : texts)
    {
        if (descriptionData.contains(text.key))
        {
            text.output = descriptionData.value(text.key).toString();
        }
        else
        {
            qWarning() << "Key for description not found:" << text.key << tail;
        }
    }
    return !moduleName.isEmpty() && !objectName.isEmpty() && !url.isEmpty();
}

bool EventsDBusProviderBaseClass::convertDescriptionData(Definitions::TextSource& textSource,
                                                         QString& moduleName, QString& objectName,
                                                         QString& instanceName, QString& url,
                                                         QVariantList& arguments,
                                                         QVariantList& urlArguments,
                                                         const QVariantMap& descriptionData) const
{
    // The lists come first, so that these two warnings show the state before any fixed key was
    // read.
    const StateTail tail{textSource, moduleName, objectName, instanceName, url};
    const auto argumentsEntry = descriptionData.constFind(Definitions::getEventDBusKeyArguments());
    if (argumentsEntry != descriptionData.cend())
    {
        if (argumentsEntry->canConvert(QMetaType::QVariantList))
        {
            arguments = argumentsEntry->toList();
        }
        else
        {
            qWarning() << "No valid descriptionArguments (Can't convert to QVariantList)" << tail;
        }
    }
    const auto urlArgumentsEntry =
        descriptionData.constFind(Definitions::getEventDBusKeyUrlArguments());
    if (urlArgumentsEntry != descriptionData.cend())
    {
        if (urlArgumentsEntry->canConvert(QMetaType::QVariantList))
        {
            urlArguments = urlArgumentsEntry->toList();
        }
        else
        {
            qWarning() << "No valid descriptionUrlArguments (Can't convert to QVariantList)"
                       << tail;
        }
    }
    return convertDescriptionData(textSource, moduleName, objectName, instanceName, url,
                                  descriptionData);
}

void EventsDBusProviderBaseClass::convertArguments(QVariantList& result,
                                                   const QVariant& arguments) const
{
    const QVariantList elements = readList(arguments);
    for (const QVariant& element : elements)
    {
        result.append(QVariant(readMap(element)));
    }
}

void EventsDBusProviderBaseClass::convertDescriptionArgumentData(
    ArgumentList& result, const QVariantList& arguments) const
{
    for (const QVariant& element : arguments)
    {
        if (!element.canConvert(QMetaType::QVariantMap))
        {
            qWarning() << "No valid descriptionArgumentData (Can't convert to QVariantMap) "
                          "DescriptionArguments:"
                       << element;
            continue;
        }
        const QVariantMap entry = element.toMap();
        if (entry.isEmpty())
        {
            continue;
        }
        result.append({entry.value(Definitions::getEventDBusKeyPlaceholder()).toString(),
                       entry.value(Definitions::getEventDBusKeyArgument()).toString()});
    }
}

void EventsDBusProviderBaseClass::convertDescriptionUrlArgumentData(
    UrlArgumentList& result, const QVariantList& urlArguments) const
{
    for (const QVariant& element : urlArguments)
    {
        if (!element.canConvert(QMetaType::QVariantMap))
        {
            qWarning() << "No valid descriptionUrlArgumentData (Can't convert to QVariantMap) "
                          "List entry:"
                       << element;
            continue;
        }
        const QVariantMap entry = element.toMap();
        Definitions::TextSource textSource = Definitions::languageFile;
        QString moduleName;
        QString objectName;
        QString instanceName;
        QString url;
        if (!convertDescriptionData(textSource, moduleName, objectName, instanceName, url, entry))
        {
            continue;
        }
        QVariantMap textObject = getTextFromLanguageFileOrConfiguration(
            textSource, moduleName, objectName, instanceName, url);
        if (textObject.isEmpty())
        {
            textObject.insert(LanguageDefinitions::getSecondFallbackLanguageFilename(),
                              generateUrl(moduleName, objectName, instanceName, url));
        }
        QString placeholder;
        // Required: the test is for the module name, not for the placeholder.
        if (entry.contains(Definitions::getEventDBusKeyModuleName()))
        {
            placeholder = entry.value(Definitions::getEventDBusKeyPlaceholder()).toString();
        }
        else
        {
            qWarning() << "Key for description not found:"
                       << Definitions::getEventDBusKeyPlaceholder() << "in" << entry;
        }
        result.append({placeholder, textObject});
    }
}

QString EventsDBusProviderBaseClass::generateUrl(const QString& moduleName,
                                                 const QString& objectName,
                                                 const QString& instanceName,
                                                 const QString& url) const
{
    QString joined = moduleName + QLatin1Char('/');
    if (!objectName.isEmpty())
    {
        joined += objectName + QLatin1Char('/');
    }
    if (!instanceName.isEmpty())
    {
        joined += instanceName + QLatin1Char('/');
    }
    return joined + url;
}

QVariantMap EventsDBusProviderBaseClass::getTextFromLanguageFileOrConfiguration(
    Definitions::TextSource textSource, const QString& moduleName, const QString& objectName,
    const QString& instanceName, const QString& url) const
{
    const StateTail tail{textSource, moduleName, objectName, instanceName, url};
    if (moduleName != getModuleName())
    {
        qWarning() << "descriptionModuleName not implemented." << tail;
        return {};
    }
    if (textSource == Definitions::languageFile)
    {
        const TextManager* textManager = getTextManager(objectName);
        if (textManager == nullptr)
        {
            qWarning() << "ObjectName not in textManagerDataList:" << objectName;
            return {};
        }
        return ReadAllTextsHelper::getAllTextsAsVariantMap(*textManager, url);
    }
    const QDir folder(PropertyManagerConst::getConfigurationFolderPath(
        m_configurationPathPrefix + objectName + QLatin1Char('/')));
    const QSharedPointer<ConfigurationAndProcessDataBase> description =
        ConfigurationDataAndProcessDescriptionAccess::getParsedConfigurationProcessDescription(
            folder, instanceName, false);
    const QVariant value = ConfigurationAndProcessDataTools::extractConfigValue(url, description);
    if (!value.canConvert(QMetaType::QVariantMap))
    {
        qWarning() << "Can't convert ConfigValue to QVariantMap. Result QVariant:" << value << tail;
        return {};
    }
    return value.toMap();
}

// By the inner road where it can be taken, which makes the same event, and else by the exported
// steps.
void EventsDBusProviderBaseClass::send(const QStringList& eventAttributes, const QString& timestamp,
                                       const QString& moduleName, const QVariantMap& textObject,
                                       const ArgumentList& arguments,
                                       const UrlArgumentList& urlArguments,
                                       const QStringList& keywords, const QString& user,
                                       const QString& url, const QString& alarmId,
                                       const QString& sourceHashes,
                                       EventlistHandlerEnums::SourceHashType sourceHashType)
{
    const EventTextWriter writer(textObject, arguments, urlArguments);
    if (writer.isOrdinary())
    {
        m_connector.sendEvent(eventAttributes, timestamp, moduleName, writer.description(),
                              keywords, user,
                              writer.additionalData(url, sourceHashes, sourceHashType), alarmId);
        return;
    }
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(metaData, textObject, arguments,
                                                           urlArguments, url);
    QVariantMap textList;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(textList, metaData);
    const QString description = QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(textList)).toJson(QJsonDocument::Compact));
    m_connector.logEvent(eventAttributes, timestamp, moduleName, description, keywords, user, url,
                         metaData, alarmId, sourceHashes, sourceHashType);
}
