#include "Description/EventlistHandlerConvenienceFunctions.h"

#include "TestSupport/WarningRecorder.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <algorithm>
#include <iterator>
#include <limits>
#include <random>
#include <sys/resource.h>
#include <time.h>

using Functions = EventlistHandlerConvenienceFunctions;
using Argument = EventlistHandlerStructs::stDescriptionArgument;
using UrlArgument = Functions::stDescriptionUrlArgument;

namespace
{

const QString enKey = QStringLiteral("lang_en");
const QString deKey = QStringLiteral("lang_de");
constexpr int maximumTextUnits = 16777216;

// Few letters, so that placeholders are found, overlap and follow each other; and what text
// processing trips over.
QString randomText(QRandomGenerator& random, int maximumSize)
{
    static const QString letters = QStringLiteral("aab%1/\\\"{} ") + QChar(0) + QChar(0xD800) +
                                   QChar(0xDC00) + QChar(0x00E4) + QChar(0xFFFF) + QChar(0x0301);
    QString text;
    const int size = int(random.bounded(quint32(maximumSize + 1)));
    for (int i = 0; i < size; ++i)
    {
        text.append(letters.at(int(random.bounded(quint32(letters.size())))));
    }
    return text;
}

// A placeholder that can be read back: in an object that was parsed, Qt does not find all members
// whose names leave the basic plane.
QString randomPlaceholder(QRandomGenerator& random)
{
    const QString text = randomText(random, 2);
    QString placeholder(QLatin1Char('%'));
    for (const QChar letter : text)
    {
        if (letter != QLatin1Char('/') && !letter.isSurrogate())
        {
            placeholder.append(letter);
        }
    }
    return placeholder;
}

QString readable(const QString& text)
{
    return QString::fromLatin1(QJsonDocument(QJsonObject{{QStringLiteral("text"), text}}).toJson());
}

QString refusal(const QString& placeholder)
{
    return QLatin1String("Texts would grow too large. Placeholder not replaced: \"") + placeholder +
           QLatin1Char('"');
}

void expectRefusal(
    WarningRecorder& warnings, const QString& placeholder,
    const QString& operation = QStringLiteral("replacePlaceholderWithArgumentString"))
{
    warnings.expect(refusal(placeholder), QStringLiteral("EventlistHandlerConvenienceFunctions"),
                    QLatin1String("EventlistHandlerConvenienceFunctions::") + operation);
}

long peakMemoryKiB()
{
    rusage usage{};
    return getrusage(RUSAGE_SELF, &usage) == 0 ? usage.ru_maxrss : -1;
}

QJsonObject stringArgument(const QString& value)
{
    return {{QStringLiteral("type"), QStringLiteral("string")}, {QStringLiteral("value"), value}};
}

QList<Argument> numberedArguments(int count, const QString& prefix)
{
    QList<Argument> arguments;
    for (int i = 0; i < count; ++i)
    {
        arguments.append({prefix + QString::number(i), QStringLiteral("x")});
    }
    return arguments;
}

// Of this thread alone, so that other processes of a loaded machine do not count.
qint64 processorTimeNs()
{
    timespec time{};
    return clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time) == 0
               ? time.tv_sec * qint64(1000000000) + time.tv_nsec
               : 0;
}

template<typename Function>
qint64 bestTimeNs(Function function)
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (int i = 0; i < 3; ++i)
    {
        const qint64 before = processorTimeNs();
        function();
        best = std::min(best, processorTimeNs() - before);
    }
    return best;
}

} // namespace

class tst_PlaceholderReplacement : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void replacesLikeQStringForRandomTexts_data();
    void replacesLikeQStringForRandomTexts();
    void replacesLikeQString_data();
    void replacesLikeQString();
    void replacesLikeQStringWhereThePlaceholderBeginsAnew();
    void resolvesWhatItGeneratedFromRandomArguments_data();
    void resolvesWhatItGeneratedFromRandomArguments();
    void comesThroughMetadataOfAnyShape_data();
    void comesThroughMetadataOfAnyShape();

    void fillsTheTextsUpToTheLimitAndNotPastIt_data();
    void fillsTheTextsUpToTheLimitAndNotPastIt();
    void countsAllPlacesOfAnEmptyPlaceholder();
    void countsAllLanguagesTogether();
    void countsEachLanguageWithItsOwnArgument();
    void refusesATextArgumentPastTheLimitToo();
    void letsTextsPastTheLimitShrink();
    void warnsOnceForEachRefusedPlaceholderAndReplacesTheOthers();
    void doesNotTakePlacesThatOverlapForGrowth();
    void staysSmallWhenArgumentsMultiplyByTen();
    void stopsWhereManyPlaceholdersMeetLargeTexts();
    void replacesManyPlacesInOnePass();
    void writesManyUnsortedArgumentsAsFastAsSortedOnes_data();
    void writesManyUnsortedArgumentsAsFastAsSortedOnes();

