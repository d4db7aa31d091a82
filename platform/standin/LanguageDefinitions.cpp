#include "Platform/LanguageDefinitions.h"

const QString& LanguageDefinitions::getSecondFallbackLanguageFilename()
{
    static const QString name = QStringLiteral("lang_en");
    return name;
}
