#pragma once

#include "Platform/TextManager.h"

#include <QMap>
#include <QString>
#include <QVariantMap>

#include <atomic>

/// A text manager that holds the texts that the test gives it, and no language files.
///
/// Threads: looking up from any; giving texts only while nobody looks up.
class FakeTextManager : public TextManager
{
public:
    /// Without any text.
    FakeTextManager();
    /// \param texts  text url to text object
    explicit FakeTextManager(const QMap<QString, QVariantMap>& texts);

    /// With the texts of a pump, in German and English: "PumpControl/OverTemperature", which has the
    /// places "%1" and "%2", and "PumpControl/PumpName3".
    static const QMap<QString, QVariantMap>& pumpTexts();

    /// Gives the text of a url, in place of the one before. An empty text object takes it away.
    void setTexts(const QString& url, const QVariantMap& textObject);

    /// The same for a text in German and English.
    void setTexts(const QString& url, const QString& german, const QString& english);

    /// How often a text was looked up, found or not.
    int lookUpCount() const;

    QVariantMap getAllTexts(const QString& url) const override;

private:
    QMap<QString, QVariantMap> m_texts;
    mutable std::atomic<int> m_lookUpCount{0};
};
