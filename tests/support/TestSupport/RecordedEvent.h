#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <QStringList>

struct RecordedMessage;

/// One event as the central service gets it, whichever road it took.
///
/// A kit of its own reading: it takes apart what travels, and uses nothing of the library that wrote it.
struct RecordedEvent
{
    /// Says what is wrong when a message or a file is no event. Empty for an event.
    QString problem;
    int type = -1;          ///< 0 alarm, 1 audit trail, 2 fault, 3 other
    int state = -1;         ///< 0 neither, 1 the condition begins, 2 it ends
    QString icon;           ///< name of the icon
    QString time;           ///< ISO 8601 with milliseconds and offset
    QString moduleName;     ///< module that reports
    QJsonObject texts;      ///< language key to finished text
    QStringList keywords;   ///< in their order
    QString user;           ///< user to whom the event belongs, or empty
    QString eventId;        ///< text url of the description
    QString alarmId;        ///< what belongs together of an alarm or fault
    QJsonObject metaData;   ///< "DescriptionScheme" and "Arguments"
    int sourceHashType = 0; ///< stands beside the hashes
    QString sourceHashes;   ///< hexadecimal, one behind the other

    /// From the call "logEvent".
    static RecordedEvent fromCall(const RecordedMessage& call);

    /// From the content of a spool file.
    static RecordedEvent fromSpoolFile(const QJsonObject& content);

    /// The finished text of a language, such as "lang_en". Null when there is none.
    QString text(const QString& language) const;

    /// What fills a placeholder.
    /// \param language  for an argument that is a text; an argument that is a string ignores it
    /// Failure: null when there is no such argument, or no such language in it.
    QString argument(const QString& placeholder, const QString& language = QString()) const;

    /// The event on one line, for the output of a failed test.
    QByteArray toText() const;

    /// The words for the numbers: "alarm", "begins". Numbers without a word stay numbers.
    static QString typeName(int type);
    static QString stateName(int state);
};
