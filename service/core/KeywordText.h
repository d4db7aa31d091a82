#pragma once

#include <QStringList>

namespace eventlistd
{

/// Stands between keywords that are kept as one text.
constexpr char16_t keywordMark = u'\x1f';

/// Makes one text of keywords. Each of them may hold any character, the mark too.
QString joinedKeywords(const QStringList& keywords);

/// Reverses it. A text without the mark is one keyword, the empty text one empty keyword.
QStringList splitKeywords(const QString& text);

} // namespace eventlistd
