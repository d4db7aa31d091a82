// The service's reader of spool files: an event is stored as the file tells it, all of it, or not at all.

#include "core/SpoolReader.h"

#include "core/EventDecoder.h"

#include "FuzzTarget.h"
#include "ReferenceJson.h"
#include "TestSupport/FakeTextManager.h"

#include <QDir>
#include <QFile>

#include <cmath>

namespace fuzz_spool_reader
{
using namespace eventlistd;

QString key(const char* name)
{
    return QLatin1String(name);
}

bool isNumber(const QJsonValue& value, double lowest, double highest)
{
    return value.isDouble() && value.toDouble() >= lowest && value.toDouble() <= highest &&
           std::floor(value.toDouble()) == value.toDouble();
}

// The thirteen members that make an event, each of its type.
bool isWholeEvent(const QJsonObject& object)
{
    for (const char* name : {"DateTimeMsUTC", "IconType", "ModuleName", "Description",
                             "KeywordName", "User", "EventId", "AlarmID", "SourceHashes"})
    {
        if (!object.value(key(name)).isString())
        {
            return false;
        }
    }
    constexpr double highest = 2147483647;
    return object.size() == 13 && object.value(key("MetaData")).isObject() &&
           isNumber(object.value(key("EventType")), 0, 3) &&
           isNumber(object.value(key("State")), -highest - 1, highest) &&
           isNumber(object.value(key("SourceHashType")), -highest - 1, highest);
}

void compare(const Event& event, const fuzz::ReferenceJson& reference)
{
    const QJsonObject& object = reference.object;
    const auto same = [&](const QString& text, const char* name) {
        fuzz::require(text == object.value(key(name)).toString(), name, text);
    };
    same(event.icon, "IconType");
    same(event.moduleName, "ModuleName");
    same(event.user, "User");
    same(event.eventId, "EventId");
    same(event.alarmId, "AlarmID");
    same(event.sourceHashes, "SourceHashes");
    same(event.keywords.join(QLatin1Char(';')), "KeywordName");
    fuzz::require(event.type == object.value(key("EventType")).toInt(), "EventType");
    fuzz::require(event.state == object.value(key("State")).toInt(), "State");
    fuzz::require(event.sourceHashType == object.value(key("SourceHashType")).toInt(),
                  "SourceHashType");
    fuzz::require(event.road == Road::spool, "the event came on the spool road");
    const QJsonObject metaData = object.value(key("MetaData")).toObject();
    const bool isEmergency =
        !metaData.contains(key("DescriptionScheme")) && metaData.value(key("Arguments")).isArray();
    const QJsonObject kept = QJsonDocument::fromJson(event.metaData.toUtf8()).object();
    // The emergency form is resolved into the ordinary one.
    fuzz::require(isEmergency ? kept.value(key("DescriptionScheme")).isObject() &&
                                    kept.value(key("Arguments")).isObject()
                              : kept == metaData || reference.hasMarks,
                  "MetaData", event.metaData);
    if (!isEmergency)
    {
        same(event.description, "Description");
    }
}

class Spool
{
public:
    Spool()
        : m_reader(settings(), m_decoder, [this](QVector<SpoolReader::Item>& items) {
              m_stored += items;
              return true;
          })
    {
    }

    // What the reader stores of a file of this content.
    QVector<SpoolReader::Item> read(const QByteArray& content)
    {
        m_stored.clear();
        QFile file(QDir(fuzz::folder()).filePath(QStringLiteral("1.event.json")));
        fuzz::require(file.open(QFile::WriteOnly) && file.write(content) == content.size(),
                      "the file is written");
        file.close();
        m_reader.drain();
        fuzz::require(!file.exists(), "the file is gone from the folder");
        return m_stored;
    }

private:
    static SpoolReader::Settings settings()
    {
        SpoolReader::Settings settings;
        settings.folder = fuzz::folder();
        settings.rejectedFiles = 4;
        return settings;
    }

    const FakeTextManager m_texts{FakeTextManager::pumpTexts()};
    const EventDecoder m_decoder{m_texts};
    QVector<SpoolReader::Item> m_stored;
    SpoolReader m_reader;
};

void check(Spool& spool, const QByteArray& content)
{
    const auto stored = spool.read(content);
    fuzz::require(stored.size() <= 1, "a file is one event");
    if (!stored.isEmpty())
    {
        const fuzz::ReferenceJson reference(content);
        fuzz::require(reference.isAcceptable && isWholeEvent(reference.object),
                      "what is stored is a whole event", QString::fromUtf8(content));
        compare(stored.first().event, reference);
    }
}

FUZZ_TARGET(spool_reader)
{
    fuzz::haveApplication();
    static Spool spool;
    const QByteArray content(reinterpret_cast<const char*>(data), int(size));
    fuzz::Log::take();
    check(spool, content);

    const fuzz::ReferenceJson reference(content);
    if (reference.isAcceptable && isWholeEvent(reference.object) && !reference.hasMarks)
    {
        // A writer that was cut off somewhere, and one that was not.
        const QByteArray clean = QJsonDocument(reference.object).toJson(QJsonDocument::Compact);
        const int cut = int(qHash(content) % uint(clean.size()));
        fuzz::require(spool.read(clean.left(cut)).isEmpty(), "half an event is not stored");
        fuzz::require(spool.read(clean).size() == 1, "a whole event is stored",
                      QString::fromUtf8(clean));
    }
    fuzz::Log::requireOnly(fuzz::Log::take(), {QStringLiteral("Spool: ")});
    return 0;
}
} // namespace fuzz_spool_reader
