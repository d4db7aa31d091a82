// The other side of an alarm: a panel that hears how the alarm list changes, and which icon belongs
// to a source of events. It prints how it stands at the start, and then what it hears, until Enter or
// the end of its input.
//     panel machine/memory

#include "Alarmlist/AlarmlistHandlerDBusConnectorRead.h"
#include "HashRegister/EventListHandlerRegisterConnector.h"
#include "HashRegister/EventListHandlerRegisterWorker.h"

#include "Platform/RecorderUrlHashHandling.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QSocketNotifier>
#include <QTextStream>
#include <QVariantMap>

#include <cstdio>

namespace
{
void say(const QString& text)
{
    QTextStream(stdout) << "panel: " << text << '\n';
}

void say(const char* what, bool isTrue)
{
    say(QString::fromUtf8(what) + (isTrue ? QStringLiteral(": yes") : QStringLiteral(": no")));
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    using AlarmList = AlarmlistHandlerDBusConnectorRead;
    const auto alarms = AlarmList::createAndConnect();
    QObject::connect(alarms.data(), &AlarmList::changedActiveAlarmInAlarmlist,
                     [](bool isTrue) { say("an active alarm stands in the list", isTrue); });
    QObject::connect(alarms.data(), &AlarmList::changedAlarmInAlarmlist,
                     [](bool isTrue) { say("an alarm stands in the list", isTrue); });
    QObject::connect(alarms.data(), &AlarmList::changedCentralDetector,
                     [](bool isTrue) { say("the horn sounds", isTrue); });

    // A signal tells a change. How it stands before the first one is asked for once, when the
    // subscriptions are there already, so that nothing can happen in between.
    const DBusPendingReply::SharedPointer answer = alarms->getAlarmState(QString());
    if (!answer.isNull())
    {
        answer->waitForFinished();
        const auto state = qdbus_cast<QVariantMap>(answer->values().value(0));
        say("at the start, alarms", state.value(QStringLiteral("AlarmInAlarmlist")).toBool());
        say("at the start, the horn", state.value(QStringLiteral("CentralDetector")).toBool());
    }

    // The worker listens; the connector asks the service to announce the icon of the hash.
    const QByteArray tag = QCoreApplication::arguments().value(1).toUtf8();
    const QString hash = QString::fromLatin1(RecorderUrlHashHandling::createUrlHash(tag).toHex());
    EventListHandlerRegisterWorker icons(hash, QStringLiteral("EventlistHandler"));
    QObject::connect(&icons, &EventListHandlerRegisterWorker::newSignal,
                     [&](const QString&, const QString& icon) {
                         say(QString::fromUtf8(tag) + QStringLiteral(" shows the icon ") + icon);
                     });
    icons.connect();
    EventListHandlerRegisterConnector().registerEventHash(hash);
    say(QStringLiteral("listening"));

    QSocketNotifier input(fileno(stdin), QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
