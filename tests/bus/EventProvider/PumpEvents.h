#pragma once

#include "EventProvider/EventsDBusProviderBaseClass.h"

/// A provider as a module writes it, with the one slot that clients know and a signal.
class PumpEvents : public EventsDBusProviderBaseClass
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "Interface.Events")
public:
    explicit PumpEvents(const QVector<TextManagerData>& texts,
                        const QString& configurationPathPrefix = QString(),
                        const QString& moduleName = QStringLiteral("PumpControl"))
        : EventsDBusProviderBaseClass(moduleName, QStringLiteral("PumpControl"), texts,
                                      configurationPathPrefix)
    {
    }

public Q_SLOTS:
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QVariantMap& descriptionData,
                  const QStringList& keywords, const QString& user, const QString& alarmId)
    {
        logEventWithDescriptionInDBusFormat(eventAttributes, timestamp, moduleName, descriptionData,
                                            keywords, user, alarmId);
    }

Q_SIGNALS:
    void pumpStarted(const QString& pump);
};
