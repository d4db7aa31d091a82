// Text and time services that answer straight from memory: the least that a device's own services
// can cost. Linked before the stand-in, they take the place of its own.

#include "Support/Catalogues.h"

#include "Platform/IsoDateConverter.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"

#include <QHash>

class TextManager::Private
{
public:
    Catalogues catalogues;
    mutable QHash<QString, QVariantMap> texts;
};

TextManager::TextManager(const QString& folder)
    : d(std::make_unique<Private>(Private{Catalogues(folder), {}}))
{
}

TextManager::~TextManager() = default;

QStringList TextManager::getLanguages() const
{
    return d->catalogues.languages();
}

QVariantMap TextManager::getAllTexts(const QString& url) const
{
    const auto known = d->texts.constFind(url);
    return known != d->texts.constEnd() ? *known
                                        : *d->texts.insert(url, d->catalogues.textsOf(url));
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
