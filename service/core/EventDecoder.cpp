#include "core/EventDecoder.h"

#include "core/Descriptions.h"
#include "core/Names.h"

#include "JsonLoader.h"

#include "Platform/ReadAllTextsHelper.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>
#include <limits>

namespace eventlistd
{

namespace
{
constexpr int attributeCount = 3;

DecodedEvent refused(const QString& reason)
{
    return {Event(), reason};
}

// A state that is none is still an event: modules send it, after a warning of their own.
constexpr int lowestState = std::numeric_limits<int>::min();
constexpr int highestState = std::numeric_limits<int>::max();

bool readNumber(const QString& text, int lowest, int highest, int& number)
{
    bool isNumber = false;
    number = text.toInt(&isNumber, 10);
    return isNumber && number >= lowest && number <= highest;
}

// Takes the members of one JSON object one by one and remembers the first that is missing or has
// another type.
class MemberReader
{
public:
    explicit MemberReader(const QJsonObject& object) : m_object(object) {}

    QString text(const QString& name)
    {
        const QJsonValue value = m_object.value(name);
        check(name, value.isString());
        return value.toString();
    }

    int number(const QString& name, int lowest, int highest)
    {
        const double value = m_object.value(name).toDouble(std::nan(""));
        const bool isGood = value >= lowest && value <= highest && std::floor(value) == value;
        check(name, isGood);
        return isGood ? int(value) : 0;
    }

    QJsonObject object(const QString& name)
    {
        const QJsonValue value = m_object.value(name);
        check(name, value.isObject());
        return value.toObject();
    }

    const QString& error() const { return m_error; }

private:
    void check(const QString& name, bool isGood)
    {
        if (!isGood && m_error.isEmpty())
        {
            m_error = QStringLiteral("member \"") + name +
                      QStringLiteral("\" is missing or of a wrong type or value");
        }
    }

    const QJsonObject m_object;
    QString m_error;
};
} // namespace

EventDecoder::EventDecoder(const TextManagerBase& texts) : m_texts(texts) {}

DecodedEvent EventDecoder::fromBus(const QStringList& eventAttributes, const QString& timestamp,
                                   const QString& moduleName, const QString& description,
                                   const QStringList& keywords, const QString& user,
                                   const QString& additionalData, const QString& alarmId)
{
    DecodedEvent decoded;
    Event& event = decoded.event;
    if (eventAttributes.size() != attributeCount ||
        !readNumber(eventAttributes.at(0), alarm, otherEvents, event.type) ||
        !readNumber(eventAttributes.at(1), lowestState, highestState, event.state))
    {
        return refused(QStringLiteral("the attributes are not type, state and icon"));
    }
    event.icon = eventAttributes.at(2);
    event.timestamp = timestamp;
    event.moduleName = moduleName;
    event.description = description;
    event.keywords = keywords;
    event.user = user;
    event.alarmId = alarmId;
    if (event.size() + additionalData.size() > maximumEventSize)
    {
        return refused(QStringLiteral("it is too large"));
    }
    const auto loaded = JsonLoader::fromBytes(additionalData.toUtf8(), 4 * maximumEventSize);
    event.eventId = loaded.object.value(names::eventId()).toString();
    event.metaData = loaded.object.value(names::metaData()).toString();
    event.sourceHashType = loaded.object.value(names::sourceHashType()).toInt();
    event.sourceHashes = loaded.object.value(names::sourceHashes()).toString();
    return decoded;
}

DecodedEvent EventDecoder::fromSpoolFile(const QByteArray& content) const
{
    const auto loaded = JsonLoader::fromBytes(content, maximumEventSize);
    if (!loaded.isLoaded())
    {
        return refused(loaded.error);
    }
    DecodedEvent decoded;
    Event& event = decoded.event;
    MemberReader members(loaded.object);
    event.timestamp = members.text(names::dateTimeMsUtc());
    event.type = members.number(names::eventType(), alarm, otherEvents);
    event.state = members.number(names::state(), lowestState, highestState);
    event.icon = members.text(names::iconType());
    event.moduleName = members.text(names::module());
    event.description = members.text(names::description());
    const QString keywords = members.text(names::keywords());
    event.user = members.text(names::user());
    event.eventId = members.text(names::eventId());
    const QJsonObject metaData = members.object(names::metaData());
    event.alarmId = members.text(names::alarmId());
    event.sourceHashType = members.number(names::sourceHashType(), std::numeric_limits<int>::min(),
                                          std::numeric_limits<int>::max());
    event.sourceHashes = members.text(names::sourceHashes());
    constexpr int memberCount = 13;
    if (!members.error().isEmpty() || loaded.object.size() != memberCount)
    {
        return refused(members.error().isEmpty() ? QStringLiteral("it has unknown members")
                                                 : members.error());
    }
    if (!keywords.isEmpty())
    {
        event.keywords = keywords.split(QChar(names::keywordSeparator));
    }
    if (isEmergencyForm(metaData))
    {
        resolveEmergency(event, ReadAllTextsHelper::getAllTextsAsVariantMap(m_texts, event.eventId),
                         metaData);
    }
    else
    {
        event.metaData = QString::fromUtf8(QJsonDocument(metaData).toJson(QJsonDocument::Compact));
    }
    return decoded;
}

} // namespace eventlistd
