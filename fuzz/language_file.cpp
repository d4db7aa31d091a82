// Language files of any content: they are refused with one warning, or every text that is found in them stands in the
// file, so that nothing was read beyond its end.

#include "FuzzTarget.h"

#include "Platform/TextManager.h"

#include <QDir>
#include <QFile>
#include <QVariantMap>
#include <QtEndian>

namespace fuzz_language_file
{
const QStringList urls{QStringLiteral("PumpControl/OverTemperature"),
                       QStringLiteral("PumpControl/Started"),
                       QStringLiteral("a"),
                       QStringLiteral("ü"),
                       QString(),
                       QStringLiteral("a") + QChar(0)};

QByteArray bigEndianUnits(const QString& text)
{
    QByteArray units(text.size() * 2, '\0');
    qToBigEndian<quint16>(text.utf16(), text.size(), units.data());
    return units;
}

FUZZ_TARGET(language_file)
{
    const QByteArray content(reinterpret_cast<const char*>(data), int(size));
    const QString path = QDir(fuzz::folder()).filePath(QStringLiteral("lang_en.qm"));
    QFile file(path);
    fuzz::require(file.open(QFile::WriteOnly) && file.write(content) == content.size(),
                  "the file is written");
    file.close();
    fuzz::Log::take();

    const TextManager manager(fuzz::folder());
    const QStringList warnings = fuzz::Log::take();
    const bool isRead = !manager.getLanguages().isEmpty();
    fuzz::require(warnings.size() == (isRead ? 0 : 1),
                  "one warning tells of a file that is refused", warnings.join(QLatin1Char('\n')));
    fuzz::Log::requireOnly(warnings, {QStringLiteral("Can't read language file \"") + path});

    for (const QString& url : urls)
    {
        const QVariantMap texts = manager.getAllTexts(url);
        fuzz::require(texts.isEmpty() || isRead, "a refused file has no texts", url);
        for (const QVariant& text : texts)
        {
            fuzz::require(content.contains(bigEndianUnits(text.toString())),
                          "the text stands in the file", text.toString());
        }
        fuzz::require(manager.getAllTexts(url) == texts, "a text stays the same", url);
    }
    fuzz::require(fuzz::Log::take().isEmpty(), "looking texts up gives no warning");
    return 0;
}
} // namespace fuzz_language_file
