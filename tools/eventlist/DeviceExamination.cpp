#include "eventlist/DeviceExamination.h"

#include "eventlist/Diagnosis.h"
#include "eventlist/Language.h"
#include "eventlist/Progress.h"
#include "eventlist/SpoolFile.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/IsoDateConverter.h"
#include "Platform/TextManager.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTimeZone>

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace
{
// The service takes a file within seconds.
constexpr qint64 longestWaitMs = 60 * 1000;
// A few thousand events, and the database of the service often lies beside them.
constexpr quint64 leastBytes = 16 * 1024 * 1024;
constexpr int firstPlausibleYear = 2024;

const QString& spoolSubject()
{
    static const QString subject = QStringLiteral("spool");
    return subject;
}
const QString& textSubject()
{
    static const QString subject = QStringLiteral("texts");
    return subject;
}
const QString& timeSubject()
{
    static const QString subject = QStringLiteral("time");
    return subject;
}

QString ageText(qint64 ageMs)
{
    const qint64 seconds = ageMs / 1000;
    return seconds < 120      ? QStringLiteral("%1 s").arg(seconds)
           : seconds < 7200   ? QStringLiteral("%1 min").arg(seconds / 60)
           : seconds < 172800 ? QStringLiteral("%1 h").arg(seconds / 3600)
                              : QStringLiteral("%1 d").arg(seconds / 86400);
}

// How many files of a place there are, and for how long the oldest of them.
struct Waiting
{
    int count = 0;
    qint64 oldestMs = 0;
};

Waiting waitingIn(const QVector<SpoolFile>& files, SpoolFile::Place place)
{
    Waiting waiting;
    const QDateTime now = QDateTime::currentDateTime();
    for (const SpoolFile& file : files)
    {
        if (file.place() == place)
        {
            ++waiting.count;
            waiting.oldestMs = qMax(waiting.oldestMs, file.written().msecsTo(now));
        }
    }
    return waiting;
}

// An unknown name would be taken for UTC, in silence.
bool isTimeZone(const QByteArray& name)
{
    static const QRegularExpression rule(QStringLiteral("^(<[^>]+>|[A-Za-z]{3,})[+-]?[0-9]"));
    if (name.startsWith('/'))
    {
        return QFileInfo(QFile::decodeName(name)).isFile();
    }
    return QTimeZone::isTimeZoneIdAvailable(name) ||
           rule.match(QString::fromLatin1(name)).hasMatch();
}
} // namespace

void DeviceExamination::examineSpool(const QString& folder, bool isServiceThere)
{
    if (!QFileInfo(folder).isDir())
    {
        m_diagnosis.warn(spoolSubject(), QStringLiteral("there is no folder '%1'").arg(folder),
                         QStringLiteral("the first module that writes a file makes it, if it may; "
                                        "otherwise make it for the users of the modules"));
        return;
    }
    examineRights(folder);
    examineSpace(folder);
    examineSpoolFiles(folder, isServiceThere);
}

