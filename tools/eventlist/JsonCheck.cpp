#include "eventlist/JsonCheck.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <QVector>

namespace
{
constexpr int deepest = 64;

// The end of the string that begins here, behind its quote.
int endOfString(const QByteArray& json, int begin)
{
    int end = begin + 1;
    while (end < json.size() && json.at(end) != '"')
    {
        end += json.at(end) == '\\' ? 2 : 1;
    }
    return qMin(end + 1, json.size());
}

bool isKey(const QByteArray& json, int end)
{
    while (end < json.size() && QByteArray(" \t\r\n").contains(json.at(end)))
    {
        ++end;
    }
    return end < json.size() && json.at(end) == ':';
}
} // namespace

QString JsonCheck::findFault(const QByteArray& json)
{
    QVector<QSet<QString>> objects;
    int position = 0;
    while (position < json.size())
    {
        const char character = json.at(position);
        if (character == '{' || character == '[')
        {
            objects.append(QSet<QString>());
        }
        else if ((character == '}' || character == ']') && !objects.isEmpty())
        {
            objects.removeLast();
        }
        if (objects.size() > deepest)
        {
            return QStringLiteral("it nests deeper than %1").arg(deepest);
        }
        if (character != '"')
        {
            ++position;
            continue;
        }
        const int end = endOfString(json, position);
        if (isKey(json, end) && !objects.isEmpty())
        {
            // Two spellings may mean one name.
            const QByteArray word = '[' + json.mid(position, end - position) + ']';
            const QString key = QJsonDocument::fromJson(word).array().first().toString();
            if (objects.last().contains(key))
            {
                return QStringLiteral("the member \"%1\" stands twice").arg(key);
            }
            objects.last().insert(key);
        }
        position = end;
    }
    return QString();
}
