#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTest>
#include <QtGlobal>
#include <QVector>

#include <mutex>

/// One message of the Qt message log.
struct LoggedMessage
{
    QtMsgType type = QtWarningMsg; ///< its level
    QString category;              ///< "default" for the warnings of the library
    QString text;                  ///< with quotes and blanks, as it is logged
    /// As the compiler was given it. Empty when the program was built without call sites, as Qt
    /// itself is.
    QString file;
    QString function; ///< likewise, with its signature
    int line = 0;     ///< likewise
};

/// Takes all messages of the Qt message log and compares them, word by word and in order, with those
/// that the test expects. A message that nobody expected, of Qt too, is a failure, and a missing one
/// as well.
///
/// As a field of the test class, it watches every test function:
/// \code
/// void tst_Pump::init() { m_warnings.start(); }
/// void tst_Pump::cleanup() { VERIFY_WARNINGS(m_warnings); }
/// void tst_Pump::warnsWithoutPower()
/// {
///     m_warnings.expect(QStringLiteral("No power on \"pump 3\""), QStringLiteral("Pump"),
///                       QStringLiteral("Pump::start"));
///     Pump(QStringLiteral("pump 3")).start();
/// }
/// \endcode
/// As a local object it watches from its construction to its end. When several watch, the youngest
/// gets the message. What came after the last look at it goes to the standard error.
///
/// Threads: messages are taken from every thread. The rest is for the thread that made it.
class WarningRecorder
{
public:
    /// Watches from now on.
    WarningRecorder();
    ~WarningRecorder();
    Q_DISABLE_COPY(WarningRecorder)

    /// Begins anew: forgets what was recorded and what was expected. QtTest puts its own handler in
    /// place when it begins, so a recorder that is a field of the test class needs this in init().
    void start();

    /// Hands the log back to whoever had it before. What was recorded stays.
    void stop();

    /// Expects one more warning, after all that were expected before.
    /// \param text       the whole text as it is logged, quotes and blanks included
    /// \param file       name of the source file without folder and ending; empty for any
    /// \param operation  the function as "Class::operation"; empty for any. A lambda inside the
    ///                   function is another function.
    /// \param category   of the log; that of the library's warnings is "default"
    WarningRecorder& expect(const QString& text, const QString& file = QString(),
                            const QString& operation = QString(),
                            const QString& category = QStringLiteral("default"));

    /// The same, with text that a regular expression has to match as a whole: for what differs from
    /// run to run, such as the path of a temporary folder.
    WarningRecorder& expectMatch(const QString& pattern, const QString& file = QString(),
                                 const QString& operation = QString(),
                                 const QString& category = QStringLiteral("default"));

    /// Whether what was recorded until now is exactly what was expected. Nothing is forgotten.
    bool verify() const;

    /// What verify() has seen, one message a line: "=" for one that is right, "-" for one that is
    /// missing, "+" for one that was not expected.
    QByteArray report() const;

    /// What was recorded until now.
    QVector<LoggedMessage> messages() const;

    /// The texts of what was recorded until now.
    QStringList texts() const;

    /// Hands out what was recorded and forgets it: for tests that count instead of expecting.
    QVector<LoggedMessage> take();

private:
    struct Expectation
    {
        QString text;
        QString file;
        QString operation;
        QString category;
        bool isPattern = false;
    };

    QtMessageHandler beginAnew();
    void showUnseen() const;
    static void handle(QtMsgType type, const QMessageLogContext& context, const QString& text);
    static bool matches(const Expectation& expectation, const LoggedMessage& message);
    static QByteArray describe(const Expectation& expectation);
    static QByteArray describe(const LoggedMessage& message);

    // The test's thread only.
    QVector<Expectation> m_expectations;
    // Guarded by the mutex of the handler.
    QVector<LoggedMessage> m_messages;
    mutable int m_seenCount = 0;
    // Fixed at construction. Last, because messages come in from then on.
    const QtMessageHandler m_before;
};

/// Fails the test function when the messages are not those that were expected, and shows both. Not
/// QVERIFY2, which cuts its text off.
#define VERIFY_WARNINGS(recorder)                                                                  \
    do                                                                                             \
    {                                                                                              \
        if (!(recorder).verify())                                                                  \
        {                                                                                          \
            QTest::qFail((recorder).report().constData(), __FILE__, __LINE__);                     \
            return;                                                                                \
        }                                                                                          \
    }                                                                                              \
    while (false)
