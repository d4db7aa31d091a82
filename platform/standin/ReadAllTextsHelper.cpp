#include "Platform/ReadAllTextsHelper.h"

#include "Platform/TextManagerBase.h"

QVariantMap ReadAllTextsHelper::getAllTextsAsVariantMap(const TextManagerBase& textManager,
                                                        const QString& url)
{
    return textManager.getAllTexts(url);
}
