#include "bus/EventProvider/ProviderTest.h"

#include "Platform/PropertyManagerConst.h"

#include <QDir>
#include <QFile>
#include <QUuid>

ProviderTest::ProviderTest()
    : m_prefix(QStringLiteral("provider-") + QUuid::createUuid().toString(QUuid::Id128) +
               QLatin1Char('/'))
{
}

QString ProviderTest::text(const char* ascii)
{
    return QString::fromLatin1(ascii);
}

QVariantMap ProviderTest::dictionary(const QVariant& source, const QString& module,
                                     const QString& object, const QString& instance,
                                     const QString& url)
{
    return {{text("textSource"), source},
            {text("moduleName"), module},
            {text("ObjectName"), object},
            {text("InstanceName"), instance},
            {text("url"), url}};
}

QVariantMap ProviderTest::goodDictionary()
{
    return dictionary(0, text("PumpControl"), text("PumpControl"), QString(),
                      text("PumpControl/OverTemperature"));
}

QVariantMap ProviderTest::with(QVariantMap map, const char* key, const QVariant& value)
{
    map.insert(text(key), value);
    return map;
}

QString ProviderTest::tail(int source, const QString& module, const QString& object,
                           const QString& instance, const QString& url)
{
    return QStringLiteral("textSource:: %1 moduleName: \"%2\" objectName: \"%3\" "
                          "descriptionInstanceName: \"%4\" descriptionUrl: \"%5\"")
        .arg(source)
        .arg(module, object, instance, url);
}

QString ProviderTest::notFound(const char* key, const QString& stateTail)
{
    return QStringLiteral("Key for description not found: \"%1\" ").arg(text(key)) + stateTail;
}

bool ProviderTest::writeConfiguration(const QString& folder, const QString& instance,
                                      const QByteArray& content)
{
    const QString path =
        PropertyManagerConst::getConfigurationFolderPath(m_prefix + folder + QLatin1Char('/'));
    QFile file(path + instance + QStringLiteral(".json"));
    return QDir().mkpath(path) && file.open(QFile::WriteOnly) &&
           file.write(content) == content.size();
}

void ProviderTest::expect(const QString& warning, const char* operation)
{
    const QString className = QStringLiteral("EventsDBusProviderBaseClass");
    m_warnings.expect(warning, className, className + QStringLiteral("::") + text(operation));
}

RecordedMessage ProviderTest::onlyEvent()
{
    const QVector<RecordedMessage> received = m_service.received();
    return received.size() == 1 && received[0].signature == QLatin1String("assssassss") &&
                   !received[0].isReplyExpected
               ? received[0]
               : RecordedMessage();
}
