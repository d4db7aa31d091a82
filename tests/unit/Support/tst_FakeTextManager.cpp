#include "TestSupport/FakeTextManager.h"
#include "TestSupport/WarningRecorder.h"

#include <QTest>

class tst_FakeTextManager : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void hasNoTextsAtFirst();
    void holdsTheTextsOfThePump();
    void givesTheTextsOfTheTest();
    void countsLookUps();

private:
    WarningRecorder m_warnings;
};

void tst_FakeTextManager::hasNoTextsAtFirst()
{
    const FakeTextManager texts;

    QVERIFY(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")).isEmpty());
}

void tst_FakeTextManager::holdsTheTextsOfThePump()
{
    const FakeTextManager texts(FakeTextManager::pumpTexts());

    const QVariantMap overTemperature{
        {QStringLiteral("lang_de"), QStringLiteral("Übertemperatur an %1, Wert %2")},
        {QStringLiteral("lang_en"), QStringLiteral("Overtemperature at %1, value %2")}};
    const QVariantMap pumpName{{QStringLiteral("lang_de"), QStringLiteral("Pumpe 3")},
                               {QStringLiteral("lang_en"), QStringLiteral("pump 3")}};
    QCOMPARE(texts.getAllTexts(QStringLiteral("PumpControl/OverTemperature")), overTemperature);
    QCOMPARE(texts.getAllTexts(QStringLiteral("PumpControl/PumpName3")), pumpName);
    QVERIFY(texts.getAllTexts(QStringLiteral("PumpControl/PumpName4")).isEmpty());
}

void tst_FakeTextManager::givesTheTextsOfTheTest()
{
    FakeTextManager texts;
    texts.setTexts(QStringLiteral("a/b"), QStringLiteral("eins"), QStringLiteral("one"));
    texts.setTexts(QStringLiteral("a/c"), {{QStringLiteral("lang_fr"), QStringLiteral("un")}});

    const TextManagerBase& base = texts;
    QCOMPARE(base.getAllTexts(QStringLiteral("a/b")),
             (QVariantMap{{QStringLiteral("lang_de"), QStringLiteral("eins")},
                          {QStringLiteral("lang_en"), QStringLiteral("one")}}));
    QCOMPARE(base.getAllTexts(QStringLiteral("a/c")),
             (QVariantMap{{QStringLiteral("lang_fr"), QStringLiteral("un")}}));

    texts.setTexts(QStringLiteral("a/c"), {});
    QVERIFY(base.getAllTexts(QStringLiteral("a/c")).isEmpty());
}

void tst_FakeTextManager::countsLookUps()
{
    const FakeTextManager texts(FakeTextManager::pumpTexts());
    QCOMPARE(texts.lookUpCount(), 0);

    texts.getAllTexts(QStringLiteral("PumpControl/PumpName3"));
    texts.getAllTexts(QStringLiteral("unknown"));

    QCOMPARE(texts.lookUpCount(), 2);
}

QTEST_GUILESS_MAIN(tst_FakeTextManager)
#include "tst_FakeTextManager.moc"