private:
    WarningRecorder m_warnings;
};

void tst_PlaceholderReplacement::replacesLikeQStringForRandomTexts_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 1; seed <= 8; ++seed)
    {
        QTest::addRow("seed %u", seed) << seed;
    }
}

void tst_PlaceholderReplacement::replacesLikeQStringForRandomTexts()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    for (int round = 0; round < 2000; ++round)
    {
        const QString text = randomText(random, round % 50 == 0 ? 2000 : 30);
        const QString placeholder = randomText(random, 3);
        const QString argument = randomText(random, 5);
        QVariantMap byString{{enKey, text}};
        QVariantMap byText{{enKey, text}};

        Functions::replacePlaceholderWithArgumentString(byString, placeholder, argument);
        Functions::replacePlaceholderWithArgumentText(byText, placeholder, {{enKey, argument}});

        const QString expected = QString(text).replace(placeholder, argument);
        if (byString.value(enKey).toString() != expected ||
            byText.value(enKey).toString() != expected)
        {
            qCritical() << readable(text) << readable(placeholder) << readable(argument);
            QFAIL("not what QString::replace gives");
        }
    }
}

void tst_PlaceholderReplacement::replacesLikeQString_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("placeholder");
    QTest::addColumn<QString>("argument");
    QTest::addColumn<QString>("result");

    const QString high(QChar(0xD83D));
    const QString low(QChar(0xDE00));
    const auto literal = [](const char* value) { return QString::fromLatin1(value); };
    QTest::newRow("an empty placeholder stands between all characters")
        << literal("abc") << QString() << literal("-") << literal("-a-b-c-");
    QTest::newRow("an empty placeholder in an empty text")
        << literal("") << literal("") << literal("-") << literal("-");
    QTest::newRow("an empty placeholder in a null text")
        << QString() << QString() << literal("-") << literal("-");
    QTest::newRow("nothing by nothing")
        << literal("abc") << QString() << QString() << literal("abc");
    QTest::newRow("an empty text") << literal("") << literal("%1") << literal("x") << literal("");
    QTest::newRow("places that overlap")
        << literal("aaaaa") << literal("aa") << literal("b") << literal("bba");
    QTest::newRow("an argument that holds the placeholder")
        << literal("%1%1") << literal("%1") << literal("<%1>") << literal("<%1><%1>");
    QTest::newRow("by nothing") << literal("a%1b%1") << literal("%1") << QString() << literal("ab");
    QTest::newRow("longer than the text")
        << literal("%") << literal("%1") << literal("x") << literal("%");
    QTest::newRow("half of a surrogate pair") << QString(high + low + high) << high << literal("x")
                                              << QString(literal("x") + low + literal("x"));
    QTest::newRow("U+0000") << QString(literal("a") + QChar(0) + literal("b")) << QString(QChar(0))
                            << literal("x") << literal("axb");
    QTest::newRow("no canonical form")
        << QString(QChar(0x00E4)) + literal("a") + QChar(0x0308) << QString(QChar(0x00E4))
        << literal("x") << QString(literal("xa") + QChar(0x0308));
}

void tst_PlaceholderReplacement::replacesLikeQString()
{
    QFETCH(QString, text);
    QFETCH(QString, placeholder);
    QFETCH(QString, argument);
    QFETCH(QString, result);
    QVariantMap textList{{enKey, text}};

    Functions::replacePlaceholderWithArgumentString(textList, placeholder, argument);

    QCOMPARE(textList.value(enKey).toString(), result);
    QCOMPARE(result, QString(text).replace(placeholder, argument));
}

