#include "eventlist/SpoolFile.h"

#include "eventlist/FileContent.h"
#include "eventlist/JsonCheck.h"
#include "eventlist/StoredText.h"

#include "Definitions/EventlistHandlerDefinitions.h"
#include "Definitions/EventlistHandlerEnums.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>

#include <cmath>
#include <limits>
#include <sys/stat.h>

using Names = EventlistHandlerDefinitions;

namespace
{
constexpr qint64 largestFile = 1024 * 1024;
constexpr int members = 13;

const QStringList& textMembers()
{
    static const QStringList names = {
        Names::getListColumnNameDateTimeMsUtc(), Names::getListColumnNameIconType(),
        Names::getListColumnNameModuleName(),    Names::getListColumnNameDescription(),
        Names::getListColumnNameKeywords(),      Names::getListColumnNameUser(),
        Names::getListColumnNameEventId(),       Names::getListColumnNameAlarmID(),
        Names::getListColumnNameSourceHashes()};
    return names;
}

bool isWholeNumber(const QJsonValue& value, double lowest, double highest)
{
    const double number = value.toDouble(std::nan(""));
    return number >= lowest && number <= highest && std::floor(number) == number;
}

bool isInt(const QJsonValue& value)
{
    return isWholeNumber(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
}

bool hasManyNames(const QString& path)
{
    struct stat status = {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 && status.st_nlink > 1;
}
} // namespace

SpoolFile::SpoolFile(const QString& path, Place place) : m_path(path), m_place(place)
{
    read();
    if (m_error.isEmpty() && !path.endsWith(Names::getExtensionEventToFile()))
    {
        m_error =
            QStringLiteral("its name does not end in '%1'").arg(Names::getExtensionEventToFile());
    }
    if (m_error.isEmpty())
    {
        m_error = findWrongMember();
    }
    if (m_error.isEmpty())
    {
        findOddities();
    }
}

void SpoolFile::read()
{
    const QFileInfo info(m_path);
    m_written = info.lastModified();
    if (info.isSymLink())
    {
        m_error = QStringLiteral("it is a symbolic link");
        return;
    }
    QByteArray json;
    if (!FileContent::read(m_path, largestFile, json, m_error))
    {
        return;
    }
    if (hasManyNames(m_path))
    {
        m_error = QStringLiteral("it has more than one name (hard links)");
        return;
    }
    const QByteArray byteOrderMark = QByteArray::fromHex("efbbbf");
    if (json.startsWith(byteOrderMark))
    {
        json.remove(0, byteOrderMark.size());
    }
    m_error = JsonCheck::findFault(json);
    if (!m_error.isEmpty())
    {
        return;
    }
    QJsonParseError problem;
    m_event = QJsonDocument::fromJson(json, &problem).object();
    if (problem.error != QJsonParseError::NoError)
    {
        m_error = QStringLiteral("no JSON: %1 at byte %2")
                      .arg(problem.errorString(), QString::number(problem.offset));
    }
    else if (m_event.isEmpty())
    {
        m_error = QStringLiteral("it holds no event");
    }
}

QString SpoolFile::findWrongMember() const
{
    QStringList known = textMembers();
    for (const QString& name : textMembers())
    {
        if (!m_event.value(name).isString())
        {
            return QStringLiteral("\"%1\" is missing or no string").arg(name);
        }
    }
    for (const QString& name :
         {Names::getListColumnNameEventType(), Names::getListColumnNameEventState(),
          Names::getListColumnNameSourceHashType()})
    {
        known.append(name);
        if (!isInt(m_event.value(name)))
        {
            return QStringLiteral("\"%1\" is missing or no whole number").arg(name);
        }
    }
    known.append(Names::getListColumnNameMetaData());
    if (!m_event.value(Names::getListColumnNameMetaData()).isObject())
    {
        return QStringLiteral("\"%1\" is missing or no object").arg(known.last());
    }
    const int types = Names::getEventTypes().size();
    if (!isWholeNumber(m_event.value(Names::getListColumnNameEventType()), 0, types - 1))
    {
        return QStringLiteral("\"%1\" is none of the event types 0 to %2")
            .arg(Names::getListColumnNameEventType(), QString::number(types - 1));
    }
    const QStringList keys = m_event.keys();
    for (const QString& key : keys)
    {
        if (m_event.size() > members && !known.contains(key))
        {
            return QStringLiteral("\"%1\" is none of its members").arg(key);
        }
    }
    return QString();
}

void SpoolFile::findOddities()
{
    if (!QDateTime::fromString(text(Names::getListColumnNameDateTimeMsUtc()), Qt::ISODateWithMs)
             .isValid())
    {
        m_warnings.append(
            QStringLiteral("\"%1\" is no time").arg(Names::getListColumnNameDateTimeMsUtc()));
    }
    const int state = number(Names::getListColumnNameEventState());
    if (state < 0 || state >= Names::getStates().size())
    {
        m_warnings.append(QStringLiteral("the state %1 is none").arg(state));
    }
    const int type = number(Names::getListColumnNameEventType());
    const bool isAlarm = type == int(EventlistHandlerEnums::EventType::alarm) ||
                         type == int(EventlistHandlerEnums::EventType::fault);
    if (isAlarm && text(Names::getListColumnNameAlarmID()).isEmpty())
    {
        m_warnings.append(QStringLiteral(
            "an alarm without an alarm id shares its row in the alarm list with others"));
    }
    const StoredText stored = StoredText::ofObject(m_event);
    if (stored.isEmergency())
    {
        return;
    }
    if (description().isEmpty())
    {
        m_warnings.append(QStringLiteral("\"%1\" holds no texts by language")
                              .arg(Names::getListColumnNameDescription()));
    }
    QVariantMap resolved;
    QString reason;
    if (!stored.resolve(QString(), resolved, reason))
    {
        m_warnings.append(reason);
    }
    else if (resolved != description())
    {
        m_warnings.append(QStringLiteral("the metadata say something else than the description"));
    }
}

QVariantMap SpoolFile::description() const
{
    return QJsonDocument::fromJson(text(Names::getListColumnNameDescription()).toUtf8())
        .object()
        .toVariantMap();
}

QString SpoolFile::name() const
{
    return QFileInfo(m_path).fileName();
}

QString SpoolFile::placeWord(Place place)
{
    switch (place)
    {
    case Place::waiting:
        return QStringLiteral("waiting");
    case Place::claimed:
        return QStringLiteral("claimed");
    case Place::rejected:
        return QStringLiteral("rejected");
    case Place::other:
        break;
    }
    return QStringLiteral("other");
}

QVector<SpoolFile::Found> SpoolFile::find(const QString& folder, QString& error)
{
    QVector<Found> found;
    if (!QFileInfo(folder).isDir() || !QFileInfo(folder).isReadable())
    {
        error = QStringLiteral("cannot read the spool folder '%1'").arg(folder);
        return found;
    }
    QVector<Found> others;
    for (const Place place : {Place::waiting, Place::claimed, Place::rejected})
    {
        const bool isTop = place == Place::waiting;
        const QDir directory(isTop ? folder : folder + QLatin1Char('/') + placeWord(place));
        if (directory.exists() && !QFileInfo(directory.path()).isReadable())
        {
            error = QStringLiteral("cannot read '%1'; that is for the user of the central service")
                        .arg(directory.path());
        }
        const QFileInfoList entries = directory.entryInfoList(
            QDir::Files | QDir::System | QDir::Hidden, QDir::Time | QDir::Reversed);
        for (const QFileInfo& entry : entries)
        {
            const bool isNamed = entry.fileName().endsWith(Names::getExtensionEventToFile());
            (isTop && !isNamed ? others : found)
                .append({entry.filePath(), isTop && !isNamed ? Place::other : place});
        }
    }
    return found + others;
}

SpoolFile SpoolFile::ofWord(const QString& word, const QString& folder)
{
    if (QFileInfo::exists(word) || word.contains(QLatin1Char('/')))
    {
        return SpoolFile(word, Place::other);
    }
    QString error;
    QVector<Found> matches;
    const QVector<Found> files = find(folder, error);
    for (const Found& file : files)
    {
        const QString fileName = QFileInfo(file.path).fileName();
        if (fileName == word || fileName == word + Names::getExtensionEventToFile())
        {
            return SpoolFile(file.path, file.place);
        }
        if (fileName.startsWith(word))
        {
            matches.append(file);
        }
    }
    if (matches.size() == 1)
    {
        return SpoolFile(matches.first().path, matches.first().place);
    }
    return SpoolFile(word,
                     matches.isEmpty()
                         ? QStringLiteral("there is no such file, and none in '%1'").arg(folder)
                         : QStringLiteral("it could be any of %1 files; give more of the name")
                               .arg(matches.size()));
}
