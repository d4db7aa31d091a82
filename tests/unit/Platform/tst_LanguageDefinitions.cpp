#include "Platform/LanguageDefinitions.h"

#include <QTest>

class tst_LanguageDefinitions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void fallsBackToEnglish();
};

void tst_LanguageDefinitions::fallsBackToEnglish()
{
    const QString& key = LanguageDefinitions::getSecondFallbackLanguageFilename();
    QCOMPARE(key, QStringLiteral("lang_en"));
    QCOMPARE(&LanguageDefinitions::getSecondFallbackLanguageFilename(), &key);
}

QTEST_APPLESS_MAIN(tst_LanguageDefinitions)
#include "tst_LanguageDefinitions.moc"
