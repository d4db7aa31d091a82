#include "Description/detail/JsonText.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

#include <limits>

class tst_JsonText : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void writesEveryUnitAsQtDoes();
    void writesATextInATextAsQtDoes();
    void looksAtNothingBehindTheText();
};

namespace
{
const QString key = QStringLiteral("key");

QString writtenByQt(const QString& text)
{
    return QString::fromUtf8(
        QJsonDocument(QJsonObject{{key, text}}).toJson(QJsonDocument::Compact));
}

void appendObject(JsonText& json, QStringView text)
{
    json.beginObject();
    json.appendKey(key);
    json.appendString(text);
    json.endObject();
}

QString written(QStringView text)
{
    JsonText json(0);
    appendObject(json, text);
    return json.text();
}
} // namespace

void tst_JsonText::writesEveryUnitAsQtDoes()
{
    for (int unit = 0; unit <= std::numeric_limits<char16_t>::max(); ++unit)
    {
        const QString alone(1, QChar(char16_t(unit)));
        QCOMPARE(written(alone), writtenByQt(alone));
        // A high surrogate finds its other half, a low one none.
        const QString between = QLatin1Char('a') + alone + QChar(0xDC00);
        QCOMPARE(written(between), writtenByQt(between));
    }
}

void tst_JsonText::writesATextInATextAsQtDoes()
{
    const QString text = QStringLiteral("\"\\\n\u0001\u00e4 plain");
    JsonText json(0);
    json.beginObject();
    json.appendKey(key);
    json.beginText();
    appendObject(json, text);
    json.endText();
    json.endObject();

    QCOMPARE(json.text(), writtenByQt(writtenByQt(text)));
}

void tst_JsonText::looksAtNothingBehindTheText()
{
    const QString whole = QString(QChar(0xD83D)) + QChar(0xDE00);

    QCOMPARE(written(QStringView(whole).left(1)), writtenByQt(whole.left(1)));
}

QTEST_APPLESS_MAIN(tst_JsonText)
#include "tst_JsonText.moc"
