#pragma once

#include "TestSupport/Waiting.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusServer>
#include <QObject>
#include <QVariantMap>

/// Sends a dictionary through QtDBus and hands out what arrives: containers inside it as
/// QDBusArgument, which nothing but an arriving message can make. The two ends are connected to each
/// other and to no bus.
class PeerToPeer : public QObject
{
    Q_OBJECT
public:
    PeerToPeer() : m_server(QStringLiteral("unix:tmpdir=/tmp"))
    {
        connect(&m_server, &QDBusServer::newConnection, this, [this](QDBusConnection connection) {
            m_receivingName = connection.name();
            connection.registerObject(QStringLiteral("/"), this, QDBusConnection::ExportAllSlots);
        });
    }

    ~PeerToPeer() override
    {
        QDBusConnection::disconnectFromPeer(m_sendingName);
        QDBusConnection::disconnectFromPeer(m_receivingName);
    }

    bool connectEnds()
    {
        const QDBusConnection sender =
            QDBusConnection::connectToPeer(m_server.address(), m_sendingName);
        return sender.isConnected() && waitUntil([this] { return !m_receivingName.isEmpty(); });
    }

    /// Failure: an empty map, when it does not arrive or cannot be sent.
    QVariantMap sent(const QVariantMap& dictionary)
    {
        m_hasArrived = false;
        m_arrived.clear();
        QDBusMessage message = QDBusMessage::createMethodCall(QString(), QStringLiteral("/"),
                                                              QString(), QStringLiteral("take"));
        message << dictionary;
        if (!QDBusConnection(m_sendingName).send(message) ||
            !waitUntil([this] { return m_hasArrived; }))
        {
            return {};
        }
        return m_arrived;
    }

public Q_SLOTS:
    void take(const QVariantMap& dictionary)
    {
        m_arrived = dictionary;
        m_hasArrived = true;
    }

private:
    QDBusServer m_server;
    const QString m_sendingName = QStringLiteral("PeerToPeer");
    QString m_receivingName;
    QVariantMap m_arrived;
    bool m_hasArrived = false;
};
