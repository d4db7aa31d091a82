#include "TestSupport/PrivateMember.h"

#include <QTest>

namespace
{

class Box
{
public:
    int content() const { return m_content; }
    static int count() { return sm_count; }

private:
    int doubled(int factor) const { return m_content * factor; }

    int m_content = 3;
    static int sm_count;
};

int Box::sm_count = 7;

} // namespace

PRIVATE_MEMBER(contentOf, int Box::*, &Box::m_content)
PRIVATE_MEMBER(countOf, int*, &Box::sm_count)
using DoubledType = int (Box::*)(int) const;
PRIVATE_MEMBER(doubledOf, DoubledType, &Box::doubled)

class tst_PrivateMember : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void reachesAField();
    void reachesAStaticMember();
    void reachesAnOperation();
};

void tst_PrivateMember::reachesAField()
{
    Box box;

    box.*contentOf() = 5;

    QCOMPARE(box.content(), 5);
}

void tst_PrivateMember::reachesAStaticMember()
{
    *countOf() = 8;

    QCOMPARE(Box::count(), 8);
}

void tst_PrivateMember::reachesAnOperation()
{
    const Box box;

    QCOMPARE((box.*doubledOf())(2), 6);
}

QTEST_GUILESS_MAIN(tst_PrivateMember)
#include "tst_PrivateMember.moc"
