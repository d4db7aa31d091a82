#include "Platform/RecorderUrlHashHandling.h"

#include <QCryptographicHash>

// A name and no protection: the hash only has to be the same on every device.
QByteArray RecorderUrlHashHandling::createUrlHash(const QByteArray& url)
{
    return QCryptographicHash::hash(url, QCryptographicHash::Sha1);
}
