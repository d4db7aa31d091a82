#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// One language file as translators have it: Qt Linguist, by id.
class LanguageFile
{
public:
    enum class Mark : int
    {
        finished,
        unfinished,
        gone ///< marked as obsolete or vanished: no compiler takes it over
    };

    struct Message
    {
        QString url;
        QStringList texts; ///< one; more where the text has forms for numbers
        Mark mark = Mark::finished;
        bool isNumerus = false;
        int line = 0;
    };

    /// Reads a file.
    /// Failure: errorText() says why, and errorLine() where; nothing else is filled.
    explicit LanguageFile(const QString& path);

    const QString& path() const { return m_path; }

    /// "lang_de" of "texts/lang_de.ts", as the text services name the language.
    QString languageKey() const;

    /// What the file says that its language is: "de", "de_CH".
    const QString& language() const { return m_language; }

    const QVector<Message>& messages() const { return m_messages; }
    const QString& errorText() const { return m_errorText; }
    int errorLine() const { return m_errorLine; }

private:
    void fail(const QString& text, int line);

    const QString m_path;
    QString m_language;
    QVector<Message> m_messages;
    QString m_errorText;
    int m_errorLine = 0;
};
