#include "Platform/ConfigurationAndProcessDataBase.h"

#include "Platform/ConfigurationAndProcessDataDefinitions.h"
#include "Platform/ConfigurationAndProcessDataTools.h"
#include "Platform/ConfigurationDataValue.h"

#include <QTest>

class tst_ConfigurationAndProcessDataBase : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void keepsValuesUnderAKey();
    void givesTheValueOfALeaf();
    void hasNoLeafWithoutAValue_data();
    void hasNoLeafWithoutAValue();
    void givesANodeForEveryPath_data();
    void givesANodeForEveryPath();
    void givesTheTextObjectAsPropertyOfANode();
    void keepsALeafThatOutlivesTheTree();
    void extractsTheValueOfALeaf();
    void extractsNothingFromANullTree();

private:
    const QVariantMap m_text{{QStringLiteral("lang_de"), QStringLiteral("Grenzwert überschritten")},
                             {QStringLiteral("lang_en"), QStringLiteral("Limit exceeded")}};
    // {"Limits": {"High": {"value": <text>}, "Number": {"value": 7}, "None": {"value": null},
    //             "Unit": "bar"}}
    const QVariantMap m_description{
        {QStringLiteral("Limits"),
         QVariantMap{{QStringLiteral("High"), QVariantMap{{QStringLiteral("value"), m_text}}},
                     {QStringLiteral("Number"), QVariantMap{{QStringLiteral("value"), 7}}},
                     {QStringLiteral("None"),
                      QVariantMap{{QStringLiteral("value"), QVariant::fromValue(nullptr)}}},
                     {QStringLiteral("Unit"), QStringLiteral("bar")}}}};
};

void tst_ConfigurationAndProcessDataBase::keepsValuesUnderAKey()
{
    QCOMPARE(ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue(),
             QStringLiteral("value"));
}

void tst_ConfigurationAndProcessDataBase::givesTheValueOfALeaf()
{
    ConfigurationAndProcessDataBase root(m_description);

    const auto text = root.getLeafConfigurationData(QStringLiteral("Limits/High"));
    const auto number = root.getLeafConfigurationData(QStringLiteral("Limits/Number"));
    const auto none = root.getLeafConfigurationData(QStringLiteral("Limits/None"));

    QVERIFY(!text.isNull());
    QCOMPARE(text->getValue(), QVariant(m_text));
    QVERIFY(!number.isNull());
    QCOMPARE(number->getValue(), QVariant(7));
    QVERIFY(!none.isNull());
    QVERIFY(none->getValue().isNull());
}

void tst_ConfigurationAndProcessDataBase::hasNoLeafWithoutAValue_data()
{
    QTest::addColumn<QString>("path");

    QTest::newRow("unknown") << QStringLiteral("Limits/Low");
    QTest::newRow("inner node") << QStringLiteral("Limits");
    QTest::newRow("plain property") << QStringLiteral("Limits/Unit");
    QTest::newRow("below a leaf") << QStringLiteral("Limits/Number/value");
    QTest::newRow("empty") << QString();
    QTest::newRow("slash") << QStringLiteral("/");
    QTest::newRow("leading slash") << QStringLiteral("/Limits/High");
    QTest::newRow("trailing slash") << QStringLiteral("Limits/High/");
    QTest::newRow("double slash") << QStringLiteral("Limits//High");
    QTest::newRow("other case") << QStringLiteral("limits/High");
    QTest::newRow("U+0000") << QStringLiteral("Limits/High") + QChar(QChar::Null);
}

void tst_ConfigurationAndProcessDataBase::hasNoLeafWithoutAValue()
{
    QFETCH(QString, path);
    const auto root = QSharedPointer<ConfigurationAndProcessDataBase>::create(m_description);

    QVERIFY(root->getLeafConfigurationData(path).isNull());
    QVERIFY(!ConfigurationAndProcessDataTools::extractConfigValue(path, root).isValid());
}

void tst_ConfigurationAndProcessDataBase::givesANodeForEveryPath_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("hasValue");

    QTest::newRow("leaf") << QStringLiteral("Limits/High") << true;
    QTest::newRow("inner node") << QStringLiteral("Limits") << false;
    QTest::newRow("unknown") << QStringLiteral("Nowhere/at/all") << false;
    QTest::newRow("empty") << QString() << false;
}

void tst_ConfigurationAndProcessDataBase::givesANodeForEveryPath()
{
    QFETCH(QString, path);
    QFETCH(bool, hasValue);
    ConfigurationAndProcessDataBase root(m_description);

    const auto node = root.getLeafByPath(path);

    QVERIFY(!node.isNull());
    QCOMPARE(node->getDataProperty(QStringLiteral("value")).isValid(), hasValue);
}

void tst_ConfigurationAndProcessDataBase::givesTheTextObjectAsPropertyOfANode()
{
    ConfigurationAndProcessDataBase root(m_description);

    const auto node = root.getLeafByPath(QStringLiteral("Limits/High"));

    QCOMPARE(
        node->getDataProperty(ConfigurationAndProcessDataDefinitions::getKeyDataPropertyValue())
            .toMap(),
        m_text);
    QVERIFY(!node->getDataProperty(QStringLiteral("unit")).isValid());
    // A node is a tree of its own.
    QCOMPARE(root.getLeafByPath(QStringLiteral("Limits"))
                 ->getLeafConfigurationData(QStringLiteral("High"))
                 ->getValue(),
             QVariant(m_text));
}

void tst_ConfigurationAndProcessDataBase::keepsALeafThatOutlivesTheTree()
{
    auto root = QSharedPointer<ConfigurationAndProcessDataBase>::create(m_description);
    const auto leaf = root->getLeafConfigurationData(QStringLiteral("Limits/High"));

    root.clear();

    QCOMPARE(leaf->getValue(), QVariant(m_text));
}

void tst_ConfigurationAndProcessDataBase::extractsTheValueOfALeaf()
{
    const auto root = QSharedPointer<ConfigurationAndProcessDataBase>::create(m_description);

    QCOMPARE(
        ConfigurationAndProcessDataTools::extractConfigValue(QStringLiteral("Limits/High"), root),
        QVariant(m_text));
}

void tst_ConfigurationAndProcessDataBase::extractsNothingFromANullTree()
{
    QVERIFY(!ConfigurationAndProcessDataTools::extractConfigValue(
                 QStringLiteral("Limits/High"), QSharedPointer<ConfigurationAndProcessDataBase>())
                 .isValid());
}

QTEST_APPLESS_MAIN(tst_ConfigurationAndProcessDataBase)
#include "tst_ConfigurationAndProcessDataBase.moc"
