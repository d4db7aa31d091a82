#include "Platform/RecorderUrlHashHandling.h"

#include <QTest>

class tst_RecorderUrlHashHandling : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void givesTheSameRawBytesOnEveryDevice_data();
    void givesTheSameRawBytesOnEveryDevice();
};

void tst_RecorderUrlHashHandling::givesTheSameRawBytesOnEveryDevice_data()
{
    QTest::addColumn<QByteArray>("url");
    QTest::addColumn<QByteArray>("hash");

    // Computed with sha1sum.
    QTest::newRow("empty") << QByteArray()
                           << QByteArray("da39a3ee5e6b4b0d3255bfef95601890afd80709");
    QTest::newRow("abc") << QByteArray("abc")
                         << QByteArray("a9993e364706816aba3e25717850c26c9cd0d89d");
    QTest::newRow("UTF-8") << QByteArray("Pumpe/Gr\xc3\xb6\xc3\x9f"
                                         "e")
                           << QByteArray("232a97237a85686a6a52b298be79ae74843d379b");
}

void tst_RecorderUrlHashHandling::givesTheSameRawBytesOnEveryDevice()
{
    QFETCH(QByteArray, url);
    QFETCH(QByteArray, hash);

    QCOMPARE(RecorderUrlHashHandling::createUrlHash(url).toHex(), hash);
}

QTEST_APPLESS_MAIN(tst_RecorderUrlHashHandling)
#include "tst_RecorderUrlHashHandling.moc"
