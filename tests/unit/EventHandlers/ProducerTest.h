#pragma once

#include "Definitions/EventlistHandlerEnums.h"
#include "Definitions/EventlistHandlerStructs.h"
#include "TestSupport/FakeTextManager.h"
#include "unit/UnitTest.h"

#include "Platform/ConfigurationAndProcessDataBase.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QList>
#include <QSharedPointer>
#include <QString>
#include <QStringList>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;
using Arguments = QList<EventlistHandlerStructs::stDescriptionArgument>;
using Tree = QSharedPointer<ConfigurationAndProcessDataBase>;

/// A configuration tree that counts how often it was asked.
class CountingTree : public ConfigurationAndProcessDataBase
{
public:
    explicit CountingTree(const QByteArray& json)
        : ConfigurationAndProcessDataBase(QJsonDocument::fromJson(json).object().toVariantMap())
    {
    }

    QSharedPointer<ConfigurationAndProcessDataBase> getLeafByPath(const QString& path) override
    {
        ++count;
        return ConfigurationAndProcessDataBase::getLeafByPath(path);
    }

    QVariant getDataProperty(const QString& key) override
    {
        ++count;
        return ConfigurationAndProcessDataBase::getDataProperty(key);
    }

    int count = 0;
};

/// The configuration of a pump: texts, and a number in a text's place.
inline QSharedPointer<CountingTree> pumpTree()
{
    return QSharedPointer<CountingTree>::create(
        R"({"Texts":{"Alarm":{"value":{"lang_de":"Alarm an %1, %2, %3","lang_en":"Alarm at %1, %2, %3"}},
            "Name":{"value":{"lang_de":"Pumpe","lang_en":"pump"}},
            "Place":{"value":{"lang_de":"Keller","lang_en":"cellar"}},
            "Number":{"value":7}, "NoValue":{}}})");
}

/// The thirteen members of a spool file, but for the time. What a test does not set is empty.
struct ExpectedEvent
{
    EventType eventType = EventType::otherEvents;
    State state = State::neutral;
    QString icon;
    QString eventId;
    QString user;
    QString alarmId;
    QByteArray description;
    QByteArray metaData;
    QString keywords = QStringLiteral("Error;Firmware");
    QString sourceHashes;
    int sourceHashType = 0;

    QByteArray json() const
    {
        return compactJson(
            {{QStringLiteral("EventType"), int(eventType)},
             {QStringLiteral("State"), int(state)},
             {QStringLiteral("IconType"), icon},
             {QStringLiteral("ModuleName"), QStringLiteral("PumpControl")},
             {QStringLiteral("Description"), QString::fromUtf8(description)},
             {QStringLiteral("KeywordName"), keywords},
             {QStringLiteral("User"), user},
             {QStringLiteral("EventId"), eventId},
             {QStringLiteral("MetaData"), QJsonDocument::fromJson(metaData).object()},
             {QStringLiteral("AlarmID"), alarmId},
             {QStringLiteral("SourceHashType"), sourceHashType},
             {QStringLiteral("SourceHashes"), sourceHashes}});
    }
};

/// An event about a door, which has texts but no arguments.
inline ExpectedEvent doorEvent(EventType eventType, State state, const QString& icon)
{
    ExpectedEvent event;
    event.eventType = eventType;
    event.state = state;
    event.icon = icon;
    event.eventId = QStringLiteral("PumpControl/Door");
    event.description = R"({"lang_de":"Tür offen","lang_en":"Door open"})";
    event.metaData =
        R"({"Arguments":{},"DescriptionScheme":{"lang_de":"Tür offen","lang_en":"Door open"}})";
    return event;
}

/// The texts of the pump, with a door and a sentence with three places.
inline void giveTexts(FakeTextManager& texts)
{
    texts.setTexts(QStringLiteral("PumpControl/Door"), QStringLiteral("Tür offen"),
                   QStringLiteral("Door open"));
    texts.setTexts(QStringLiteral("PumpControl/Alarm"), QStringLiteral("Alarm an %1, %2, %3"),
                   QStringLiteral("Alarm at %1, %2, %3"));
}

inline const Arguments seven{{QStringLiteral("%2"), QStringLiteral("7")}};
/// The name of the pump, in its tree and in a catalogue.
inline const Arguments nameInTree{{QStringLiteral("%1"), QStringLiteral("Texts/Name")}};
inline const Arguments nameInTexts{{QStringLiteral("%1"), QStringLiteral("Name")}};

/// The event with the sentence with three places instead: the second is seven, and the first, with an url
/// argument, the name of the pump.
inline ExpectedEvent withArguments(ExpectedEvent event, const QString& eventId, bool hasUrlArgument)
{
    event.eventId = eventId;
    event.description =
        hasUrlArgument ? R"({"lang_de":"Alarm an Pumpe, 7, %3","lang_en":"Alarm at pump, 7, %3"})"
                       : R"({"lang_de":"Alarm an %1, 7, %3","lang_en":"Alarm at %1, 7, %3"})";
    event.metaData =
        QByteArray(R"({"Arguments":{)")
            .append(hasUrlArgument
                        ? R"("%1":{"type":"text","value":{"lang_de":"Pumpe","lang_en":"pump"}},)"
                        : "")
            .append(R"("%2":{"type":"string","value":"7"}},)")
            .append(R"("DescriptionScheme":{"lang_de":"Alarm an %1, %2, %3",)")
            .append(R"("lang_en":"Alarm at %1, %2, %3"}})");
    return event;
}

inline Arguments noArguments()
{
    return {};
}

inline QString numberedEntry(int number)
{
    return QLatin1String("logEvent") + QString::number(number) + QLatin1String(".event.json");
}

/// The only spool file, which goes: its name is of no interest where one event is.
inline QByteArray takeEvent(SpoolFolder& spool)
{
    const QStringList entries = spool.entries();
    if (entries.size() != 1)
    {
        return QByteArray::number(entries.size()) + " files";
    }
    const QByteArray event = eventWithoutTime(spool, entries.first());
    spool.clear();
    return event;
}
