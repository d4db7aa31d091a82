// Text and time services in their plainest form: each text is looked up in each language each time,
// and the time goes through Qt's own formatting. Linked before the stand-in, they take the place of
// its own.

#include "Platform/IsoDateConverter.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"

#include <QDir>
#include <QFileInfo>
#include <QTranslator>

#include <vector>

class TextManager::Private
{
public:
    std::vector<std::pair<QString, std::unique_ptr<QTranslator>>> languages;
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
    QVariantMap texts;
    for (const auto& language : d->languages)
    {
        const QString text = language.second->translate("", url.toUtf8().constData());
        if (!text.isNull())
        {
            texts.insert(language.first, text);
        }
    }
    return texts;
}

QVariantMap ReadAllTextsHelper::getAllTextsAsVariantMap(const TextManagerBase& textManager,
                                                        const QString& url)
{
    return textManager.getAllTexts(url);
}

QString IsoDateConverter::convertDateTimeToIsoDateWithMsAndTimezone(const QDateTime& dateTime)
{
    return dateTime.toOffsetFromUtc(dateTime.offsetFromUtc()).toString(Qt::ISODateWithMs);
}
