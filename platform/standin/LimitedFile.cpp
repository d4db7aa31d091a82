#include "LimitedFile.h"

#include "FileDescriptor.h"

#include <QFile>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace
{
bool readUpTo(int fileDescriptor, qint64 maxBytes, QByteArray& bytes)
{
    qint64 length = 0;
    while (length < maxBytes)
    {
        const ssize_t count =
            ::read(fileDescriptor, bytes.data() + length, static_cast<size_t>(maxBytes - length));
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        if (count < 0)
        {
            return false;
        }
        if (count == 0)
        {
            break;
        }
        length += count;
    }
    bytes.truncate(static_cast<int>(length));
    return true;
}
} // namespace

bool LimitedFile::read(const QString& path, qint64 maxBytes, QByteArray& bytes, QString& error)
{
    bytes.clear();
    if (path.contains(QChar::Null))
    {
        error = QStringLiteral("the path holds U+0000");
        return false;
    }
    // O_NONBLOCK: opening a pipe would wait for its other end.
    const FileDescriptor file(FileDescriptor::open(AT_FDCWD, QFile::encodeName(path),
                                                   O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    struct stat status = {};
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0)
    {
        error = qt_error_string(errno);
        return false;
    }
    if (!S_ISREG(status.st_mode))
    {
        error = QStringLiteral("no regular file");
        return false;
    }
    const QString tooLarge = QStringLiteral("larger than %1 bytes").arg(maxBytes);
    if (status.st_size > maxBytes)
    {
        error = tooLarge;
        return false;
    }
    // One byte more than the size, so that a file that grows meanwhile is not cut in silence.
    bytes.resize(static_cast<int>(status.st_size) + 1);
    if (!readUpTo(file.get(), bytes.size(), bytes))
    {
        error = qt_error_string(errno);
        bytes.clear();
        return false;
    }
    if (bytes.size() > status.st_size)
    {
        error = QStringLiteral("changed while it was read");
        bytes.clear();
        return false;
    }
    return true;
}
