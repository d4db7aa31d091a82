#include "TestSupport/FakeTextManager.h"

namespace
{
QVariantMap germanAndEnglish(const QString& german, const QString& english)
{
    return {{QStringLiteral("lang_de"), german}, {QStringLiteral("lang_en"), english}};
}
} // namespace

FakeTextManager::FakeTextManager() : FakeTextManager(QMap<QString, QVariantMap>()) {}

FakeTextManager::FakeTextManager(const QMap<QString, QVariantMap>& texts)
    : TextManager(QString()), m_texts(texts)
{
}

const QMap<QString, QVariantMap>& FakeTextManager::pumpTexts()
{
    static const QMap<QString, QVariantMap> texts = {
        {QStringLiteral("PumpControl/OverTemperature"),
         germanAndEnglish(QStringLiteral("Übertemperatur an %1, Wert %2"),
                          QStringLiteral("Overtemperature at %1, value %2"))},
        {QStringLiteral("PumpControl/PumpName3"),
         germanAndEnglish(QStringLiteral("Pumpe 3"), QStringLiteral("pump 3"))}};
    return texts;
}

void FakeTextManager::setTexts(const QString& url, const QVariantMap& textObject)
{
    m_texts.insert(url, textObject);
}

void FakeTextManager::setTexts(const QString& url, const QString& german, const QString& english)
{
    setTexts(url, germanAndEnglish(german, english));
}

int FakeTextManager::lookUpCount() const
{
    return m_lookUpCount.load();
}

QVariantMap FakeTextManager::getAllTexts(const QString& url) const
{
    ++m_lookUpCount;
    return m_texts.value(url);
}
