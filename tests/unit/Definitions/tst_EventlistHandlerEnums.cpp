#include "Definitions/EventlistHandlerEnums.h"

#include "Definitions/EventlistHandlerStructs.h"
#include "TestSupport/WarningRecorder.h"

#include <QList>
#include <QMetaEnum>
#include <QTest>

#include <type_traits>

using EventType = EventlistHandlerEnums::EventType;
using State = EventlistHandlerEnums::State;
using SourceHashType = EventlistHandlerEnums::SourceHashType;

// The event type alone is known to the meta-object system.
static_assert(QtPrivate::IsQEnumHelper<EventType>::Value, "EventType has its names");
static_assert(!QtPrivate::IsQEnumHelper<State>::Value, "State has no names");
static_assert(!QtPrivate::IsQEnumHelper<SourceHashType>::Value, "SourceHashType has no names");
static_assert(!std::is_convertible<EventType, int>::value, "EventType is scoped");
// Any number may be cast to these two.
static_assert(std::is_same<std::underlying_type_t<State>, int>::value, "State holds any int");
static_assert(std::is_same<std::underlying_type_t<SourceHashType>, int>::value,
              "SourceHashType holds any int");
static_assert(std::is_aggregate<EventlistHandlerStructs::stDescriptionArgument>::value,
              "a plain record");

class tst_EventlistHandlerEnums : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void numbersTheEnumerators_data();
    void numbersTheEnumerators();
    void listsTheNamesOfTheEventTypesOnly();
    void hasNothingButItsEnumerations();
    void passesItsParentOn();
    void computesTheStateOfACondition_data();
    void computesTheStateOfACondition();
    void copiesARecordByValue();

private:
    WarningRecorder m_warnings;
};

void tst_EventlistHandlerEnums::numbersTheEnumerators_data()
{
    QTest::addColumn<int>("enumerator");
    QTest::addColumn<int>("value");

    QTest::newRow("alarm") << int(EventType::alarm) << 0;
    QTest::newRow("auditTrail") << int(EventType::auditTrail) << 1;
    QTest::newRow("fault") << int(EventType::fault) << 2;
    QTest::newRow("otherEvents") << int(EventType::otherEvents) << 3;
    QTest::newRow("neutral") << int(State::neutral) << 0;
    QTest::newRow("active") << int(State::active) << 1;
    QTest::newRow("inactive") << int(State::inactive) << 2;
    QTest::newRow("noSourceHash") << int(SourceHashType::noSourceHash) << 0;
}

void tst_EventlistHandlerEnums::numbersTheEnumerators()
{
    QFETCH(int, enumerator);
    QFETCH(int, value);
    QCOMPARE(enumerator, value);
}

void tst_EventlistHandlerEnums::listsTheNamesOfTheEventTypesOnly()
{
    const QMetaObject& metaObject = EventlistHandlerEnums::staticMetaObject;
    QCOMPARE(metaObject.enumeratorCount(), 1);

    const auto metaEnum = QMetaEnum::fromType<EventType>();
    QStringList names;
    for (int i = 0; i < metaEnum.keyCount(); ++i)
    {
        QCOMPARE(metaEnum.value(i), i);
        names.append(QString::fromLatin1(metaEnum.key(i)));
    }
    QCOMPARE(names, QStringList({QStringLiteral("alarm"), QStringLiteral("auditTrail"),
                                 QStringLiteral("fault"), QStringLiteral("otherEvents")}));
}

void tst_EventlistHandlerEnums::hasNothingButItsEnumerations()
{
    const QMetaObject& metaObject = EventlistHandlerEnums::staticMetaObject;

    QCOMPARE(metaObject.methodCount(), metaObject.methodOffset());
    QCOMPARE(metaObject.propertyCount(), metaObject.propertyOffset());
    QCOMPARE(sizeof(EventlistHandlerEnums), sizeof(QObject));
}

void tst_EventlistHandlerEnums::passesItsParentOn()
{
    QObject parent;
    const auto* const enums = new EventlistHandlerEnums(&parent);
    const EventlistHandlerEnums alone(nullptr);

    QCOMPARE(enums->parent(), &parent);
    QVERIFY(alone.parent() == nullptr);
}

void tst_EventlistHandlerEnums::computesTheStateOfACondition_data()
{
    QTest::addColumn<bool>("isOn");
    QTest::addColumn<int>("state");

    QTest::newRow("on") << true << int(State::active);
    QTest::newRow("off") << false << int(State::inactive);
}

void tst_EventlistHandlerEnums::computesTheStateOfACondition()
{
    QFETCH(bool, isOn);
    QFETCH(int, state);
    QCOMPARE(2 - int(isOn), state);
}

void tst_EventlistHandlerEnums::copiesARecordByValue()
{
    QList<EventlistHandlerStructs::stDescriptionArgument> list{
        {QStringLiteral("%1"), QStringLiteral("97.5")}};

    EventlistHandlerStructs::stDescriptionArgument copy = list.first();
    copy.argument = QStringLiteral("98");

    QCOMPARE(list.first().placeholder, QStringLiteral("%1"));
    QCOMPARE(list.first().argument, QStringLiteral("97.5"));
}

QTEST_GUILESS_MAIN(tst_EventlistHandlerEnums)
#include "tst_EventlistHandlerEnums.moc"
