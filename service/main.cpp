#include "core/BusEndpoint.h"
#include "core/Database.h"
#include "core/DatabaseCheck.h"
#include "core/EventlistService.h"
#include "core/Names.h"
#include "core/Options.h"
#include "core/UnixSignals.h"

#include "Platform/PropertyManagerConst.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

using namespace eventlistd;

namespace
{
constexpr int exitCodeUsage = 1;
constexpr int exitCodeNameTaken = 3;
constexpr int exitCodeDatabase = 4;

QString bootId()
{
    QFile file(QStringLiteral("/proc/sys/kernel/random/boot_id"));
    return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll().trimmed())
                                          : QString();
}

int run(Options options)
{
    UnixSignals signals;
    const TextManager texts(options.textsFolder);
    options.service.bootId = bootId();
    options.service.checkProgram = QCoreApplication::applicationFilePath();
    EventlistService service(options.service, texts);
    BusEndpoint bus(PropertyManagerConst::getDBusPrefix() + QLatin1Char('.') + names::moduleName(),
                    service);
    QObject::connect(&bus, &BusEndpoint::ready, &service, &EventlistService::onReachable);
    QObject::connect(&bus, &BusEndpoint::ready, &bus,
                     [] { std::fputs("eventlistd: ready\n", stderr); });
    bool isFirst = true;
    QObject::connect(&bus, &BusEndpoint::nameTaken, &bus, [&] {
        // Once it was ours, it is worth waiting for.
        if (isFirst)
        {
            QMetaObject::invokeMethod(
                &bus, [] { QCoreApplication::exit(exitCodeNameTaken); }, Qt::QueuedConnection);
        }
    });
    QObject::connect(&bus, &BusEndpoint::ready, &bus, [&] { isFirst = false; });
    QObject::connect(&signals, &UnixSignals::endWanted, &service, &QCoreApplication::quit);
    if (!service.start())
    {
        return exitCodeDatabase;
    }
    bus.start();
    const int exitCode = QCoreApplication::exec();
    service.stop();
    return exitCode;
}
} // namespace

int main(int argc, char* argv[])
{
    qSetMessagePattern(QStringLiteral("eventlistd: %{message}"));
    QCoreApplication application(argc, argv);
    const Options options = Options::parse(QCoreApplication::arguments());
    switch (options.action)
    {
    case Options::Action::print:
        std::fputs(options.text.toLocal8Bit().constData(), stdout);
        return 0;
    case Options::Action::refuse:
        std::fprintf(stderr, "eventlistd: %s\n", options.text.toLocal8Bit().constData());
        return exitCodeUsage;
    case Options::Action::check:
        return Database::isSound(options.service.databasePath) ? 0 : exitCodeDamaged;
    case Options::Action::run:
        break;
    }
    return run(options);
}
