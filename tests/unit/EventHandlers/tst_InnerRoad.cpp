#include "Description/EventTextWriter.h"
#include "Description/EventlistHandlerConvenienceFunctions.h"
#include "EventHandlers/EventHandlerBaseClass.h"
#include "EventWrite/EventHandlerWrite.h"
#include "unit/EventHandlers/ProducerTest.h"

#include "Platform/JsonFunctions.h"
#include "Platform/ReadAllTextsHelper.h"
#include "Platform/TranslateableTextHelper.h"

#include <QDateTime>
#include <QMultiMap>
#include <QRandomGenerator>
#include <QTest>

#include <memory>

using Functions = EventlistHandlerConvenienceFunctions;
using UrlArguments = QList<Functions::stDescriptionUrlArgument>;

namespace
{

// What the file road has written last.
QJsonObject lastSpoolObject;

struct RandomEvent
{
    EventType eventType;
    State state;
    QString description;
    QString user;
    QString alarmId;
    QString sourceHashes;
    SourceHashType sourceHashType;
    QVariantMap textObject;
    Arguments arguments;
    // Url argument and text object, one url each.
    Arguments urlArguments;
    UrlArguments resolvedUrlArguments;
};

// Events as no module sends them: few letters, so that placeholders are found, overlap and follow
// each other, and among them what text processing trips over.
class RandomEvents
{
public:
    explicit RandomEvents(quint32 seed) : m_random(seed) {}

    RandomEvent next()
    {
        RandomEvent event;
        event.eventType = EventType(below(4));
        event.state = State(isOneOf(100) ? 3 + below(5) : below(3));
        event.description = anyText();
        event.user = anyText();
        event.alarmId = anyText();
        event.sourceHashes = anyText();
        event.sourceHashType = SourceHashType(below(5) - 1);
        event.textObject = textObject();
        const int arguments = below(isOneOf(50) ? 30 : 4);
        for (int i = 0; i < arguments; ++i)
        {
            event.arguments.append({placeholder(), anyText()});
        }
        const int urlArguments = below(3);
        for (int i = 0; i < urlArguments; ++i)
        {
            const QString url = QLatin1String("url") + QString::number(i);
            event.urlArguments.append({placeholder(), url});
            event.resolvedUrlArguments.append(
                {event.urlArguments.last().placeholder, textObject()});
        }
        return event;
    }

private:
    int below(int limit) { return int(m_random.bounded(quint32(limit))); }
    bool isOneOf(int count) { return below(count) == 0; }

    QString letters(int size)
    {
        static const QString all = text("aab%%112 ,\"\\/{}\b\f\n\r\t\x01\x1f\x7fäß€\xe2\x80\xa8") +
                                   QChar(0) + QChar(0xD800) + QChar(0xDC00) + QChar(0xFEFF) +
                                   QChar(0xFFFF) + QChar(0x0301) + QChar(0xD83D) + QChar(0xDE00);
        QString result;
        result.reserve(size);
        while (result.size() < size)
        {
            result += isOneOf(10) ? text("😀") : QString(all.at(below(all.size())));
        }
        return result;
    }

    QString anyText()
    {
        if (isOneOf(20))
        {
            return {};
        }
        // Plain for long stretches, as real texts are.
        QString result = letters(below(isOneOf(6) ? 60 : 8));
        if (isOneOf(3))
        {
            result += QString(below(60), QLatin1Char('x')) + placeholder() + letters(below(4));
        }
        // So long that replacing many of them passes the bounds of the inner road.
        return isOneOf(20000) ? result.repeated(3000) : result;
    }

    QString placeholder()
    {
        static const QStringList usual{text("%1"), text("%2"), text("%10"), text("%"),
                                       text("a"),  text("aa"), text("ab"),  text("11")};
        static const QStringList odd{text(""),
                                     text("/"),
                                     text("%1/x"),
                                     text("😀"),
                                     text("\""),
                                     text("\\"),
                                     text("ä"),
                                     text("lang"),
                                     QString(QChar(0)),
                                     QString(QChar(0xD800)),
                                     QString(QChar(0xFFFF)),
                                     text("\n")};
        const QStringList& choice = isOneOf(20) ? odd : usual;
        return choice.at(below(choice.size()));
    }

