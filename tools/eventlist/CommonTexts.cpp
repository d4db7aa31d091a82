#include "eventlist/CommonTexts.h"

#include <QCoreApplication>
#include <QDir>

QString CommonTexts::folder()
{
    const QDir installed(QCoreApplication::applicationDirPath() +
                         QStringLiteral("/../" EVENTLIST_INSTALLED_TEXT_FOLDER));
    return installed.exists() ? installed.canonicalPath() : QStringLiteral(EVENTLIST_TEXT_FOLDER);
}
