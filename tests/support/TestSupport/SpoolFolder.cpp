#include "TestSupport/SpoolFolder.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QJsonDocument>

#include <algorithm>

namespace
{
QString withClosingSlash(const QString& path)
{
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}
} // namespace

SpoolFolder::SpoolFolder() : SpoolFolder(compiledInPath()) {}

SpoolFolder::SpoolFolder(const QString& path) : m_path(withClosingSlash(path))
{
    clear();
}

SpoolFolder::~SpoolFolder()
{
    clear();
}

QString SpoolFolder::compiledInPath()
{
    return QStringLiteral(EVENTLISTHANDLER_DATA_ROOT "var/EventToFileData/");
}

QString SpoolFolder::path() const
{
    return m_path;
}

QString SpoolFolder::filePath(const QString& entry) const
{
    return m_path + entry;
}

QStringList SpoolFolder::entries() const
{
    return QDir(m_path).entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QByteArray SpoolFolder::readBytes(const QString& entry) const
{
    QFile file(filePath(entry));
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
}

QJsonObject SpoolFolder::read(const QString& entry) const
{
    return QJsonDocument::fromJson(readBytes(entry)).object();
}

QVector<RecordedEvent> SpoolFolder::events() const
{
    QVector<RecordedEvent> result;
    for (const QString& entry : entries())
    {
        if (entry.endsWith(QLatin1String(".event.json")))
        {
            result.append(RecordedEvent::fromSpoolFile(read(entry)));
        }
    }
    const auto timeOf = [](const RecordedEvent& event) {
        return QDateTime::fromString(event.time, Qt::ISODateWithMs);
    };
    std::stable_sort(result.begin(), result.end(),
                     [&](const RecordedEvent& left, const RecordedEvent& right) {
                         return timeOf(left) < timeOf(right);
                     });
    return result;
}

void SpoolFolder::clear()
{
    remove();
    QDir().mkpath(m_path);
}

void SpoolFolder::remove()
{
    // A test may have put a plain file in the folder's place.
    QFile::remove(m_path.chopped(1));
    QDir(m_path).removeRecursively();
}