    QVariant oddValue()
    {
        const QVector<QVariant> values{QVariant(),
                                       QVariant(5),
                                       QVariant(2.5),
                                       QVariant(true),
                                       QVariant(QByteArray("bytes")),
                                       QVariant(QStringList{text("one"), text("%1")}),
                                       QVariant(QVariantMap{{text("inner"), text("%1")}}),
                                       QVariant(QDateTime(QDate(2026, 3, 14), QTime(9, 26, 53))),
                                       QVariant(QChar(0xE4))};
        return values.at(below(values.size()));
    }

    QVariantMap textObject()
    {
        QMultiMap<QString, QVariant> texts;
        const int count = isOneOf(15) ? 0 : 1 + below(3);
        for (int i = 0; i < count; ++i)
        {
            static const QStringList languages{text("lang_de"), text("lang_en"), text("lang_fr")};
            const QString key = isOneOf(60) ? letters(below(3)) : languages.at(i);
            texts.replace(key, isOneOf(60) ? oddValue() : QVariant(anyText()));
            if (isOneOf(300))
            {
                texts.insert(key, anyText());
            }
        }
        QVariantMap object;
        object = texts;
        return object;
    }

    QRandomGenerator m_random;
};

// What two ways make of one event.
struct Outcome
{
    QJsonObject spoolObject;
    QStringList warnings;

    bool operator==(const Outcome& other) const
    {
        return spoolObject == other.spoolObject && warnings == other.warnings;
    }
};

QByteArray difference(const QByteArray& where, const Outcome& actual, const Outcome& expected)
{
    return where + ": " + compactJson(actual.spoolObject) + '\n' +
           actual.warnings.join(QLatin1Char('\n')).toUtf8() + "\ninstead of " +
           compactJson(expected.spoolObject) + '\n' +
           expected.warnings.join(QLatin1Char('\n')).toUtf8();
}

} // namespace

// Takes the place of the platform's: no file for each of so many events.
bool writeJsonObjectToFile(const QJsonObject& object, const QString&)
{
    lastSpoolObject = object;
    return true;
}

/// The inner road makes what the exported steps make, byte for byte and warning for warning.
class tst_InnerRoad : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void makesTheSameOfRandomEvents_data();
    void makesTheSameOfRandomEvents();
    void leavesTextsPastItsBoundsToTheExportedSteps();

private:
    void giveTextsOf(const RandomEvent& event);
    Outcome logByProducer(const RandomEvent& event);
    Outcome logByExportedSteps(const RandomEvent& event, QJsonObject& metaData,
                               QVariantMap& textList);
    QStringList takeWarnings();

    WarningRecorder m_warnings;
    FakeTextManager m_texts;
    std::unique_ptr<EventHandlerBaseClass> m_producer;
    std::unique_ptr<EventHandlerWrite> m_router;
};

void tst_InnerRoad::initTestCase()
{
    m_producer = std::make_unique<EventHandlerBaseClass>(text("PumpControl"), m_texts,
                                                         text("PumpControl/Door"), QStringList());
    m_producer->setIconType(State::active, text("on"));
    m_producer->setIconType(State::inactive, text("off"));
    m_producer->setEventToFile(QString());
    m_router = std::make_unique<EventHandlerWrite>(text("PumpControl"), nullptr);
    m_router->setEventToFile(QString());
}

void tst_InnerRoad::giveTextsOf(const RandomEvent& event)
{
    m_texts.setTexts(event.description, event.textObject);
    for (int i = 0; i < event.urlArguments.size(); ++i)
    {
        m_texts.setTexts(event.urlArguments[i].argument, event.resolvedUrlArguments[i].textObject);
    }
}

QStringList tst_InnerRoad::takeWarnings()
{
    QStringList warnings;
    const QVector<LoggedMessage> messages = m_warnings.take();
    for (const LoggedMessage& message : messages)
    {
        warnings.append(message.function.section(QLatin1Char('('), 0, 0) + QLatin1String(": ") +
                        message.text);
    }
    return warnings;
}

Outcome tst_InnerRoad::logByProducer(const RandomEvent& event)
{
    lastSpoolObject = QJsonObject();
    m_producer->logEvent(event.eventType, event.state, event.description, event.arguments, m_texts,
                         event.urlArguments, event.user, event.alarmId);
    lastSpoolObject.remove(text("DateTimeMsUTC"));
    return {lastSpoolObject, takeWarnings()};
}

