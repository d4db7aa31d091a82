#include "core/KeywordText.h"

namespace eventlistd
{

namespace
{
constexpr char16_t escapeMark = u'\x1b';

QString escaped(char letter)
{
    return QChar(escapeMark) + QString(QLatin1Char(letter));
}
} // namespace

QString joinedKeywords(const QStringList& keywords)
{
    QStringList parts;
    for (QString keyword : keywords)
    {
        keyword.replace(QChar(escapeMark), escaped('e'));
        keyword.replace(QChar(keywordMark), escaped('m'));
        parts.append(keyword);
    }
    return parts.join(QChar(keywordMark));
}

QStringList splitKeywords(const QString& text)
{
    QStringList keywords = text.split(QChar(keywordMark));
    for (QString& keyword : keywords)
    {
        keyword.replace(escaped('m'), QString(QChar(keywordMark)));
        keyword.replace(escaped('e'), QString(QChar(escapeMark)));
    }
    return keywords;
}

} // namespace eventlistd
