#include "eventlist/JsonText.h"

#include "eventlist/SafeText.h"

#include <QJsonDocument>

QString JsonText::of(const QJsonObject& object)
{
    return SafeText::escapedJson(
        QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)));
}

QString JsonText::of(const QJsonArray& objects)
{
    QString text = QStringLiteral("[\n");
    for (int i = 0; i < objects.size(); ++i)
    {
        text += of(objects.at(i).toObject());
        text += i < objects.size() - 1 ? QStringLiteral(",\n") : QStringLiteral("\n");
    }
    return text + QStringLiteral("]\n");
}