// All words of two letters in all longer ones: what was read in vain of one place may be the beginning of the next.
void tst_PlaceholderReplacement::replacesLikeQStringWhereThePlaceholderBeginsAnew()
{
    const auto words = [](int longest) {
        QStringList all;
        for (int size = 1; size <= longest; ++size)
        {
            for (int bits = 0; bits < 1 << size; ++bits)
            {
                all << QString::number(bits, 2).rightJustified(size, QLatin1Char('0'));
            }
        }
        return all;
    };
    const QStringList texts = words(9);
    const QStringList placeholders = words(5);
    for (const QString& placeholder : placeholders)
    {
        for (const QString& text : texts)
        {
            QVariantMap textList{{enKey, text}};
            Functions::replacePlaceholderWithArgumentString(textList, placeholder,
                                                            QStringLiteral("-"));
            QCOMPARE(textList.value(enKey).toString(),
                     QString(text).replace(placeholder, QStringLiteral("-")));
        }
    }
}

void tst_PlaceholderReplacement::resolvesWhatItGeneratedFromRandomArguments_data()
{
    replacesLikeQStringForRandomTexts_data();
}

void tst_PlaceholderReplacement::resolvesWhatItGeneratedFromRandomArguments()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    for (int round = 0; round < 300; ++round)
    {
        QVariantMap scheme{{enKey, randomText(random, 40)}, {deKey, randomText(random, 40)}};
        // The model: one map of what ends up under each placeholder, applied in sorted order.
        QMap<QString, QVariantMap> model;
        QList<Argument> literals;
        QList<UrlArgument> translated;
        for (int i = 0; i < 4; ++i)
        {
            const QString placeholder = randomPlaceholder(random);
            const QString text = randomText(random, 6);
            literals.append({placeholder, text});
            model.insert(placeholder, {{enKey, text}, {deKey, text}});
        }
        for (int i = 0; i < 2; ++i)
        {
            const QString placeholder = randomPlaceholder(random);
            const QVariantMap texts{{enKey, randomText(random, 6)}, {deKey, randomText(random, 6)}};
            translated.append({placeholder, texts});
            model.insert(placeholder, texts);
        }
        QJsonObject metaData;
        QVariantMap textList;

        Functions::generateMetaData(metaData, scheme, literals, translated, QString());
        // Through bytes, as whoever reads a stored event.
        const QByteArray stored = QJsonDocument(metaData).toJson(QJsonDocument::Compact);
        Functions::generateDescriptionTextlist(textList, QJsonDocument::fromJson(stored).object());

        for (const QString& language : {enKey, deKey})
        {
            QString expected = scheme.value(language).toString();
            for (auto argument = model.cbegin(); argument != model.cend(); ++argument)
            {
                expected.replace(argument.key(), argument->value(language).toString());
            }
            if (textList.value(language).toString() != expected)
            {
                qCritical() << stored << readable(expected);
                QFAIL("not the text of the model");
            }
        }
    }
}

void tst_PlaceholderReplacement::comesThroughMetadataOfAnyShape_data()
{
    replacesLikeQStringForRandomTexts_data();
}

// Each shape ends in a text list or in warnings of these operations, never in anything else.
void tst_PlaceholderReplacement::comesThroughMetadataOfAnyShape()
{
    QFETCH(quint32, seed);
    QRandomGenerator random(seed);
    const QJsonValue values[] = {QJsonValue::Null,
                                 true,
                                 1.5,
                                 QStringLiteral("string"),
                                 QStringLiteral("text"),
                                 QJsonObject(),
                                 stringArgument(QStringLiteral("x")),
                                 QJsonObject{{enKey, QStringLiteral("%1")}},
                                 QJsonObject{{QStringLiteral("%1"), stringArgument(QString())}},
                                 QJsonObject{{QStringLiteral("type"), QStringLiteral("text")},
                                             {QStringLiteral("value"), 1}}};
    const auto anyValue = [&] { return values[random.bounded(quint32(std::size(values)))]; };
    const QStringList words{QStringLiteral("Key"), QStringLiteral("DescriptionsScheme"),
                            QStringLiteral("No"), QStringLiteral("Unknown")};
    for (int round = 0; round < 500; ++round)
    {
        QJsonObject arguments;
        for (int i = 0; i < 3; ++i)
        {
            arguments.insert(randomText(random, 2), anyValue());
        }
        QJsonObject metaData{{QStringLiteral("DescriptionScheme"), anyValue()}};
        if (random.bounded(8U) != 0)
        {
            metaData.insert(QStringLiteral("Arguments"), arguments);
        }
        QVariantMap textList;

        Functions::generateDescriptionTextlist(textList, metaData);

        const auto messages = m_warnings.take();
        for (const LoggedMessage& message : messages)
        {
            QVERIFY2(words.contains(message.text.section(QLatin1Char(' '), 0, 0)),
                     qPrintable(message.text));
        }
        QVERIFY(!textList.isEmpty() || !messages.isEmpty());
    }
}

