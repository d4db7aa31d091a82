#include "HashRegister/EventListHandlerRegisterWorker.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include "Platform/DBusConnection.h"
#include "Platform/PropertyManagerConst.h"

#include <QDebug>
#include <QThread>

EventListHandlerRegisterWorker::EventListHandlerRegisterWorker(const QString& hash,
                                                               const QString& moduleName)
    : QObject(nullptr), m_hash(hash), m_moduleName(moduleName)
{
}

EventListHandlerRegisterWorker::~EventListHandlerRegisterWorker() = default;

void EventListHandlerRegisterWorker::connect()
{
    // Without a thread there is no other one that could do it.
    if (thread() != nullptr && thread() != QThread::currentThread())
    {
        // Calls this function again, now on the object's thread, so that a warning has one call
        // site.
        QMetaObject::invokeMethod(
            this, [this] { connect(); }, Qt::BlockingQueuedConnection);
        return;
    }
    if (m_connected)
    {
        return;
    }
    const QString service = PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + m_moduleName;
    const QString path =
        QLatin1Char('/') + EventlistHandlerDefinitions::getPrefixHash() +
        (m_hash.isEmpty() ? EventlistHandlerDefinitions::getObjectNameGlobalEvent() : m_hash);
    const QString& interfaceName = EventlistHandlerDefinitions::getInterfaceNameEvent();
    const QString& signalName = EventlistHandlerDefinitions::getHashRegisterSignalName();
    if (!DBusConnection::getQDBusConnection().connect(service, path, interfaceName, signalName,
                                                      this, SLOT(receiver(QString))))
    {
        qWarning() << "Unable to connect to DBus process" << service << path << interfaceName
                   << signalName;
        return;
    }
    m_connected = true;
}

bool EventListHandlerRegisterWorker::isConnected() const
{
    return m_connected;
}

void EventListHandlerRegisterWorker::receiver(const QString& icon)
{
    Q_EMIT newSignal(m_hash, icon);
}
