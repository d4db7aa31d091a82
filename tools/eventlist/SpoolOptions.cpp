#include "eventlist/SpoolOptions.h"

#include "eventlist/CommonTexts.h"
#include "eventlist/Output.h"
#include "eventlist/Progress.h"
#include "eventlist/StoredText.h"

#include "Definitions/EventlistHandlerDefinitions.h"

#include <QDir>

Option SpoolOptions::folderOption()
{
    return {{QStringLiteral("spool")},
            QStringLiteral("FOLDER"),
            QStringLiteral("another spool folder than that of this device")};
}

QString SpoolOptions::folder(const Arguments& arguments)
{
    return QDir::cleanPath(arguments.isSet(QStringLiteral("spool"))
                               ? arguments.value(QStringLiteral("spool"))
                               : EventlistHandlerDefinitions::getPathEventToFile());
}

QVector<SpoolFile> SpoolOptions::readAll(const Arguments& arguments, bool& isComplete)
{
    Progress progress(QStringLiteral("reading spool files"));
    QString error;
    const QVector<SpoolFile> files = SpoolFile::ofFolder(
        folder(arguments), [&progress](int count) { progress.tell(QString::number(count)); },
        error);
    isComplete = error.isEmpty();
    if (!isComplete)
    {
        Output::error(error);
    }
    return files;
}

QString SpoolOptions::description(const SpoolFile& file, const QString& language)
{
    if (!file.error().isEmpty())
    {
        return file.error();
    }
    const StoredText stored = StoredText::ofObject(file.event());
    QVariantMap texts = file.description();
    QString reason;
    if (texts.isEmpty() && !stored.resolve(CommonTexts::folder(), texts, reason))
    {
        return stored.eventId();
    }
    return StoredText::inLanguage(texts, language);
}