void tst_PlaceholderReplacement::fillsTheTextsUpToTheLimitAndNotPastIt_data()
{
    QTest::addColumn<int>("textSize");
    QTest::addColumn<int>("argumentSize");
    QTest::addColumn<bool>("isReplaced");

    // The text holds the placeholder of two characters once.
    QTest::newRow("just below") << 2 << maximumTextUnits - 1 << true;
    QTest::newRow("full") << 2 << maximumTextUnits << true;
    QTest::newRow("one too many") << 2 << maximumTextUnits + 1 << false;
    QTest::newRow("full, most of it text") << maximumTextUnits - 8 << 10 << true;
    QTest::newRow("one too many, most of it text") << maximumTextUnits - 8 << 11 << false;
    QTest::newRow("as large as before") << maximumTextUnits + 5 << 2 << true;
    QTest::newRow("larger than before") << maximumTextUnits + 5 << 3 << false;
}

void tst_PlaceholderReplacement::fillsTheTextsUpToTheLimitAndNotPastIt()
{
    QFETCH(int, textSize);
    QFETCH(int, argumentSize);
    QFETCH(bool, isReplaced);
    const QString text = QString(textSize - 2, QLatin1Char('.')) + QStringLiteral("%1");
    QVariantMap textList{{enKey, text}};
    if (!isReplaced)
    {
        expectRefusal(m_warnings, QStringLiteral("%1"));
    }

    Functions::replacePlaceholderWithArgumentString(textList, QStringLiteral("%1"),
                                                    QString(argumentSize, QLatin1Char('x')));

    QCOMPARE(textList.value(enKey).toString().size(),
             isReplaced ? textSize - 2 + argumentSize : textSize);
    QCOMPARE(textList.value(enKey).toString().endsWith(QStringLiteral("%1")), !isReplaced);
}

void tst_PlaceholderReplacement::countsAllPlacesOfAnEmptyPlaceholder()
{
    // Before and behind the one character.
    const QString half(maximumTextUnits / 2, QLatin1Char('x'));
    QVariantMap oneTooMany{{enKey, QStringLiteral(".")}};
    QVariantMap full{{enKey, QStringLiteral(".")}};
    expectRefusal(m_warnings, QString());

    Functions::replacePlaceholderWithArgumentString(oneTooMany, QString(), half);
    Functions::replacePlaceholderWithArgumentString(full, QString(), half.chopped(1));

    QCOMPARE(oneTooMany.value(enKey).toString(), QStringLiteral("."));
    QCOMPARE(full.value(enKey).toString().size(), maximumTextUnits - 1);
}

void tst_PlaceholderReplacement::countsAllLanguagesTogether()
{
    const QString half(maximumTextUnits / 2, QLatin1Char('x'));
    QVariantMap textList{{deKey, QStringLiteral("%1")}, {enKey, QStringLiteral("%1")}};
    QVariantMap oneTooMany{{deKey, QStringLiteral("%1")}, {enKey, QStringLiteral("%1.")}};
    expectRefusal(m_warnings, QStringLiteral("%1"));

    Functions::replacePlaceholderWithArgumentString(textList, QStringLiteral("%1"), half);
    Functions::replacePlaceholderWithArgumentString(oneTooMany, QStringLiteral("%1"), half);

    QCOMPARE(textList, QVariantMap({{deKey, half}, {enKey, half}}));
    QCOMPARE(oneTooMany,
             QVariantMap({{deKey, QStringLiteral("%1")}, {enKey, QStringLiteral("%1.")}}));
}

void tst_PlaceholderReplacement::countsEachLanguageWithItsOwnArgument()
{
    const QString placeholder = QStringLiteral("%1");
    const QString large(maximumTextUnits, QLatin1Char('x'));
    QVariantMap full{{deKey, placeholder}, {enKey, placeholder}};
    QVariantMap oneTooMany = full;
    expectRefusal(m_warnings, placeholder, QStringLiteral("replacePlaceholderWithArgumentText"));

    Functions::replacePlaceholderWithArgumentText(full, placeholder,
                                                  {{deKey, QString()}, {enKey, large}});
    Functions::replacePlaceholderWithArgumentText(oneTooMany, placeholder,
                                                  {{deKey, QStringLiteral("y")}, {enKey, large}});

    QCOMPARE(full, QVariantMap({{deKey, QString()}, {enKey, large}}));
    QCOMPARE(oneTooMany, QVariantMap({{deKey, placeholder}, {enKey, placeholder}}));
}

