// Text and time services that answer straight from memory: the least that a device's own services
// can cost. Linked before the stand-in, they take the place of its own.

#include "Platform/IsoDateConverter.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QTranslator>

#include <vector>

class TextManager::Private
{
public:
    std::vector<std::pair<QString, std::unique_ptr<QTranslator>>> languages;
    mutable QHash<QString, QVariantMap> texts;
};

TextManager::TextManager(const QString& folder) : d(std::make_unique<Private>())
{
    const QFileInfoList files = QDir(folder).entryInfoList({QStringLiteral("*.qm")});
    for (const QFileInfo& file : files)
    {
        auto translator = std::make_unique<QTranslator>();
        if (translator->load(file.filePath()))
        {
            d->languages.emplace_back(file.completeBaseName(), std::move(translator));
        }
    }
}

TextManager::~TextManager() = default;

QStringList TextManager::getLanguages() const
{
    QStringList keys;
    for (const auto& language : d->languages)
    {
        keys.append(language.first);
    }
    return keys;
}

QVariantMap TextManager::getAllTexts(const QString& url) const
{
    const auto known = d->texts.constFind(url);
    if (known != d->texts.constEnd())
    {
        return known.value();
    }
    QVariantMap texts;
    for (const auto& language : d->languages)
    {
        texts.insert(language.first, language.second->translate("", url.toUtf8().constData()));
    }
    d->texts.insert(url, texts);
    return texts;
}

QVariantMap ReadAllTextsHelper::getAllTextsAsVariantMap(const TextManagerBase& textManager,
                                                        const QString& url)
{
    return textManager.getAllTexts(url);
}

QString IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(const QDateTime&)
{
    static const QString text = QStringLiteral("2026-03-14T09:26:53.589+01:00");
    return text;
}
