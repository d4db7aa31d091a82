#pragma once

#include "TestSupport/ChildProcess.h"

#include <QDBusConnection>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <QTemporaryDir>
#include <QVector>

#include <memory>

class PrivateBus;

/// One message as the other side of the bus has seen it.
struct RecordedMessage
{
    /// "call" or "signal"; with a BusMonitor also "reply" and "error".
    QString kind;
    QString sender;      ///< connection that has sent it, such as ":1.3"
    QString destination; ///< bus name as the sender has written it; empty for most signals
    QString path;        ///< object, such as "/EventlistWrite"
    QString interface;   ///< such as "Interface.EventlistWrite"
    QString member;      ///< method or signal, such as "logEvent"
    /// The raw signature of the body, such as "assssassss".
    QString signature;
    /// Strings, numbers and booleans as they are, arrays and structures as arrays, dictionaries as
    /// objects, a variant as {"variant": signature, "value": value}. A whole number beyond 2^53 is
    /// a string of digits.
    QJsonArray arguments;
    /// False when the sender has set NO_REPLY_EXPECTED.
    bool isReplyExpected = true;
    /// False when the sender has set NO_AUTO_START.
    bool isAutoStartAllowed = true;
    quint32 serial = 0; ///< number of the message among those of its sender

    /// The message on one line, for the output of a failed test.
    QByteArray toText() const;
};

/// A service in another process that is not built on Qt: it owns a bus name, records every call to
/// any path and any interface, and answers as the test tells it. Without a rule it answers every
/// call with an empty reply. It needs Python 3 with dbus and gi (python3-dbus, python3-gi).
/// \code
/// ForeignService service(m_bus, ForeignService::centralServiceName());
/// QVERIFY2(service.start(), service.errorText());
/// producer.logEvent(...);
/// QCOMPARE(service.received().size(), 1);
/// \endcode
/// That nothing was sent is shown without waiting: received() asks the service over the sender's
/// own connection first, and the service answers that only after all that was sent before. For a
/// sender in another process, let it send a last message that is known to arrive, and wait for that
/// one with receivedSoFar().
///
/// Threads: the thread that made it. Its operations block until the service has answered.
class ForeignService
{
public:
    /// Starts nothing yet.
    /// \param bus      must outlive the service
    /// \param busName  the name that it owns, such as centralServiceName()
    ForeignService(const PrivateBus& bus, const QString& busName);
    ~ForeignService();
    Q_DISABLE_COPY(ForeignService)

    /// Bus name of the central service.
    static QString centralServiceName();

    /// Starts the service and waits until it owns its name.
    /// Failure: false, and errorText() says why.
    bool start();

    /// Lets the service end by itself.
    bool stop();

    /// Ends the service by SIGKILL. Its records are lost.
    void kill();

    /// Kills the service and starts it again, without records and without rules.
    bool restart();

    /// Lets the service stand still; thaw() lets it go on. Frozen, it answers nothing: only kill(),
    /// restart(), thaw() and processId() may be called.
    bool freeze();
    void thaw();

    /// Connects again after the bus was restarted, and keeps records and rules.
    bool reconnect();

    /// Takes or gives back a bus name while the process goes on.
    bool own(const QString& busName);
    bool disown(const QString& busName);

    /// True also while it is frozen.
    bool isRunning() const;
    /// 0 while it does not run.
    qint64 processId() const;
    /// The name given to the constructor.
    QString busName() const;

    /// Name of its connection, such as ":1.3". Another one after reconnect() and restart().
    QString uniqueName() const;

    /// What went wrong last, for QVERIFY2. Valid until the next call.
    const char* errorText() const;

    /// Waits until the service has taken all that was sent to it over this connection.
    /// Failure: false when the service does not answer.
    bool synchronise(const QDBusConnection& sender);

    /// All that has arrived, in order, after all that this process has sent over the connection of
    /// the platform layer.
    /// Failure: empty when the service does not answer, with a warning.
    QVector<RecordedMessage> received();

    /// The same for another connection.
    QVector<RecordedMessage> received(const QDBusConnection& sender);

    /// What has arrived until now, without looking after what is still on its way.
    QVector<RecordedMessage> receivedSoFar();

    /// How many messages have arrived until now.
    int countSoFar();

    /// Forgets all records.
    void clear();

    /// Forgets all records, all rules and the calls that are held: as good as a new one.
    bool reset();

    /// Answers calls of this member with values: a signature and a value for each of its types, in
    /// the form of RecordedMessage::arguments.
    bool answer(const QString& member, const QString& signature, const QJsonArray& values);

    /// Answers with one variant.
    bool answerVariant(const QString& member, const QString& signature, const QJsonValue& value);

    /// Answers with an error.
    /// \param text  may be empty
    bool answerError(const QString& member, const QString& errorName, const QString& text);

    /// Never answers.
    bool answerNothing(const QString& member);

    /// Keeps calls of this member until release(), which answers them in their order.
    bool hold(const QString& member);

    /// Answers the calls that were held, with values as for answer().
    /// \returns how many these were; -1 after a failure.
    int release(const QString& signature = QString(), const QJsonArray& values = QJsonArray());

    /// Sends a signal, after all that this process has subscribed to stands at the bus.
    /// \param times  so often, one after the other
    bool emitSignal(const QString& path, const QString& interface, const QString& member,
                    const QString& signature = QString(), const QJsonArray& values = QJsonArray(),
                    int times = 1);

protected:
    /// \param isMonitor  records all traffic of the bus and owns no name
    ForeignService(const PrivateBus& bus, const QString& busName, bool isMonitor);

private:
    QJsonObject execute(const QJsonObject& command);
    QJsonObject readAnswer();
    bool setRule(const QString& member, const QJsonObject& rule);

    const PrivateBus& m_bus;
    const QString m_busName;
    const bool m_isMonitor;
    const QTemporaryDir m_folder;
    std::unique_ptr<ChildProcess> m_process;
    QString m_uniqueName;
    // What has been fetched already.
    QVector<RecordedMessage> m_records;
    QByteArray m_errorText;
};

/// Records all traffic of a bus, that of the daemon included: for counting round trips and
/// subscriptions. It can send nothing and answers nothing.
class BusMonitor : public ForeignService
{
public:
    /// Starts nothing yet. The bus must outlive it.
    explicit BusMonitor(const PrivateBus& bus);
};
