// Compiled together with the accessors as a build without a data root of its own compiles them.
#include "Definitions/EventlistHandlerDefinitions.h"

#include "TestSupport/WarningRecorder.h"

#include <QTest>

class tst_DefaultDataRoot : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_warnings.start(); }
    void cleanup() { VERIFY_WARNINGS(m_warnings); }
    void leadsToTheSpoolFolderOfTheDevice();

private:
    WarningRecorder m_warnings;
};

void tst_DefaultDataRoot::leadsToTheSpoolFolderOfTheDevice()
{
    QCOMPARE(EventlistHandlerDefinitions::getPathEventToFile(),
             QStringLiteral("/quarnel/var/EventToFileData/"));
}

QTEST_GUILESS_MAIN(tst_DefaultDataRoot)
#include "tst_DefaultDataRoot.moc"
