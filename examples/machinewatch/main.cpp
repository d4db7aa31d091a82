// A module that watches this very machine. It looks once a second, and obeys an operator at its
// standard input:
//     look                    look now, and say the readings
//     limit memory 20 anna    anna sets the limit of load, memory or disk
//     report                  report the readings, on the file road
//     untranslated            log an event without a known text
//     quit                    end; so does the end of the input
// The folder whose disk space is watched is the first argument.

#include "machinewatch/MachineWatch.h"

#include "Platform/DBusConnection.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>

#include <unistd.h>

namespace
{
void say(const QString& text)
{
    QTextStream(stdout) << "machinewatch: " << text << '\n';
}

// Everything that was sent is in the hands of the bus afterwards.
void waitForBus()
{
    DBusConnection::getQDBusConnection().call(QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
        QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId")));
}

void obey(MachineWatch& watch, const QStringList& words)
{
    const QString command = words.value(0);
    if (command == QLatin1String("limit") &&
        !watch.setLimit(words.value(1), words.value(2).toDouble(), words.value(3)))
    {
        say(QStringLiteral("there is no limit for ") + words.value(1));
        return;
    }
    if (command == QLatin1String("untranslated"))
    {
        watch.logWithoutText();
    }
    watch.look();
    if (command == QLatin1String("report"))
    {
        watch.report();
    }
    waitForBus();
    say(watch.line());
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    MachineWatch watch(texts, QCoreApplication::arguments().value(1, QDir::tempPath()));
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] { watch.look(); });
    timer.start(1000);

    QByteArray typed;
    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char bytes[4096];
        const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
        typed += QByteArray(bytes, int(qMax<ssize_t>(count, 0)));
        bool isEnd = count <= 0;
        for (int end = 0; !isEnd && (end = typed.indexOf('\n')) >= 0; typed.remove(0, end + 1))
        {
            const QString line = QString::fromUtf8(typed.left(end)).simplified();
            isEnd = line == QLatin1String("quit");
            if (!isEnd)
            {
                obey(watch, line.split(QLatin1Char(' ')));
            }
        }
        if (isEnd)
        {
            input.setEnabled(false);
            QCoreApplication::quit();
        }
    });
    watch.look();
    say(QStringLiteral("watching: ") + watch.line());
    const int code = QCoreApplication::exec();
    waitForBus();
    return code;
}
