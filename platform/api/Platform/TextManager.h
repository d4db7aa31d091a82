#pragma once

#include "Platform/PlatformExport.h"
#include "Platform/TextManagerBase.h"

#include <QStringList>

#include <memory>

/// The texts of one module, read from a folder of language files. The module owns it and keeps it
/// alive for as long as a producer or a provider refers to it. No file is read after the
/// constructor; a text object that was asked for once is kept and shared.
///
/// A language file is a compiled Qt Linguist file, made with "lrelease -idbased -nounfinished
/// lang_de.ts". Its base name is the language key ("lang_de"), the id of a message is the text url.
/// Adding a language is adding a file.
class PLATFORM_EXPORT TextManager : public TextManagerBase
{
public:
    /// \param folder  folder with the *.qm files; empty makes a manager without texts
    /// Failure: a folder that is missing, and a file that is no language file, is damaged, is
    ///          larger than 16 MiB or cannot be read, give one warning with the path each; what
    ///          can be read is used.
    /// Blocks:  while the files are read.
    explicit TextManager(const QString& folder);
    ~TextManager() override;
    Q_DISABLE_COPY(TextManager)

    /// The language keys of all files that were read, sorted.
    QStringList getLanguages() const;

    QVariantMap getAllTexts(const QString& url) const override;

private:
    class Private;
    const std::unique_ptr<Private> d;
};