void tst_PlaceholderReplacement::refusesATextArgumentPastTheLimitToo()
{
    QVariantMap textList{{enKey, QStringLiteral("%1")}};
    expectRefusal(m_warnings, QStringLiteral("%1"),
                  QStringLiteral("replacePlaceholderWithArgumentText"));

    Functions::replacePlaceholderWithArgumentText(
        textList, QStringLiteral("%1"), {{enKey, QString(maximumTextUnits + 1, QLatin1Char('x'))}});

    QCOMPARE(textList, QVariantMap({{enKey, QStringLiteral("%1")}}));
}

void tst_PlaceholderReplacement::letsTextsPastTheLimitShrink()
{
    QString text(maximumTextUnits + 100, QLatin1Char('.'));
    text.append(QStringLiteral("%1"));
    QVariantMap textList{{enKey, text}};

    Functions::replacePlaceholderWithArgumentString(textList, QStringLiteral("%1"),
                                                    QStringLiteral("x"));

    QCOMPARE(textList.value(enKey).toString().size(), maximumTextUnits + 101);
}

void tst_PlaceholderReplacement::warnsOnceForEachRefusedPlaceholderAndReplacesTheOthers()
{
    const QString large(maximumTextUnits, QLatin1Char('x'));
    const QJsonObject arguments{{QStringLiteral("%1"), stringArgument(large)},
                                {QStringLiteral("%2"), stringArgument(QStringLiteral("y"))},
                                {QStringLiteral("%3"), stringArgument(large)}};
    QVariantMap textList{{deKey, QStringLiteral("%1 %2 %3")}, {enKey, QStringLiteral("%1 %2 %3")}};
    expectRefusal(m_warnings, QStringLiteral("%1"));
    expectRefusal(m_warnings, QStringLiteral("%3"));

    Functions::replacePlaceholder(textList, arguments);

    QCOMPARE(textList,
             QVariantMap({{deKey, QStringLiteral("%1 y %3")}, {enKey, QStringLiteral("%1 y %3")}}));
}

void tst_PlaceholderReplacement::doesNotTakePlacesThatOverlapForGrowth()
{
    // Counted with those that overlap, there would be nearly as many places as characters.
    const QString text(100000, QLatin1Char('a'));
    const QString placeholder(1000, QLatin1Char('a'));
    const QString argument(100000, QLatin1Char('b'));
    QVariantMap textList{{enKey, text}};
    const long peakBefore = peakMemoryKiB();

    Functions::replacePlaceholderWithArgumentString(textList, placeholder, argument);

    QCOMPARE(textList.value(enKey).toString(), QString(100 * 100000, QLatin1Char('b')));
    // The result takes 20 MB.
    QVERIFY(peakMemoryKiB() - peakBefore < 200 * 1024);
}

void tst_PlaceholderReplacement::staysSmallWhenArgumentsMultiplyByTen()
{
    // Less than a kilobyte, which would grow to 10^20 characters.
    QJsonObject arguments;
    for (char level = 'A'; level < 'A' + 20; ++level)
    {
        const QString next = QString(QLatin1Char(char(level + 1))).repeated(10);
        arguments.insert(QString(QLatin1Char(level)), stringArgument(next));
    }
    const QJsonObject metaData{
        {QStringLiteral("DescriptionScheme"), QJsonObject{{enKey, QStringLiteral("A")}}},
        {QStringLiteral("Arguments"), arguments}};
    QVERIFY(QJsonDocument(metaData).toJson(QJsonDocument::Compact).size() < 1024);
    // A to G make 10^7 characters; H is refused, and nothing is left for the others to replace.
    expectRefusal(m_warnings, QStringLiteral("H"));
    QVariantMap textList;
    const qint64 onePassNs = bestTimeNs([] {
        QVariantMap text{{enKey, QString(1000000, QLatin1Char('a'))}};
        Functions::replacePlaceholderWithArgumentString(text, QStringLiteral("a"),
                                                        QStringLiteral("bbbbbbbbbb"));
    });
    const long peakBefore = peakMemoryKiB();

    const qint64 beforeNs = processorTimeNs();
    Functions::generateDescriptionTextlist(textList, metaData);

    // The steps that are made, and a count for each that is refused. A step that is made in spite of
    // the limit would take ten times as long as all before it.
    const qint64 neededNs = processorTimeNs() - beforeNs;
    QVERIFY2(neededNs < 60 * onePassNs,
             qPrintable(QString::number(double(neededNs) / double(onePassNs))));
    QVERIFY(peakMemoryKiB() - peakBefore < 512 * 1024);
    QCOMPARE(textList.value(enKey).toString(), QString(10000000, QLatin1Char('H')));
}

