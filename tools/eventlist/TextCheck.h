#pragma once

#include "eventlist/LanguageFile.h"
#include "eventlist/SourceTexts.h"

#include <QHash>
#include <QMap>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

/// Compares the language files of a module with each other and with its sources.
class TextCheck
{
public:
    struct Finding
    {
        QString file;
        int line = 0;
        bool isError = true;
        QString rule;
        QString url;
        QString text;
    };

    /// The rules by name, with what each one finds.
    static QVector<QPair<QString, QString>> rules();

    /// Urls that are left alone when used and defined urls are compared; "*" stands for anything.
    void setIgnored(const QStringList& patterns);

    /// Rules whose findings do not count.
    void setAllowed(const QStringList& rules) { m_allowed = rules; }

    /// First words of urls that belong to the module, besides those of its language files.
    void addCollections(const QStringList& words);

    void addLanguageFile(const LanguageFile& file);
    void addSource(const QString& path, const QVector<SourceTexts::Text>& texts);
    void addUnreadable(const QString& path, const QString& reason);

    /// Compares what was added.
    /// \param compiledFolder  with the compiled files; empty when they are not looked at
    void run(const QString& compiledFolder);

    /// Sorted by file and line.
    const QVector<Finding>& findings() const { return m_findings; }
    int errorCount() const;
    QStringList languages() const { return m_languages.keys(); }
    int urlCount() const { return m_urls.size(); }
    bool hasSources() const { return m_hasSources; }
    int usedCount() const;

private:
    struct Place
    {
        QString file;
        int line = 0;
    };
    struct Text
    {
        QString text;
        Place place;
    };
    struct Language
    {
        QString file;              ///< the first one with this key
        QMap<QString, Text> texts; ///< what a reader will get
        QMap<QString, Place> seen; ///< also what is not usable, which was reported already
    };
    struct Use
    {
        QString text;
        Place place;
    };

    void report(const QString& rule, const Place& place, const QString& url, const QString& text);
    void addMessage(Language& language, const LanguageFile& file,
                    const LanguageFile::Message& message);
    void checkPlaceholders(const QString& url, const Text& text);
    void compareLanguages(const QString& url);
    void compareWithSources();
    void compareWithCompiled(const QString& folder);
    bool isIgnored(const QString& url) const;

    QStringList m_ignored;
    QStringList m_allowed;
    QSet<QString> m_collections;
    QMap<QString, Language> m_languages;
    QMap<QString, Place> m_urls; ///< every url of any language, and where it stands first
    QVector<Use> m_uses;
    bool m_hasSources = false;
    QVector<Finding> m_findings;
};
