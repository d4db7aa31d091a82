#include "provider/PumpEvents.h"

PumpEvents::PumpEvents(const QVector<TextManagerData>& texts)
    : EventsDBusProviderBaseClass(QStringLiteral("PumpControl"), QStringLiteral("PumpControl"),
                                  texts, QString())
{
}

void PumpEvents::logEvent(const QStringList& eventAttributes, const QString& timestamp,
                          const QString& moduleName, const QVariantMap& descriptionData,
                          const QStringList& keywords, const QString& user, const QString& alarmId)
{
    // Takes the dictionary as it came from the bus, whatever its shape, and always logs.
    logEventWithDescriptionInDBusFormat(eventAttributes, timestamp, moduleName, descriptionData,
                                        keywords, user, alarmId);
    Q_EMIT eventLogged(moduleName);
}
