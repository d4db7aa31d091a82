#include "TestSupport/WarningRecorder.h"

#include "Platform/DBusConnectionParameter.h"
#include "Platform/DBusReply.h"
#include "Platform/ErrorContainer.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QTest>

Q_DECLARE_METATYPE(DBusReply)

/// Reading and writing over a bus are in tst_DBusConnectorBase.
class tst_DBusReply : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void isEmptyAtFirst();
    void becomesAnError();
    void becomesAValue();
    void isACopy();
    void staysAsItIsWhenTheArgumentHoldsNothing();
    void isOneStructureOnTheBus();
    void hasADefaultErrorCodeThatIsAnError();
    void addressesAreValues();

private:
    WarningRecorder m_warnings;
};

void tst_DBusReply::isEmptyAtFirst()
{
    const DBusReply reply;

    QVERIFY(!reply.isError());
    QCOMPARE(reply.getErrorCode(), 0);
    QVERIFY(reply.getErrorText().isEmpty());
    QVERIFY(!reply.getValue().isValid());
}

void tst_DBusReply::becomesAnError()
{
    DBusReply reply;
    reply.setValue(5);
    reply.setError(3, QStringLiteral("out of range"));

    QVERIFY(reply.isError());
    QCOMPARE(reply.getErrorCode(), 3);
    QCOMPARE(reply.getErrorText(), QStringLiteral("out of range"));
    QVERIFY(!reply.getValue().isValid());
}

void tst_DBusReply::becomesAValue()
{
    DBusReply reply;
    reply.setError(3, QStringLiteral("out of range"));
    reply.setValue(QStringLiteral("open"));

    QVERIFY(!reply.isError());
    QVERIFY(reply.getErrorText().isEmpty());
    QCOMPARE(reply.getValue(), QVariant(QStringLiteral("open")));
}

void tst_DBusReply::isACopy()
{
    DBusReply reply;
    const DBusReply copy = reply;
    reply.setError(3, QStringLiteral("out of range"));

    QVERIFY(!copy.isError());
}

void tst_DBusReply::staysAsItIsWhenTheArgumentHoldsNothing()
{
    DBusReply reply;
    reply.setError(3, QStringLiteral("out of range"));
    const QDBusArgument nothing;
    nothing >> reply;

    QCOMPARE(reply.getErrorCode(), 3);
    QCOMPARE(reply.getErrorText(), QStringLiteral("out of range"));
}

void tst_DBusReply::isOneStructureOnTheBus()
{
    qDBusRegisterMetaType<DBusReply>();

    QCOMPARE(QByteArray(QDBusMetaType::typeToSignature(qMetaTypeId<DBusReply>())),
             QByteArray("(isv)"));
}

void tst_DBusReply::hasADefaultErrorCodeThatIsAnError()
{
    QVERIFY(ErrorContainer::getDefaultErrorCode() != 0);
}

void tst_DBusReply::addressesAreValues()
{
    const DBusConnectionParameter parameter = DBusConnectionParameter::createFromTavikInternal(
        QStringLiteral("Pump"), QStringLiteral("State"), QStringLiteral("Interface.State"));
    const DBusConnectionParameter copy = parameter;

    QCOMPARE(copy.getModuleName(), QStringLiteral("Pump"));
    QCOMPARE(copy.getObjectName(), QStringLiteral("State"));
    QCOMPARE(copy.getInterfaceName(), QStringLiteral("Interface.State"));
}

QTEST_APPLESS_MAIN(tst_DBusReply)
#include "tst_DBusReply.moc"
