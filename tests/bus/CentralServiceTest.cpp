#include "bus/CentralServiceTest.h"

#include "Common/DBusTools/DBusConnectorBase.h"
#include "TestSupport/Waiting.h"

#include "Platform/DBusConnection.h"

#include <QCoreApplication>

CentralServiceTest::CentralServiceTest() : m_service(m_bus) {}

CentralServiceTest::~CentralServiceTest() = default;

void CentralServiceTest::initTestCase()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    QVERIFY2(m_service.start(), m_service.errorText());
    m_probe = std::make_unique<DBusConnectorBase>(
        QStringLiteral("EventlistHandler"), QStringLiteral("Probe"),
        QStringLiteral("Interface.Probe"), nullptr, DBusConnectorBase::defaultMode);
}

void CentralServiceTest::init()
{
    QVERIFY2(m_bus.start(), m_bus.errorText());
    m_service.thaw();
    if (!m_service.isRunning())
    {
        QVERIFY2(m_service.start(), m_service.errorText());
    }
    if (!m_bus.hasOwner(m_service.busName()))
    {
        QVERIFY2(m_service.reconnect(), m_service.errorText());
    }
    QVERIFY2(m_service.reset(), m_service.errorText());
    QVERIFY(waitForService(true));
    m_warnings.start();
}

void CentralServiceTest::cleanup()
{
    VERIFY_WARNINGS(m_warnings);
}

void CentralServiceTest::cleanupTestCase()
{
    m_probe.reset();
}

bool CentralServiceTest::waitForService(bool isPresent)
{
    return waitUntil([=] { return m_probe->isDBusInterfaceValid() == isPresent; });
}

bool CentralServiceTest::takeServiceAway()
{
    m_service.kill();
    return waitForService(false);
}

bool CentralServiceTest::bringServiceBack()
{
    return m_service.start() && waitForService(true);
}

bool CentralServiceTest::takeBusAway()
{
    m_bus.kill();
    return waitForService(false) &&
           waitUntil([] { return !DBusConnection::getQDBusConnection().isConnected(); });
}

bool CentralServiceTest::bringBusBack()
{
    return m_bus.start() && m_service.reconnect() && waitForService(true);
}

bool CentralServiceTest::waitUntilValid(const DBusConnectorBase& connector)
{
    return waitUntil([&] { return connector.isDBusInterfaceValid(); });
}

bool CentralServiceTest::emitSignal(const QString& path, const QString& interface,
                                    const QString& member, const QString& signature,
                                    const QJsonArray& values, int times)
{
    return m_service.synchronise(DBusConnection::getQDBusConnection()) &&
           m_service.emitSignal(path, interface, member, signature, values, times);
}

bool CentralServiceTest::takeWhatWasSent()
{
    // The answer comes behind the signals, which then wait as events of this thread.
    const bool isTaken = m_service.synchronise(DBusConnection::getQDBusConnection());
    QCoreApplication::sendPostedEvents();
    return isTaken;
}

QString CentralServiceTest::quoted(const QString& text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

QString CentralServiceTest::json(const char* text)
{
    return QString::fromUtf8(text).replace(QLatin1Char('\''), QLatin1Char('"'));
}

void CentralServiceTest::expectRefusedCall(const DBusConnectorBase& connector)
{
    const QString text = quoted(connector.getInvalidDBusInterfaceMessage());
    for (int i = 0; i < 2; ++i)
    {
        m_warnings.expect(text, QStringLiteral("DBusConnectorBase"),
                          QStringLiteral("DBusConnectorBase::syncCallNoBlock"));
    }
}

void CentralServiceTest::expectRefusedQuery(const DBusConnectorBase& connector)
{
    m_warnings.expect(quoted(connector.getInvalidDBusInterfaceMessage()),
                      QStringLiteral("DBusConnectorBase"),
                      QStringLiteral("DBusConnectorBase::asyncCallHelper"));
}
