#include "TestSupport/WarningRecorder.h"

#include <QDebug>
#include <QTest>

/// Test functions that have to fail, and one that has to pass.
class victim_warns : public QObject
{
    Q_OBJECT
public:
    ~victim_warns() override
    {
        m_warnings.stop();
        qWarning("A warning in the destructor");
    }

private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }

    void isSilent() {}
    void warnsAsExpected();
    void warnsUnexpectedly() { qWarning() << "No power on" << QStringLiteral("pump 3"); }
    void misses() { m_warnings.expect(QStringLiteral("Overflow")); }
    void warnsAtLength();
    void cleanupTestCase() { qWarning("A warning that nobody looks at"); }

private:
    WarningRecorder m_warnings;
};

void victim_warns::warnsAsExpected()
{
    m_warnings.expect(QStringLiteral("Overflow"));
    qWarning("Overflow");
}

void victim_warns::warnsAtLength()
{
    for (int i = 0; i < 100; ++i)
    {
        qWarning() << "A warning that alone is longer than a tenth of a kilobyte, number" << i;
    }
    qWarning("The last one");
}

int main(int argc, char** argv)
{
    int result = 0;
    {
        victim_warns test;
        result = QTest::qExec(&test, argc, argv);
    }
    qWarning("A warning after the end");
    return result;
}
#include "victim_warns.moc"
