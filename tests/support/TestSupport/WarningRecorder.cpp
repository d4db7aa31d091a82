#include "TestSupport/WarningRecorder.h"

#include "TestSupport/Alignment.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace
{
// Never destroyed: messages may still come while the process ends.
struct Handler
{
    std::mutex mutex;
    std::vector<WarningRecorder*> recorders;
    QtMessageHandler previous = nullptr;
};

Handler& handler()
{
    static Handler* const instance = new Handler;
    return *instance;
}

bool isInLambda(const QString& function)
{
    return function.contains(QLatin1String("<lambda")) ||
           function.contains(QLatin1String("(lambda")) ||
           function.contains(QLatin1String("(anonymous class)"));
}

bool isOperation(const QString& function, const QString& operation)
{
    if (isInLambda(function) && !isInLambda(operation))
    {
        return false;
    }
    const QRegularExpression call(QStringLiteral("(^|[^A-Za-z0-9_])") +
                                  QRegularExpression::escape(operation) + QStringLiteral("\\("));
    return call.match(function).hasMatch();
}

const char* nameOf(QtMsgType type)
{
    switch (type)
    {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    case QtFatalMsg:
        return "fatal";
    }
    return "unknown";
}

QByteArray headOf(QtMsgType type, const QString& category)
{
    QByteArray head = nameOf(type);
    if (category != QLatin1String("default"))
    {
        head += " [" + category.toUtf8() + "]";
    }
    return head;
}

QByteArray callSite(const QString& file, const QString& operation)
{
    if (file.isEmpty() && operation.isEmpty())
    {
        return {};
    }
    return "  (" + file.toUtf8() + (file.isEmpty() || operation.isEmpty() ? "" : ", ") +
           operation.toUtf8() + ")";
}
} // namespace

WarningRecorder::WarningRecorder() : m_before(beginAnew()) {}

WarningRecorder::~WarningRecorder()
{
    stop();
    showUnseen();
}

void WarningRecorder::stop()
{
    Handler& shared = handler();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    auto& recorders = shared.recorders;
    recorders.erase(std::remove(recorders.begin(), recorders.end(), this), recorders.end());
    if (!recorders.empty())
    {
        return;
    }
    // The handler of QtTest must not come back when QtTest has ended.
    const bool isTesting = QTest::currentTestFunction() != nullptr;
    const QtMessageHandler current = qInstallMessageHandler(isTesting ? shared.previous : m_before);
    if (current != &WarningRecorder::handle)
    {
        // Somebody else has taken the log meanwhile.
        qInstallMessageHandler(current);
    }
    // QtTest puts back, at its end, what it found at its beginning: perhaps our handler.
    shared.previous = m_before;
}

void WarningRecorder::start()
{
    beginAnew();
}

QtMessageHandler WarningRecorder::beginAnew()
{
    Handler& shared = handler();
    const std::lock_guard<std::mutex> lock(shared.mutex);
    showUnseen();
    m_expectations.clear();
    m_messages.clear();
    m_seenCount = 0;
    auto& recorders = shared.recorders;
    recorders.erase(std::remove(recorders.begin(), recorders.end(), this), recorders.end());
    recorders.push_back(this);
    const QtMessageHandler before = qInstallMessageHandler(&WarningRecorder::handle);
    if (before != &WarningRecorder::handle)
    {
        shared.previous = before;
    }
    return shared.previous;
}

void WarningRecorder::showUnseen() const
{
    // Nobody adds messages meanwhile: this recorder is not watching, or the mutex is held.
    for (int i = m_seenCount; i < m_messages.size(); ++i)
    {
        std::fprintf(stderr, "Nobody has looked at: %s\n", describe(m_messages.at(i)).constData());
    }
}

void WarningRecorder::handle(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    Handler& shared = handler();
    QtMessageHandler previous = nullptr;
    {
        const std::lock_guard<std::mutex> lock(shared.mutex);
        if (type != QtFatalMsg && !shared.recorders.empty())
        {
            shared.recorders.back()->m_messages.append(
                {type, QString::fromUtf8(context.category), text, QString::fromUtf8(context.file),
                 QString::fromUtf8(context.function), context.line});
            return;
        }
        previous = shared.previous;
    }
    if (previous != nullptr)
    {
        previous(type, context, text);
    }
}

WarningRecorder& WarningRecorder::expect(const QString& text, const QString& file,
                                         const QString& operation, const QString& category)
{
    m_expectations.append({text, file, operation, category, false});
    return *this;
}

WarningRecorder& WarningRecorder::expectMatch(const QString& pattern, const QString& file,
                                              const QString& operation, const QString& category)
{
    m_expectations.append({pattern, file, operation, category, true});
    return *this;
}

bool WarningRecorder::matches(const Expectation& expectation, const LoggedMessage& message)
{
    if (message.type != QtWarningMsg || message.category != expectation.category)
    {
        return false;
    }
    const bool isTextRight =
        expectation.isPattern
            ? QRegularExpression(QRegularExpression::anchoredPattern(expectation.text),
                                 QRegularExpression::DotMatchesEverythingOption)
                  .match(message.text)
                  .hasMatch()
            : expectation.text == message.text;
    return isTextRight &&
           (expectation.file.isEmpty() ||
            QFileInfo(message.file).completeBaseName() == expectation.file) &&
           (expectation.operation.isEmpty() ||
            isOperation(message.function, expectation.operation));
}

bool WarningRecorder::verify() const
{
    const QVector<LoggedMessage> recorded = messages();
    return std::equal(m_expectations.cbegin(), m_expectations.cend(), recorded.cbegin(),
                      recorded.cend(), &WarningRecorder::matches);
}

QByteArray WarningRecorder::describe(const Expectation& expectation)
{
    return headOf(QtWarningMsg, expectation.category) +
           (expectation.isPattern ? " matching " : " ") + expectation.text.toUtf8() +
           callSite(expectation.file, expectation.operation);
}

QByteArray WarningRecorder::describe(const LoggedMessage& message)
{
    const QString file = message.file.isEmpty()
                             ? QString()
                             : message.file + QLatin1Char(':') + QString::number(message.line);
    return headOf(message.type, message.category) + " " + message.text.toUtf8() +
           callSite(file, message.function);
}

QByteArray WarningRecorder::report() const
{
    const QVector<LoggedMessage> recorded = messages();
    QByteArray text = "Messages: = as expected, - missing, + not expected";
    align(
        m_expectations.size(), recorded.size(),
        [&](int i, int j) { return matches(m_expectations.at(i), recorded.at(j)); },
        [&](int, int j) { text += "\n  = " + describe(recorded.at(j)); },
        [&](int i) { text += "\n  - " + describe(m_expectations.at(i)); },
        [&](int j) { text += "\n  + " + describe(recorded.at(j)); });
    return text;
}

QVector<LoggedMessage> WarningRecorder::messages() const
{
    const std::lock_guard<std::mutex> lock(handler().mutex);
    m_seenCount = m_messages.size();
    return m_messages;
}

QStringList WarningRecorder::texts() const
{
    QStringList result;
    for (const LoggedMessage& message : messages())
    {
        result.append(message.text);
    }
    return result;
}

QVector<LoggedMessage> WarningRecorder::take()
{
    const std::lock_guard<std::mutex> lock(handler().mutex);
    QVector<LoggedMessage> result;
    result.swap(m_messages);
    m_seenCount = 0;
    return result;
}