void DeviceExamination::examineRights(const QString& folder)
{
    const QByteArray path = QFile::encodeName(folder);
    struct stat status = {};
    if (::stat(path.constData(), &status) != 0)
    {
        return;
    }
    const QFileInfo info(folder);
    const QString rights =
        QStringLiteral("'%1' has the rights %2 and belongs to %3:%4")
            .arg(folder, QString::number(status.st_mode & 07777U, 8), info.owner(), info.group());
    if (::access(path.constData(), W_OK | X_OK) != 0)
    {
        m_diagnosis.warn(spoolSubject(), rights + QStringLiteral("; you may not write into it"),
                         QStringLiteral("who runs a module on the file road must be allowed to: "
                                        "change the owner, the group or the rights"));
    }
    else if ((status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0)
    {
        m_diagnosis.warn(spoolSubject(),
                         rights + QStringLiteral("; anybody may remove the events of others"),
                         QStringLiteral("chmod +t, or rights for one group alone"));
    }
    else
    {
        m_diagnosis.good(spoolSubject(), rights);
    }
}

void DeviceExamination::examineSpace(const QString& folder)
{
    struct statvfs space = {};
    if (::statvfs(QFile::encodeName(folder).constData(), &space) != 0)
    {
        return;
    }
    const quint64 bytes = quint64(space.f_bavail) * space.f_frsize;
    const QString advice = QStringLiteral("make room; without it events of the file road are lost");
    if ((space.f_flag & ST_RDONLY) != 0)
    {
        m_diagnosis.fail(spoolSubject(), QStringLiteral("its file system is read-only"),
                         QStringLiteral("mount it for writing; events of the file road are lost"));
    }
    else if (bytes < leastBytes)
    {
        m_diagnosis.fail(spoolSubject(),
                         QStringLiteral("its file system has only %1 KiB left").arg(bytes / 1024),
                         advice);
    }
    else if (space.f_files > 0 && space.f_favail == 0)
    {
        m_diagnosis.fail(spoolSubject(), QStringLiteral("its file system holds no more files"),
                         advice);
    }
}

void DeviceExamination::examineSpoolFiles(const QString& folder, bool isServiceThere)
{
    Progress progress(QStringLiteral("reading spool files"));
    QString error;
    const QVector<SpoolFile> files = SpoolFile::ofFolder(
        folder, [&progress](int count) { progress.tell(QString::number(count)); }, error);
    if (!error.isEmpty())
    {
        m_diagnosis.warn(spoolSubject(), error,
                         QStringLiteral("run this as the user of the central service to see it"));
    }
    const Waiting waiting = waitingIn(files, SpoolFile::Place::waiting);
    const Waiting claimed = waitingIn(files, SpoolFile::Place::claimed);
    const QString count = QStringLiteral("%1 files wait, the oldest for %2")
                              .arg(QString::number(waiting.count), ageText(waiting.oldestMs));
    if (waiting.oldestMs > longestWaitMs)
    {
        m_diagnosis.fail(spoolSubject(), count,
                         isServiceThere
                             ? QStringLiteral("the service reads another folder (its option "
                                              "--spool), may not write into this one, or its "
                                              "event processing is suppressed")
                             : QStringLiteral("start eventlistd, which takes them"));
    }
    else
    {
        m_diagnosis.good(spoolSubject(),
                         waiting.count > 0 ? count : QStringLiteral("no files wait"));
    }
    if (claimed.oldestMs > longestWaitMs)
    {
        m_diagnosis.warn(spoolSubject(),
                         QStringLiteral("%1 files are claimed, the oldest for %2")
                             .arg(QString::number(claimed.count), ageText(claimed.oldestMs)),
                         QStringLiteral("the service stores them when it starts; restart it"));
    }
    const int rejected = waitingIn(files, SpoolFile::Place::rejected).count;
    if (rejected > 0)
    {
        m_diagnosis.warn(spoolSubject(), QStringLiteral("%1 files were rejected").arg(rejected),
                         QStringLiteral("'eventlist spool validate' says why; mend the writer and "
                                        "remove them"));
    }
    const Waiting others = waitingIn(files, SpoolFile::Place::other);
    if (others.oldestMs > longestWaitMs)
    {
        m_diagnosis.warn(spoolSubject(),
                         QStringLiteral("%1 files are no spool files, the oldest for %2")
                             .arg(QString::number(others.count), ageText(others.oldestMs)),
                         QStringLiteral("a writer was killed or writes wrong names; the service "
                                        "removes them after an hour"));
    }
}

void DeviceExamination::examineTexts(const QString& folder)
{
    if (!QFileInfo(folder).isDir())
    {
        m_diagnosis.fail(textSubject(), QStringLiteral("there is no folder '%1'").arg(folder),
                         QStringLiteral("install the common language files, or name their folder "
                                        "with --texts"));
        return;
    }
    const TextManager texts(folder);
    const QStringList languages = texts.getLanguages();
    const QStringList files = QDir(folder).entryList({QStringLiteral("*.qm")});
    for (const QString& file : files)
    {
        if (!languages.contains(QFileInfo(file).completeBaseName()))
        {
            m_diagnosis.fail(textSubject(),
                             QStringLiteral("'%1' is no usable language file")
                                 .arg(folder + QLatin1Char('/') + file),
                             QStringLiteral("make it anew, with \"lrelease -idbased "
                                            "-nounfinished\""));
        }
    }
    if (languages.isEmpty())
    {
        m_diagnosis.fail(textSubject(), QStringLiteral("no language file in '%1'").arg(folder),
                         QStringLiteral("install the common language files, or name their folder "
                                        "with --texts"));
        return;
    }
    const QVariantMap sentence =
        texts.getAllTexts(EventlistHandlerDefinitions::getTextUrlSystemWatchdog());
    for (const QString& language : languages)
    {
        if (!sentence.contains(language))
        {
            m_diagnosis.warn(
                textSubject(),
                QStringLiteral("%1 has no text for the emergency event '%2'")
                    .arg(language, EventlistHandlerDefinitions::getTextUrlSystemWatchdog()),
                QStringLiteral("is this the folder of the common language files?"));
        }
    }
    m_diagnosis.good(
        textSubject(),
        QStringLiteral("'%1' has %2").arg(folder, languages.join(QStringLiteral(", "))));
    if (!languages.contains(Language::ofUser()))
    {
        m_diagnosis.warn(
            textSubject(),
            QStringLiteral("your locale asks for %1, which is not there").arg(Language::ofUser()),
            QStringLiteral("set LC_MESSAGES, or add the language"));
    }
}

void DeviceExamination::examineTime()
{
    const QDateTime now = QDateTime::currentDateTime();
    QByteArray zone = qgetenv("TZ");
    if (zone.startsWith(':'))
    {
        zone.remove(0, 1);
    }
    const bool isSet = qEnvironmentVariableIsSet("TZ");
    if (isSet && !zone.isEmpty() && !isTimeZone(zone))
    {
        m_diagnosis.warn(timeSubject(),
                         QStringLiteral("TZ is '%1', which is no time zone: times are UTC")
                             .arg(QString::fromLocal8Bit(zone)),
                         QStringLiteral("set TZ to a name such as Europe/Berlin, and install its "
                                        "data (tzdata)"));
    }
    else if (!isSet && !QFileInfo::exists(QStringLiteral("/etc/localtime")))
    {
        m_diagnosis.warn(timeSubject(), QStringLiteral("no time zone is set: times are UTC"),
                         QStringLiteral("let /etc/localtime lead to a file of "
                                        "/usr/share/zoneinfo"));
    }
    if (now.date().year() < firstPlausibleYear)
    {
        m_diagnosis.fail(timeSubject(),
                         QStringLiteral("the clock says %1")
                             .arg(IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(now)),
                         QStringLiteral("set the clock; events keep the time with which they were "
                                        "written"));
        return;
    }
    m_diagnosis.good(timeSubject(),
                     QStringLiteral("%1, time zone %2")
                         .arg(IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(now),
                              now.timeZoneAbbreviation()));
}
