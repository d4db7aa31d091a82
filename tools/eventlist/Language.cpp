#include "eventlist/Language.h"

#include "eventlist/Arguments.h"

#include "Platform/LanguageDefinitions.h"

namespace
{
const auto prefix = QLatin1String("lang_");
} // namespace

QString Language::key(const QString& word)
{
    if (word == QLatin1String("all"))
    {
        return QString();
    }
    return word.startsWith(prefix) ? word : prefix + word;
}

QString Language::ofArguments(const Arguments& arguments)
{
    if (arguments.isSet(QStringLiteral("language")))
    {
        return key(arguments.value(QStringLiteral("language")));
    }
    return arguments.isSet(QStringLiteral("json")) ? QString() : ofUser();
}

QString Language::ofUser()
{
    for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"})
    {
        const QString locale = qEnvironmentVariable(variable);
        if (locale.isEmpty())
        {
            continue;
        }
        // "de_DE.UTF-8", "C.UTF-8", "POSIX"
        int end = 0;
        while (end < locale.size() && locale.at(end).isLetter())
        {
            ++end;
        }
        if (end == 2 || end == 3)
        {
            return prefix + locale.left(end).toLower();
        }
        break;
    }
    return LanguageDefinitions::getSecondFallbackLanguageFilename();
}
