#pragma once

#include "EventProvider/EventsDBusProviderBaseClass.h"

/// What the module "PumpControl" offers on the bus: bus name "<prefix>.PumpControl", path "/Events",
/// interface "Interface.Events". Other processes log events here whose texts only this module has.
class PumpEvents : public EventsDBusProviderBaseClass
{
    Q_OBJECT
    // Without this line Qt sends the signals of this class under a name of its own.
    Q_CLASSINFO("D-Bus Interface", "Interface.Events")
public:
    /// \param texts  texts that a client may name; must outlive this object, unchanged
    explicit PumpEvents(const QVector<TextManagerData>& texts);

public Q_SLOTS:
    /// Every public slot is a D-Bus method. The client sends the fields of the event, and a
    /// dictionary that names its texts.
    void logEvent(const QStringList& eventAttributes, const QString& timestamp,
                  const QString& moduleName, const QVariantMap& descriptionData,
                  const QStringList& keywords, const QString& user, const QString& alarmId);

Q_SIGNALS:
    /// Every signal is a D-Bus signal: here, for whoever counts along.
    void eventLogged(const QString& moduleName);
};
