#include "Platform/TranslateableTextHelper.h"

#include <QTest>

class tst_TranslateableTextHelper : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void isEmptyWhenMadeWithTheEmptyText();
    void filesATextUnderTheLanguageOfLastResort();
    void givesBackWhatWasSet();
    void isEmptyAgainAfterAnEmptyMapWasSet();
    void writesTheContentAsJsonText_data();
    void writesTheContentAsJsonText();
    void findsTheTextOfALanguage_data();
    void findsTheTextOfALanguage();

private:
    const QString m_german = QStringLiteral("lang_de");
    const QString m_english = QStringLiteral("lang_en");
    const QVariantMap m_pump{{m_german, QStringLiteral("Pumpe 3")},
                             {m_english, QStringLiteral("pump 3")}};
};

void tst_TranslateableTextHelper::isEmptyWhenMadeWithTheEmptyText()
{
    const TranslateableTextHelper helper(QString(), nullptr);

    QVERIFY(helper.getTranslateableTextObject().isEmpty());
    QCOMPARE(helper.getTranslateableTextObjectAsJsonString(), QStringLiteral("{}"));
    QCOMPARE(helper.getText(m_german), QString());
}

void tst_TranslateableTextHelper::filesATextUnderTheLanguageOfLastResort()
{
    const TranslateableTextHelper helper(QStringLiteral("PumpControl/Unknown"));

    QCOMPARE(helper.getTranslateableTextObjectAsJsonString(),
             QStringLiteral("{\"lang_en\":\"PumpControl/Unknown\"}"));
    QCOMPARE(helper.getText(m_german), QStringLiteral("PumpControl/Unknown"));
}

void tst_TranslateableTextHelper::givesBackWhatWasSet()
{
    TranslateableTextHelper helper(QStringLiteral("before"));

    helper.setTranslateableTextObject(m_pump);

    QCOMPARE(helper.getTranslateableTextObject(), m_pump);
}

void tst_TranslateableTextHelper::isEmptyAgainAfterAnEmptyMapWasSet()
{
    TranslateableTextHelper helper{QString()};
    helper.setTranslateableTextObject(m_pump);

    helper.setTranslateableTextObject(QVariantMap());

    QVERIFY(helper.getTranslateableTextObject().isEmpty());
    QCOMPARE(helper.getTranslateableTextObjectAsJsonString(), QStringLiteral("{}"));
    QCOMPARE(helper.getText(m_english), QString());
}

void tst_TranslateableTextHelper::writesTheContentAsJsonText_data()
{
    QTest::addColumn<QVariantMap>("textObject");
    QTest::addColumn<QString>("json");

    QTest::newRow("two languages")
        << QVariantMap{{m_english, QStringLiteral("Overtemperature at pump 3, value 97.5")},
                       {m_german, QStringLiteral("Übertemperatur an Pumpe 3, Wert 97.5")}}
        << QStringLiteral("{\"lang_de\":\"Übertemperatur an Pumpe 3, Wert 97.5\","
                          "\"lang_en\":\"Overtemperature at pump 3, value 97.5\"}");
    QTest::newRow("characters with a meaning in JSON")
        << QVariantMap{{m_german, QStringLiteral("\"a\\b\"\n\t/")}}
        << QStringLiteral("{\"lang_de\":\"\\\"a\\\\b\\\"\\n\\t/\"}");
    QTest::newRow("U+0000 and half a surrogate pair")
        << QVariantMap{{m_german, QString(QString(QChar::Null) + QChar(0xd800))}}
        << QStringLiteral("{\"lang_de\":\"\\u0000\\ud800\"}");
    QTest::newRow("empty text") << QVariantMap{{m_german, QString()}}
                                << QStringLiteral("{\"lang_de\":\"\"}");
}

void tst_TranslateableTextHelper::writesTheContentAsJsonText()
{
    QFETCH(QVariantMap, textObject);
    QFETCH(QString, json);
    TranslateableTextHelper helper{QString()};

    helper.setTranslateableTextObject(textObject);

    QCOMPARE(helper.getTranslateableTextObjectAsJsonString(), json);
}

void tst_TranslateableTextHelper::findsTheTextOfALanguage_data()
{
    QTest::addColumn<QVariantMap>("textObject");
    QTest::addColumn<QString>("languageKey");
    QTest::addColumn<QString>("text");

    QTest::newRow("language is there") << m_pump << m_german << QStringLiteral("Pumpe 3");
    QTest::newRow("missing, last resort is there")
        << m_pump << QStringLiteral("lang_fr") << QStringLiteral("pump 3");
    QTest::newRow("missing, last resort too") << QVariantMap{{m_german, QStringLiteral("Pumpe 3")}}
                                              << QStringLiteral("lang_fr") << QString();
    QTest::newRow("there and empty")
        << QVariantMap{{m_german, QString()}, {m_english, 1}} << m_german << QString();
    QTest::newRow("other case of the key") << QVariantMap{{m_german, QStringLiteral("Pumpe 3")}}
                                           << QStringLiteral("Lang_de") << QString();
    QTest::newRow("no string") << QVariantMap{{m_german, 97.5}} << m_german
                               << QStringLiteral("97.5");
}

void tst_TranslateableTextHelper::findsTheTextOfALanguage()
{
    QFETCH(QVariantMap, textObject);
    QFETCH(QString, languageKey);
    QFETCH(QString, text);
    TranslateableTextHelper helper{QString()};
    helper.setTranslateableTextObject(textObject);

    QCOMPARE(helper.getText(languageKey), text);
}

QTEST_APPLESS_MAIN(tst_TranslateableTextHelper)
#include "tst_TranslateableTextHelper.moc"
