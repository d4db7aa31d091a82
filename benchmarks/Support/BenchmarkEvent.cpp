#include "Support/BenchmarkEvent.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Definitions/EventlistHandlerEnums.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "Platform/IsoDateConverter.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/RecorderUrlHashHandling.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

using Definitions = EventlistHandlerDefinitions;

namespace
{
QString compactJson(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact));
}
} // namespace

BenchmarkEvent::BenchmarkEvent(const QString& textFolder, int argumentCount, int sourceTagCount)
    : texts(textFolder), url(QStringLiteral("Benchmark/Arguments%1").arg(argumentCount))
{
    for (int i = 1; i <= argumentCount; ++i)
    {
        const QString placeholder = QLatin1Char('%') + QString::number(i);
        if (i % 2 == 0)
        {
            urlArguments.append({placeholder, QStringLiteral("Benchmark/Pump3")});
        }
        else
        {
            arguments.append({placeholder, QStringLiteral("97.5")});
        }
    }
    for (int i = 0; i < sourceTagCount; ++i)
    {
        sourceTags.append(QStringLiteral("PumpControl/Source%1").arg(i));
    }
}

ReadyMadeEvent::ReadyMadeEvent(const BenchmarkEvent& event)
    : eventAttributes({QString::number(int(EventlistHandlerEnums::EventType::otherEvents)),
                       QString::number(int(EventlistHandlerEnums::State::neutral)),
                       Definitions::getIconNameEvent()}),
      timestamp(IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(
          QDateTime::currentDateTime())),
      moduleName(event.moduleName),
      keywords(event.keywords + QStringList(Definitions::getKeywordFirmware()))
{
    QJsonObject metaData;
    EventlistHandlerConvenienceFunctions::generateMetaData(
        metaData, ReadAllTextsHelper::getAllTextsAsVariantMap(event.texts, event.url),
        event.arguments, event.urlArguments, event.texts, event.url);
    QVariantMap textList;
    EventlistHandlerConvenienceFunctions::generateDescriptionTextlist(textList, metaData);
    TranslateableTextHelper helper(QString(), nullptr);
    helper.setTranslateableTextObject(textList);
    description = helper.getTranslateableTextObjectAsJsonString();

    QString sourceHashes;
    for (const QString& tag : event.sourceTags)
    {
        sourceHashes +=
            QString::fromLatin1(RecorderUrlHashHandling::createUrlHash(tag.toUtf8()).toHex());
    }
    additionalData = compactJson({{Definitions::getListColumnNameEventId(), event.url},
                                  {Definitions::getListColumnNameMetaData(), compactJson(metaData)},
                                  {Definitions::getListColumnNameSourceHashType(),
                                   int(EventlistHandlerEnums::SourceHashType::noSourceHash)},
                                  {Definitions::getListColumnNameSourceHashes(), sourceHashes}});
}