// In the order of the contract between the classes, step by step.
Outcome tst_InnerRoad::logByExportedSteps(const RandomEvent& event, QJsonObject& metaData,
                                          QVariantMap& textList)
{
    lastSpoolObject = QJsonObject();
    Functions::generateMetaData(
        metaData, ReadAllTextsHelper::getAllTextsAsVariantMap(m_texts, event.description),
        event.arguments, event.urlArguments, m_texts, event.description);
    QStringList warnings = takeWarnings();
    QString icon;
    if (event.state > State::inactive)
    {
        warnings.append(QLatin1String("void EventHandlerBaseClass::logEventIntern: State ") +
                        QString::number(int(event.state)) + QLatin1String(" not valid"));
    }
    else
    {
        icon = QStringList{QString(), text("on"), text("off")}.at(int(event.state));
    }
    Functions::generateDescriptionTextlist(textList, metaData);
    m_router->logEvent(event.eventType, event.state, icon, {text("Firmware")}, textList, event.user,
                       event.description, metaData, event.alarmId, QString(),
                       SourceHashType::noSourceHash);
    lastSpoolObject.remove(text("DateTimeMsUTC"));
    return {lastSpoolObject, warnings + takeWarnings()};
}

void tst_InnerRoad::makesTheSameOfRandomEvents_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 10; ++seed)
    {
        QTest::addRow("seed %u", seed) << seed;
    }
}

void tst_InnerRoad::makesTheSameOfRandomEvents()
{
#ifdef __SANITIZE_ADDRESS__
    // Slow there, and told apart by what they do and not by how many they are.
    constexpr int eventCount = 500;
#else
    constexpr int eventCount = 5000;
#endif
    QFETCH(quint32, seed);
    RandomEvents events(seed);
    int ordinaryCount = 0;
    for (int number = 0; number < eventCount; ++number)
    {
        const RandomEvent event = events.next();
        giveTextsOf(event);
        QJsonObject metaData;
        QVariantMap textList;
        const Outcome expected = logByExportedSteps(event, metaData, textList);
        const Outcome actual = logByProducer(event);
        const QByteArray where = "event " + QByteArray::number(number);
        QVERIFY2(actual == expected, difference(where, actual, expected).constData());

        // On the bus the same texts travel, and the metadata as text.
        const EventTextWriter writer(event.textObject, event.arguments, event.resolvedUrlArguments);
        if (!writer.isOrdinary())
        {
            continue;
        }
        ++ordinaryCount;
        TranslateableTextHelper helper(QString(), nullptr);
        helper.setTranslateableTextObject(textList);
        QCOMPARE(writer.description(), helper.getTranslateableTextObjectAsJsonString());
        const QJsonObject additionalData{
            {text("EventId"), event.description},
            {text("MetaData"), QString::fromUtf8(compactJson(metaData))},
            {text("SourceHashType"), int(event.sourceHashType)},
            {text("SourceHashes"), event.sourceHashes}};
        QCOMPARE(writer.additionalData(event.description, event.sourceHashes, event.sourceHashType),
                 QString::fromUtf8(compactJson(additionalData)));
        QVERIFY2(event.state > State::inactive || expected.warnings.isEmpty(), where.constData());
    }
    // Most events take the inner road; otherwise nothing was compared here.
    QVERIFY2(ordinaryCount > eventCount / 2, QByteArray::number(ordinaryCount).constData());
    QVERIFY2(ordinaryCount < eventCount, QByteArray::number(ordinaryCount).constData());
}

void tst_InnerRoad::leavesTextsPastItsBoundsToTheExportedSteps()
{
    constexpr int units = 1024 * 1024;
    const auto isOrdinary = [](int size, const Arguments& arguments) {
        const QVariantMap texts{{text("lang_en"), QString(size, QLatin1Char('x'))}};
        return EventTextWriter(texts, arguments, {}).isOrdinary();
    };
    Arguments many;
    for (int i = 0; i < 17; ++i)
    {
        many.append({QLatin1Char('%') + QString::number(i), text("y")});
    }

    QVERIFY(isOrdinary(units, {}));
    QVERIFY(!isOrdinary(units + 1, {}));
    QVERIFY(isOrdinary(units, {{text("%1"), QString()}}));
    QVERIFY(isOrdinary(units / 2, {{text("x"), text("yy")}}));
    QVERIFY(!isOrdinary(units / 2 + 1, {{text("x"), text("yy")}}));
    QVERIFY(!isOrdinary(units, many));
    many.removeLast();
    // A text counts 128 units more than it has, each time that it is read.
    QVERIFY(!isOrdinary(units, many));
    QVERIFY(isOrdinary(units - 128, many));
}

QTEST_GUILESS_MAIN(tst_InnerRoad)
#include "tst_InnerRoad.moc"
