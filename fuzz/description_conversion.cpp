// Description dictionaries of plain values, of any shape: the provider reads from them what a look at their keys finds,
// and logs an event whatever it was.

#include "EventProvider/EventsDBusProviderBaseClass.h"

#include "FuzzTarget.h"
#include "TestSupport/FakeTextManager.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusSignature>
#include <QDBusVariant>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>
#include <QVariantHash>

namespace fuzz_description_conversion
{
using Provider = EventsDBusProviderBaseClass;
using Argument = EventlistHandlerStructs::stDescriptionArgument;
using UrlArgument = EventlistHandlerConvenienceFunctions::stDescriptionUrlArgument;

const QStringList words{QStringLiteral("textSource"),
                        QStringLiteral("moduleName"),
                        QStringLiteral("ObjectName"),
                        QStringLiteral("InstanceName"),
                        QStringLiteral("url"),
                        QStringLiteral("Arguments"),
                        QStringLiteral("UrlArguments"),
                        QStringLiteral("Placeholder"),
                        QStringLiteral("Argument"),
                        QStringLiteral("PumpControl"),
                        QStringLiteral("PumpControl/OverTemperature"),
                        QStringLiteral("PumpControl/PumpName3"),
                        QStringLiteral("%1"),
                        QStringLiteral("%2"),
                        QStringLiteral("../.."),
                        QString()};
// How every warning begins that a dictionary may cause; the last one comes because there is no bus here.
const QStringList heads{QStringLiteral("Key for description not found: "),
                        QStringLiteral("No valid description"),
                        QStringLiteral("descriptionModuleName not implemented. "),
                        QStringLiteral("ObjectName not in textManagerDataList: "),
                        QStringLiteral("Can't convert ConfigValue to QVariantMap. "),
                        QStringLiteral("Can't read configuration description "),
                        QStringLiteral("Configuration folder refused, "),
                        QStringLiteral("No key \"type\" from placeholder "),
                        QStringLiteral("\"D-Bus interface Interface.EventlistWrite ")};

QVariantMap mapFrom(fuzz::Input& input, int depth);

QVariantList listFrom(fuzz::Input& input, int depth);

QVariant valueFrom(fuzz::Input& input, int depth)
{
    const int kind = input.byte();
    if (depth > 0 && kind < 0x50)
    {
        return kind < 0x30 ? QVariant(mapFrom(input, depth - 1))
                           : QVariant(listFrom(input, depth - 1));
    }
    switch (kind % 21)
    {
    case 0:
        return QVariant();
    case 1:
        return int(input.number());
    case 2:
        return quint32(input.number());
    case 3:
        return input.number();
    case 4:
        return double(input.number()) / 3;
    case 5:
        return input.below(2) == 1;
    case 6:
        return input.bytes(8);
    case 7:
        return input.texts(3);
    case 8:
        return QVariant::fromValue(QDBusVariant(input.text()));
    case 9:
        return QVariant::fromValue(QDBusObjectPath());
    case 10:
        return QVariant::fromValue(QDBusSignature());
    case 11:
        return QVariant::fromValue(QDBusArgument());
    case 12:
        return input.object(1);
    case 13:
        return input.json(1);
    case 14:
        return QJsonArray{input.text(), input.object(0)};
    case 15:
        return QVariantHash{{input.text(), input.text()}};
    case 16:
        return QVariant::fromValue(QList<int>{1, 2});
    case 17:
        return QVariant::fromValue(uchar(input.byte()));
    default:
        return input.text();
    }
}

QVariantMap mapFrom(fuzz::Input& input, int depth)
{
    QVariantMap map;
    for (int i = input.below(9); i > 0; --i)
    {
        const QString key = input.text();
        map.insert(key, valueFrom(input, depth));
    }
    return map;
}

QVariantList listFrom(fuzz::Input& input, int depth)
{
    QVariantList list;
    for (int i = input.below(4); i > 0; --i)
    {
        list.append(valueFrom(input, depth));
    }
    return list;
}

// The five keys with values that lead to a text; some of them are then spoilt.
QVariantMap dictionaryFrom(fuzz::Input& input, int depth)
{
    QVariantMap dictionary;
    if (input.below(3) > 0)
    {
        dictionary = {{words.at(0), 0},
                      {words.at(1), words.at(9)},
                      {words.at(2), words.at(9)},
                      {words.at(3), QString()},
                      {words.at(4), words.at(10)}};
    }
    if (depth > 0)
    {
        QVariantList urlArguments;
        for (int i = input.below(3); i > 0; --i)
        {
            urlArguments.append(dictionaryFrom(input, 0));
        }
        dictionary.insert(words.at(6), urlArguments);
    }
    const QVariantMap changes = mapFrom(input, 2);
    for (auto it = changes.begin(); it != changes.end(); ++it)
    {
        dictionary.insert(it.key(), it.value());
    }
    return dictionary;
}

struct Fixed
{
    EventsDBusDefinitions::TextSource textSource = EventsDBusDefinitions::languageFile;
    QString moduleName = QStringLiteral("before");
    QString objectName = QStringLiteral("before");
    QString instanceName = QStringLiteral("before");
    QString url = QStringLiteral("before");
};

void checkFixedKeys(const Provider& provider, const QVariantMap& dictionary)
{
    Fixed read;
    QVariantList arguments;
    QVariantList urlArguments;
    const bool isComplete = provider.convertDescriptionData(
        read.textSource, read.moduleName, read.objectName, read.instanceName, read.url, arguments,
        urlArguments, dictionary);
    fuzz::require(isComplete == (!read.moduleName.isEmpty() && !read.objectName.isEmpty() &&
                                 !read.url.isEmpty()),
                  "a dictionary is complete with a module, an object and a url");
    const auto same = [&](int word, const QString& text) {
        const QString before = QStringLiteral("before");
        const QString& key = words.at(word);
        fuzz::require(text ==
                          (dictionary.contains(key) ? dictionary.value(key).toString() : before),
                      "a text is that of its key, or is left alone", key);
    };
    same(1, read.moduleName);
    same(2, read.objectName);
    same(3, read.instanceName);
    same(4, read.url);
    fuzz::require(int(read.textSource) == dictionary.value(words.at(0)).toInt(),
                  "the text source is that of the dictionary");
    const auto list = [&](int word) {
        const QVariant value = dictionary.value(words.at(word));
        return value.canConvert(QMetaType::QVariantList) ? value.toList() : QVariantList();
    };
    fuzz::require(arguments.size() == list(5).size() && urlArguments.size() == list(6).size(),
                  "the lists have all their entries");
}

void checkArguments(const Provider& provider, const QVariantList& entries)
{
    QList<Argument> expected;
    for (const QVariant& entry : entries)
    {
        const QVariantMap map =
            entry.canConvert(QMetaType::QVariantMap) ? entry.toMap() : QVariantMap();
        if (!map.isEmpty())
        {
            expected.append({map.value(words.at(7)).toString(), map.value(words.at(8)).toString()});
        }
    }
    QList<Argument> read;
    provider.convertDescriptionArgumentData(read, entries);
    fuzz::require(read.size() == expected.size(), "each entry is an argument");
    for (int i = 0; i < read.size(); ++i)
    {
        fuzz::require(read.at(i).placeholder == expected.at(i).placeholder &&
                          read.at(i).argument == expected.at(i).argument,
                      "an argument is that of its entry", read.at(i).placeholder);
    }
}

void checkUrlArguments(const Provider& provider, const QVariantList& entries)
{
    QList<UrlArgument> read;
    provider.convertDescriptionUrlArgumentData(read, entries);
    QStringList placeholders;
    for (const QVariant& entry : entries)
    {
        const QVariantMap map =
            entry.canConvert(QMetaType::QVariantMap) ? entry.toMap() : QVariantMap();
        const auto text = [&](int word) { return map.value(words.at(word)).toString(); };
        if (!text(1).isEmpty() && !text(2).isEmpty() && !text(4).isEmpty())
        {
            placeholders.append(text(7));
        }
    }
    fuzz::require(read.size() == placeholders.size(), "each complete entry is an argument");
    for (int i = 0; i < read.size(); ++i)
    {
        fuzz::require(read.at(i).placeholder == placeholders.at(i), "it has its placeholder");
        fuzz::require(!read.at(i).textObject.isEmpty(), "it has a text, or the key of its text");
    }
}

FUZZ_TARGET(description_conversion)
{
    static const bool isBusOutOfReach =
        qputenv("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + fuzz::folder().toUtf8() + "/no-bus");
    Q_UNUSED(isBusOutOfReach)
    fuzz::haveApplication();
    static const FakeTextManager texts(FakeTextManager::pumpTexts());
    static const QVector<Provider::TextManagerData> managers{
        {QStringLiteral("PumpControl"), &texts}};
    static Provider* const provider = new Provider(
        QStringLiteral("PumpControl"), QStringLiteral("PumpControl"), managers, QString());
    fuzz::Log::take();

    fuzz::Input input(data, size, words);
    const QVariantMap dictionary = dictionaryFrom(input, 1);
    const QStringList attributes = input.texts(3);
    checkFixedKeys(*provider, dictionary);
    checkArguments(*provider, listFrom(input, 2));
    checkUrlArguments(*provider, dictionary.value(words.at(6)).toList());
    fuzz::Log::requireOnly(fuzz::Log::take(), heads);

    provider->logEvent(attributes, input.text(), input.text(), dictionary, input.texts(2),
                       input.text(), input.text(), QString(),
                       EventlistHandlerEnums::SourceHashType::noSourceHash);
    const QStringList warnings = fuzz::Log::take();
    fuzz::Log::requireOnly(warnings, heads);
    // The call that would carry it says this twice where there is no bus.
    fuzz::require(warnings.filter(heads.last()).size() == 2, "one event was logged",
                  warnings.join(QLatin1Char('\n')));
    return 0;
}
} // namespace fuzz_description_conversion
