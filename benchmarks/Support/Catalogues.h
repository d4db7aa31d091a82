#pragma once

#include <QDir>
#include <QFileInfo>
#include <QStringList>
#include <QTranslator>
#include <QVariantMap>

#include <memory>
#include <utility>
#include <vector>

/// The texts of a folder of .qm files, each looked up in each language each time.
class Catalogues
{
public:
    explicit Catalogues(const QString& folder)
    {
        const QFileInfoList files = QDir(folder).entryInfoList({QStringLiteral("*.qm")});
        for (const QFileInfo& file : files)
        {
            auto translator = std::make_unique<QTranslator>();
            if (translator->load(file.filePath()))
            {
                m_languages.emplace_back(file.completeBaseName(), std::move(translator));
            }
        }
    }

    QStringList languages() const
    {
        QStringList keys;
        for (const auto& language : m_languages)
        {
            keys.append(language.first);
        }
        return keys;
    }

    QVariantMap textsOf(const QString& url) const
    {
        QVariantMap texts;
        for (const auto& language : m_languages)
        {
            const QString text = language.second->translate("", url.toUtf8().constData());
            if (!text.isNull())
            {
                texts.insert(language.first, text);
            }
        }
        return texts;
    }

private:
    std::vector<std::pair<QString, std::unique_ptr<QTranslator>>> m_languages;
};
