#include "EventHandlers/EventHandler.h"
#include "TestSupport/ChildProcess.h"
#include "TestSupport/FakeTextManager.h"
#include "unit/UnitTest.h"

#include "Platform/TranslateableTextHelper.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <cstring>

/// A platform of a device may write texts in another form than the stand-in. An event is then written in
/// that form. The library looks at the form once in a process, so each has a process of its own.
class tst_OtherPlatform : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesTheDescriptionAsThePlatformDoes_data();
    void writesTheDescriptionAsThePlatformDoes();

private:
    SpoolFolder m_spool;
};

namespace
{
// Set in the processes that log.
const char* form = "compact";

const char fileName[] = "other-platform";

QVariantMap textObject()
{
    return {{QStringLiteral("lang_de"), QStringLiteral("zwei\nZeilen")},
            {QStringLiteral("lang_en"), QStringLiteral("one line")}};
}

bool isPlain(const QString& text)
{
    return std::all_of(text.cbegin(), text.cend(),
                       [](QChar character) { return character >= QLatin1Char(' '); });
}

QString written(const QVariantMap& texts, const char* wantedForm)
{
    QJsonObject object = QJsonObject::fromVariantMap(texts);
    const QStringList keys = object.keys();
    for (const QString& key : keys)
    {
        if (std::strcmp(wantedForm, "plain") == 0 &&
            !(isPlain(key) && isPlain(object.value(key).toString())))
        {
            object.remove(key);
        }
    }
    const bool isIndented = std::strcmp(wantedForm, "indented") == 0;
    return QString::fromUtf8(QJsonDocument(object).toJson(isIndented ? QJsonDocument::Indented
                                                                     : QJsonDocument::Compact));
}

int logEvent()
{
    FakeTextManager texts;
    texts.setTexts(QStringLiteral("Pump/Started"), textObject());
    EventHandler producer(QStringLiteral("Pump"), texts, QStringLiteral("Pump/Started"),
                          QStringList());
    producer.setEventToFile(QLatin1String(fileName));
    producer.logEvent(QList<EventlistHandlerStructs::stDescriptionArgument>());
    return 0;
}
} // namespace

// In the place of the stand-in's: a program comes before the libraries that it links.
QString TranslateableTextHelper::getTranslateableTextObjectAsJsonString() const
{
    return written(getTranslateableTextObject(), form);
}

void tst_OtherPlatform::writesTheDescriptionAsThePlatformDoes_data()
{
    QTest::addColumn<QByteArray>("wantedForm");
    for (const char* const each : {"compact", "indented", "plain"})
    {
        QTest::newRow(each) << QByteArray(each);
    }
}

void tst_OtherPlatform::writesTheDescriptionAsThePlatformDoes()
{
    QFETCH(QByteArray, wantedForm);
    ChildProcess module;
    module.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QVERIFY(module.startAndWait(QCoreApplication::applicationFilePath(),
                                {QStringLiteral("--log"), QString::fromLatin1(wantedForm)}));
    QVERIFY(module.waitForFinished());
    QCOMPARE(module.exitCode(), 0);
    const QJsonObject event = m_spool.read(QLatin1String(fileName) + QLatin1String(".event.json"));
    QCOMPARE(event.value(QStringLiteral("Description")).toString(),
             written(textObject(), wantedForm.constData()));
}

int main(int argumentCount, char** arguments)
{
    QCoreApplication application(argumentCount, arguments);
    if (argumentCount == 3 && std::strcmp(arguments[1], "--log") == 0)
    {
        form = arguments[2];
        return logEvent();
    }
    tst_OtherPlatform test;
    return QTest::qExec(&test, argumentCount, arguments);
}
#include "tst_OtherPlatform.moc"
