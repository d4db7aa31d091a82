#include "Platform/TextManager.h"

#include "LanguageFileCheck.h"
#include "LimitedFile.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QTranslator>

#include <mutex>
#include <shared_mutex>
#include <vector>

namespace
{
constexpr qint64 maxLanguageFileBytes = 16 * 1024 * 1024;

struct Language
{
    QString key;
    QByteArray file; // the translator reads from it for as long as it lives
    std::unique_ptr<QTranslator> translator;
};
} // namespace

class TextManager::Private
{
public:
    void readFile(const QFileInfo& fileInfo);
    QVariantMap findTexts(const QString& url) const;
    QVariantMap getTexts(const QString& url) const;

    // Fixed after construction.
    std::vector<Language> m_languages;

private:
    // Texts that were asked for once; guarded by the lock. Only urls that have a text get here, so
    // it cannot grow beyond the files.
    mutable std::shared_mutex m_lock;
    mutable QHash<QString, QVariantMap> m_knownTexts;
};

void TextManager::Private::readFile(const QFileInfo& fileInfo)
{
    Language language;
    language.key = fileInfo.completeBaseName();
    const QString path = fileInfo.filePath();
    QString error;
    if (LimitedFile::read(path, maxLanguageFileBytes, language.file, error))
    {
        error = LanguageFileCheck::findFault(language.file);
    }
    if (error.isEmpty())
    {
        language.translator = std::make_unique<QTranslator>();
        const auto* data = reinterpret_cast<const uchar*>(language.file.constData());
        if (!language.translator->load(data, language.file.size()))
        {
            error = QStringLiteral("damaged language file");
        }
    }
    if (!error.isEmpty())
    {
        qWarning() << "Can't read language file" << path << ":" << error;
        return;
    }
    m_languages.push_back(std::move(language));
}

QVariantMap TextManager::Private::findTexts(const QString& url) const
{
    QVariantMap texts;
    // The translator takes an id up to its first U+0000, and a text without id for the empty one.
    if (url.isEmpty() || url.contains(QChar::Null))
    {
        return texts;
    }
    const QByteArray id = url.toUtf8();
    for (const Language& language : m_languages)
    {
        const QString text = language.translator->translate("", id.constData());
        // A text that is missing in this language; others may have it.
        if (!text.isNull())
        {
            texts.insert(language.key, text);
        }
    }
    return texts;
}

QVariantMap TextManager::Private::getTexts(const QString& url) const
{
    {
        const std::shared_lock<std::shared_mutex> guard(m_lock);
        const auto known = m_knownTexts.constFind(url);
        if (known != m_knownTexts.constEnd())
        {
            return known.value();
        }
    }
    const QVariantMap texts = findTexts(url);
    if (!texts.isEmpty())
    {
        const std::unique_lock<std::shared_mutex> guard(m_lock);
        m_knownTexts.insert(url, texts);
    }
    return texts;
}

TextManager::TextManager(const QString& folder) : d(std::make_unique<Private>())
{
    if (folder.isEmpty())
    {
        return;
    }
    const QDir directory(folder);
    if (!directory.exists() || !QFileInfo(folder).isReadable())
    {
        qWarning() << "Can't read text folder" << folder;
        return;
    }
    // QDir::System also lists pipes and links that lead nowhere: each of them gets its warning.
    const QFileInfoList files = directory.entryInfoList(
        {QStringLiteral("*.qm")},
        QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System | QDir::CaseSensitive, QDir::Name);
    for (const QFileInfo& file : files)
    {
        d->readFile(file);
    }
}

TextManager::~TextManager() = default;

QStringList TextManager::getLanguages() const
{
    QStringList languages;
    for (const Language& language : d->m_languages)
    {
        languages.append(language.key);
    }
    languages.sort();
    return languages;
}

QVariantMap TextManager::getAllTexts(const QString& url) const
{
    return d->getTexts(url);
}
