// Text and time services in their plainest form: each text is looked up in each language each time,
// and the time goes through Qt's own formatting. Linked before the stand-in, they take the place of
// its own.

#include "Support/Catalogues.h"

#include "Platform/IsoDateConverter.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TextManager.h"

class TextManager::Private
{
public:
    Catalogues catalogues;
};

TextManager::TextManager(const QString& folder)
    : d(std::make_unique<Private>(Private{Catalogues(folder)}))
{
}

TextManager::~TextManager() = default;

QStringList TextManager::getLanguages() const
{
    return d->catalogues.languages();
}

QVariantMap TextManager::getAllTexts(const QString& url) const
{
    return d->catalogues.textsOf(url);
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
