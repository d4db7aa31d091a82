#pragma once

#include <QString>

/// Language keys, as the event list knows them: "lang_de".
class Language
{
public:
    /// The key that a user means: "de" and "lang_de" are one. "all" gives the empty key, which
    /// stands for all languages at once.
    static QString key(const QString& word);

    /// The key of the user's locale; the language of last resort where the locale names none.
    static QString ofUser();
};