void tst_PlaceholderReplacement::stopsWhereManyPlaceholdersMeetLargeTexts()
{
    // 256 Mi units may be searched. A text counts 128 more than it has, so that 16 searches in this one are
    // just allowed; it keeps its size.
    const QString end = QStringLiteral(" %000015 %000016");
    const QString fill(maximumTextUnits - 128 - end.size(), QLatin1Char('x'));
    QVariantMap textList{{enKey, QString(fill + end)}};
    QJsonObject arguments;
    for (int i = 0; i < 100000; ++i)
    {
        const QString number = QString::number(i).rightJustified(6, QLatin1Char('0'));
        arguments.insert(QLatin1Char('%') + number, stringArgument(QStringLiteral("replace")));
    }
    m_warnings.expect(QStringLiteral("Too many placeholders for texts of this size. Not replaced "
                                     "from \"%000016\" on"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions"),
                      QStringLiteral("EventlistHandlerConvenienceFunctions::replacePlaceholder"));

    Functions::replacePlaceholder(textList, arguments);

    QCOMPARE(textList.value(enKey).toString(), fill + QStringLiteral(" replace %000016"));
}

void tst_PlaceholderReplacement::replacesManyPlacesInOnePass()
{
    const auto replaceIn = [](int placeCount) {
        QVariantMap textList{{enKey, QString(placeCount, QLatin1Char('a'))}};
        Functions::replacePlaceholderWithArgumentString(textList, QStringLiteral("a"),
                                                        QStringLiteral("bb"));
        return textList.value(enKey).toString().size();
    };
    QCOMPARE(replaceIn(4000000), 8000000);

    const qint64 small = bestTimeNs([&] { replaceIn(250000); });
    const qint64 large = bestTimeNs([&] { replaceIn(4000000); });

    // Sixteen times the places: 16 times the time in one pass, 256 times when the rest moves at
    // each place.
    QVERIFY2(large < 80 * small, qPrintable(QString::number(double(large) / double(small))));
}

void tst_PlaceholderReplacement::writesManyUnsortedArgumentsAsFastAsSortedOnes_data()
{
    QTest::addColumn<bool>("isSecondListBetween");

    QTest::newRow("one list") << false;
    QTest::newRow("two lists, one between the other") << true;
}

void tst_PlaceholderReplacement::writesManyUnsortedArgumentsAsFastAsSortedOnes()
{
    QFETCH(bool, isSecondListBetween);
    constexpr int count = 20000;
    QList<Argument> sorted = numberedArguments(count, QStringLiteral("%b"));
    std::sort(sorted.begin(), sorted.end(), [](const Argument& left, const Argument& right) {
        return left.placeholder < right.placeholder;
    });
    QList<Argument> unsorted = sorted;
    std::mt19937 random(1);
    std::shuffle(unsorted.begin(), unsorted.end(), random);
    QList<UrlArgument> translated;
    if (isSecondListBetween)
    {
        // Behind each of the others, so that all of these go in between.
        for (const Argument& argument : qAsConst(unsorted))
        {
            translated.append({argument.placeholder + QLatin1Char('.'), {{enKey, enKey}}});
        }
    }
    const auto generate = [&](const QList<Argument>& arguments,
                              const QList<UrlArgument>& urlArguments) {
        QJsonObject metaData;
        Functions::generateMetaData(metaData, {{enKey, enKey}}, arguments, urlArguments, QString());
        return metaData.value(QStringLiteral("Arguments")).toObject().size();
    };
    QCOMPARE(generate(unsorted, translated), count + translated.size());

    const qint64 sortedNs = bestTimeNs([&] { generate(sorted, {}); });
    const qint64 unsortedNs = bestTimeNs([&] { generate(unsorted, translated); });

    // Inserted one by one in no order they would take a hundred times as long.
    QVERIFY2(unsortedNs < 15 * sortedNs,
             qPrintable(QString::number(double(unsortedNs) / double(sortedNs))));
}

QTEST_GUILESS_MAIN(tst_PlaceholderReplacement)
#include "tst_PlaceholderReplacement.moc"
