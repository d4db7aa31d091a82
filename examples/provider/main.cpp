// A module through which other processes log events in three languages, without having one text
// themselves. client.cpp, client.py and client.sh beside this file are such processes.

#include "provider/PumpEvents.h"

#include "Platform/PropertyManagerConst.h"
#include "Platform/TextManager.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTextStream>

#include <cstdio>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const TextManager texts(QStringLiteral(TEXT_FOLDER));
    const QVector<EventsDBusProviderBaseClass::TextManagerData> textList = {
        {QStringLiteral("PumpControl"), &texts}};
    PumpEvents events(textList);

    // Made before the loop turns, the object is published with its first turn.
    QMetaObject::invokeMethod(
        &application,
        [] {
            QTextStream(stdout) << "pump_provider: offers " << PropertyManagerConst::getDBusPrefix()
                                << ".PumpControl\n";
        },
        Qt::QueuedConnection);

    // Runs until Enter or the end of its input; a module of yours runs until it is ended.
    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
