#pragma once

#include "EventProvider/EventsDBusProviderBaseClass.h"
#include "TestSupport/FakeTextManager.h"
#include "bus/CentralServiceTest.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <QVector>

/// Base of a test class that looks at a provider: the texts of a pump, a configuration folder of this
/// run alone, and dictionaries.
class ProviderTest : public CentralServiceTest
{
    Q_OBJECT
public:
    ProviderTest();

protected:
    static QString text(const char* ascii);

    /// The five fixed keys.
    static QVariantMap dictionary(const QVariant& source, const QString& module,
                                  const QString& object, const QString& instance,
                                  const QString& url);
    /// Those of the description of the worked example.
    static QVariantMap goodDictionary();
    static QVariantMap with(QVariantMap map, const char* key, const QVariant& value);

    /// The state that a warning shows behind its head.
    static QString tail(int source, const QString& module, const QString& object,
                        const QString& instance, const QString& url);
    static QString notFound(const char* key, const QString& stateTail);

    /// Writes the description of a configuration instance below m_prefix.
    bool writeConfiguration(const QString& folder, const QString& instance,
                            const QByteArray& content);

    /// Expects a warning of an operation of the provider.
    void expect(const QString& warning, const char* operation);

    /// The event that the service has received; an empty message when there is none or more than
    /// one, or when it is none.
    RecordedMessage onlyEvent();

    const QString pump = QStringLiteral("PumpControl");
    const QString overTemperature = QStringLiteral("PumpControl/OverTemperature");
    const QString pumpName = QStringLiteral("PumpControl/PumpName3");
    const QStringList attributes{QStringLiteral("0"), QStringLiteral("1"),
                                 QStringLiteral("EventlistAlarmOn")};
    FakeTextManager m_manager{FakeTextManager::pumpTexts()};
    QVector<EventsDBusProviderBaseClass::TextManagerData> m_texts{{pump, &m_manager}};
    const QString m_prefix;
};
