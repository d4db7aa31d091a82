#pragma once

#include <QString>

class Arguments;

/// Language keys, as the event list knows them: "lang_de".
class Language
{
public:
    /// The key that a user means: "de" and "lang_de" are one. "all" gives the empty key, which
    /// stands for all languages at once.
    static QString key(const QString& word);

    /// The key that --language gives; without it that of the user, and for programs (--json) the
    /// empty one.
    static QString ofArguments(const Arguments& arguments);

    /// The key of the user's locale; the language of last resort where the locale names none.
    static QString ofUser();
};
