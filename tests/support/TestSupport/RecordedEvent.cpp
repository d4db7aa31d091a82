#include "TestSupport/RecordedEvent.h"

#include "TestSupport/ForeignService.h"

#include <QJsonDocument>

namespace
{
QJsonObject objectOf(const QString& json)
{
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

// Null when there is no such string, empty when it is empty.
QString stringOf(const QJsonValue& value)
{
    return value.isString() ? QLatin1String("") + value.toString() : QString();
}

QString nameOf(int number, const QStringList& names)
{
    return names.value(number, QString::number(number));
}

QStringList stringsOf(const QJsonValue& array)
{
    QStringList result;
    for (const QJsonValue& value : array.toArray())
    {
        result.append(value.toString());
    }
    return result;
}
} // namespace

RecordedEvent RecordedEvent::fromCall(const RecordedMessage& call)
{
    RecordedEvent event;
    if (call.member != QLatin1String("logEvent") || call.signature != QLatin1String("assssassss"))
    {
        event.problem = QLatin1String("no event: ") + QString::fromUtf8(call.toText());
        return event;
    }
    const QStringList attributes = stringsOf(call.arguments.at(0));
    if (attributes.size() != 3)
    {
        event.problem = QLatin1String("not three attributes: ") + QString::fromUtf8(call.toText());
        return event;
    }
    const QJsonObject additional = objectOf(call.arguments.at(6).toString());
    event.type = attributes.at(0).toInt();
    event.state = attributes.at(1).toInt();
    event.icon = attributes.at(2);
    event.time = call.arguments.at(1).toString();
    event.moduleName = call.arguments.at(2).toString();
    event.texts = objectOf(call.arguments.at(3).toString());
    event.keywords = stringsOf(call.arguments.at(4));
    event.user = call.arguments.at(5).toString();
    event.alarmId = call.arguments.at(7).toString();
    event.eventId = additional.value(QLatin1String("EventId")).toString();
    event.metaData = objectOf(additional.value(QLatin1String("MetaData")).toString());
    event.sourceHashType = additional.value(QLatin1String("SourceHashType")).toInt();
    event.sourceHashes = additional.value(QLatin1String("SourceHashes")).toString();
    return event;
}

RecordedEvent RecordedEvent::fromSpoolFile(const QJsonObject& content)
{
    RecordedEvent event;
    if (!content.contains(QLatin1String("EventType")) || !content.contains(QLatin1String("State")))
    {
        event.problem = QLatin1String("no event: ") +
                        QString::fromUtf8(QJsonDocument(content).toJson(QJsonDocument::Compact));
        return event;
    }
    event.type = content.value(QLatin1String("EventType")).toInt();
    event.state = content.value(QLatin1String("State")).toInt();
    event.icon = content.value(QLatin1String("IconType")).toString();
    event.time = content.value(QLatin1String("DateTimeMsUTC")).toString();
    event.moduleName = content.value(QLatin1String("ModuleName")).toString();
    event.texts = objectOf(content.value(QLatin1String("Description")).toString());
    event.keywords = content.value(QLatin1String("KeywordName"))
                         .toString()
                         .split(QLatin1Char(';'), Qt::SkipEmptyParts);
    event.user = content.value(QLatin1String("User")).toString();
    event.alarmId = content.value(QLatin1String("AlarmID")).toString();
    event.eventId = content.value(QLatin1String("EventId")).toString();
    event.metaData = content.value(QLatin1String("MetaData")).toObject();
    event.sourceHashType = content.value(QLatin1String("SourceHashType")).toInt();
    event.sourceHashes = content.value(QLatin1String("SourceHashes")).toString();
    return event;
}

QString RecordedEvent::text(const QString& language) const
{
    return stringOf(texts.value(language));
}

QString RecordedEvent::argument(const QString& placeholder, const QString& language) const
{
    const QJsonObject argument =
        metaData.value(QLatin1String("Arguments")).toObject().value(placeholder).toObject();
    const QJsonValue value = argument.value(QLatin1String("value"));
    return stringOf(value.isObject() ? value.toObject().value(language) : value);
}

QString RecordedEvent::typeName(int type)
{
    return nameOf(type, {QStringLiteral("alarm"), QStringLiteral("audit trail entry"),
                         QStringLiteral("fault"), QStringLiteral("other event")});
}

QString RecordedEvent::stateName(int state)
{
    return nameOf(state,
                  {QStringLiteral("neutral"), QStringLiteral("begins"), QStringLiteral("ends")});
}

QByteArray RecordedEvent::toText() const
{
    if (!problem.isEmpty())
    {
        return problem.toUtf8();
    }
    QString shown = text(QStringLiteral("lang_en"));
    if (shown.isNull() && !texts.isEmpty())
    {
        shown = texts.constBegin().value().toString();
    }
    return QStringLiteral("%1 %2: %3 \"%4\" (module %5, keywords %6, user \"%7\", alarm id \"%8\")")
        .arg(typeName(type), stateName(state), eventId, shown, moduleName,
             keywords.join(QLatin1Char(';')), user, alarmId)
        .toUtf8();
}
