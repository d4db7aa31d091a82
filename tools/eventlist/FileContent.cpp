#include "eventlist/FileContent.h"

#include <QFile>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool FileContent::read(const QString& path, qint64 largest, QByteArray& content, QString& error)
{
    const int descriptor =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    struct stat status = {};
    if (descriptor < 0 || ::fstat(descriptor, &status) != 0)
    {
        error = QString::fromLocal8Bit(std::strerror(errno));
        return false;
    }
    QFile file;
    if (!S_ISREG(status.st_mode) ||
        !file.open(descriptor, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
    {
        ::close(descriptor);
        error = QStringLiteral("it is no regular file");
        return false;
    }
    // One byte more tells a file that is too large, whatever it claims to have.
    content = file.read(largest + 1);
    if (content.size() > largest)
    {
        error = QStringLiteral("it is larger than %1 bytes").arg(largest);
        return false;
    }
    if (file.error() != QFileDevice::NoError)
    {
        error = file.errorString();
        return false;
    }
    return true;
}
