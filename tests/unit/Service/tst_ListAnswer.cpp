#include "core/ListAnswer.h"

#include <QTest>

using namespace eventlistd;

class tst_ListAnswer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void holdsHeaderAndRows();
    void saysWhenRowsWereLeftOut();
    void takesNoSmallerRowAfterOneThatDidNotFit();
    void countsBytesAndNotCharacters_data();
    void countsBytesAndNotCharacters();
};

void tst_ListAnswer::holdsHeaderAndRows()
{
    ListAnswer answer({QStringLiteral("a"), QStringLiteral("b")});
    QVERIFY(answer.add({QStringLiteral("1"), QStringLiteral("2")}));
    const QVariantMap map = answer.toMap();
    QCOMPARE(map.keys(), QStringList({QStringLiteral("data"), QStringLiteral("header")}));
    QCOMPARE(map.value(QStringLiteral("header")).toStringList(),
             QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(map.value(QStringLiteral("data")).value<Rows>(),
             Rows({{QStringLiteral("1"), QStringLiteral("2")}}));
}

void tst_ListAnswer::saysWhenRowsWereLeftOut()
{
    ListAnswer answer({QStringLiteral("a")}, 100);
    QVERIFY(answer.add({QString(60, QLatin1Char('x'))}));
    QVERIFY(!answer.isTruncated());
    QVERIFY(!answer.add({QString(60, QLatin1Char('x'))}));
    QVERIFY(answer.isTruncated());
    QCOMPARE(answer.toMap().value(QStringLiteral("truncated")), QVariant(true));
    QCOMPARE(answer.rows().size(), 1);
}

void tst_ListAnswer::takesNoSmallerRowAfterOneThatDidNotFit()
{
    ListAnswer answer({QStringLiteral("a")}, 100);
    QVERIFY(!answer.add({QString(200, QLatin1Char('x'))}));
    QVERIFY(!answer.add({QString()}));
    QCOMPARE(answer.rows().size(), 0);
}

void tst_ListAnswer::countsBytesAndNotCharacters_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("one byte") << QString(90, QLatin1Char('x'));
    QTest::newRow("two bytes") << QString(45, QChar(0xe4));
    QTest::newRow("three bytes") << QString(30, QChar(0x20ac));
}

void tst_ListAnswer::countsBytesAndNotCharacters()
{
    QFETCH(QString, text);
    QVERIFY(ListAnswer({}, 90 + 15).add({text}));
    QVERIFY(!ListAnswer({}, 90 + 14).add({text}));
}

QTEST_APPLESS_MAIN(tst_ListAnswer)
#include "tst_ListAnswer.moc"
