#pragma once

#include "EventProvider/EventsDBusProviderBaseClass.h"
#include "TestSupport/FakeTextManager.h"
#include "unit/UnitTest.h"

#include <QMultiMap>
#include <QString>
#include <QVariantMap>

using Provider = EventsDBusProviderBaseClass;
using TextSource = EventsDBusDefinitions::TextSource;
using TextManagerList = QVector<Provider::TextManagerData>;

/// What a description dictionary is converted to. The start values are no empty strings where a test
/// is to see that an output keeps its value.
struct Converted
{
    TextSource textSource = EventsDBusDefinitions::languageFile;
    QString moduleName;
    QString objectName;
    QString instanceName;
    QString url;
    QVariantList arguments;
    QVariantList urlArguments;
    bool isValid = false;
};

inline Converted convertFixedKeys(const Provider& provider, const QVariantMap& dictionary,
                                  Converted converted = Converted())
{
    converted.isValid = provider.convertDescriptionData(
        converted.textSource, converted.moduleName, converted.objectName, converted.instanceName,
        converted.url, dictionary);
    return converted;
}

inline Converted convertAll(const Provider& provider, const QVariantMap& dictionary)
{
    Converted converted;
    converted.isValid = provider.convertDescriptionData(
        converted.textSource, converted.moduleName, converted.objectName, converted.instanceName,
        converted.url, converted.arguments, converted.urlArguments, dictionary);
    return converted;
}

/// The five fixed keys of the pump's over-temperature.
inline QVariantMap pumpDictionary()
{
    return {{QStringLiteral("textSource"), 0},
            {QStringLiteral("moduleName"), QStringLiteral("PumpControl")},
            {QStringLiteral("ObjectName"), QStringLiteral("PumpControl")},
            {QStringLiteral("InstanceName"), QString()},
            {QStringLiteral("url"), QStringLiteral("PumpControl/OverTemperature")}};
}

/// A dictionary with some of its members changed. An invalid value takes a member away.
inline QVariantMap changed(QVariantMap dictionary, const QVariantMap& changes)
{
    for (auto change = changes.cbegin(); change != changes.cend(); ++change)
    {
        if (change->isValid())
        {
            dictionary.insert(change.key(), *change);
        }
        else
        {
            dictionary.remove(change.key());
        }
    }
    return dictionary;
}

inline QVariantMap literalEntry(const QString& placeholder, const QString& argument)
{
    return {{QStringLiteral("Placeholder"), placeholder}, {QStringLiteral("Argument"), argument}};
}

/// An entry whose text is the pump's name.
inline QVariantMap urlEntry(const QString& placeholder)
{
    return changed(pumpDictionary(),
                   {{QStringLiteral("Placeholder"), placeholder},
                    {QStringLiteral("url"), QStringLiteral("PumpControl/PumpName3")}});
}
