#pragma once

#include "eventlist/Arguments.h"

#include "Definitions/EventlistHandlerEnums.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVariantMap>

/// One event, put together from the options of a command line.
class EventFromShell
{
public:
    static QVector<Option> options();

    /// Takes the options.
    /// Failure: false, and errorText() says why.
    bool read(const Arguments& arguments);

    QString errorText() const { return m_errorText; }

    /// Sends the event over the bus and waits until the service has it.
    /// \returns an exit code; anything but success after a message on the standard error
    int send() const;

    /// Leaves the event in the spool folder. Needs neither the bus nor the service.
    int writeFile() const;

    /// Leaves the emergency event in the spool folder, the same that the library writes for a
    /// supervisor.
    static int writeEmergency(const QString& module, const QString& argument);

private:
    bool readKind(const Arguments& arguments);
    bool readTexts(const Arguments& arguments, QVariantMap& texts);
    bool readTextOfFolder(const Arguments& arguments, QVariantMap& texts);
    bool readMetaData(const Arguments& arguments, const QVariantMap& texts);
    bool fail(const QString& text);
    QString description() const;

    EventlistHandlerEnums::EventType m_type = EventlistHandlerEnums::EventType::otherEvents;
    EventlistHandlerEnums::State m_state = EventlistHandlerEnums::State::neutral;
    QString m_icon;
    QString m_module;
    QStringList m_keywords;
    QString m_user;
    QString m_eventId;
    QString m_alarmId;
    QJsonObject m_metaData;
    QString m_errorText;
};
