#include "DurableFile.h"

#include "FileDescriptor.h"

#include <QFile>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

// QSaveFile and QFile are no help here: on a full disk both report success for a file that is cut.
namespace
{
constexpr unsigned mode = 0640;
constexpr int attempts = 16;

enum class Outcome
{
    Written,
    Failed,
    NotSupported
};

// Never ends in the extension of a spool file: a reader of the folder must not take it for one.
QByteArray temporaryName()
{
    return ".unfinished-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16) +
           ".tmp";
}

// A write over the limit does not only fail: it raises a signal that ends the process.
bool isOverFileSizeLimit(int size)
{
    rlimit limit = {};
    return ::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY &&
           static_cast<rlim_t>(size) > limit.rlim_cur;
}

bool writeAll(const FileDescriptor& file, const QByteArray& bytes)
{
    const char* position = bytes.constData();
    size_t left = static_cast<size_t>(bytes.size());
    while (left > 0)
    {
        const ssize_t count = ::write(file.get(), position, left);
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        if (count <= 0)
        {
            return false;
        }
        position += count;
        left -= static_cast<size_t>(count);
    }
    return true;
}

bool syncData(const FileDescriptor& file)
{
    int result = 0;
    do
    {
        result = ::fdatasync(file.get());
    }
    while (result != 0 && errno == EINTR);
    return result == 0;
}

bool syncFolder(const FileDescriptor& folder)
{
    int result = 0;
    do
    {
        result = ::fsync(folder.get());
    }
    while (result != 0 && errno == EINTR);
    // EINVAL: this file system has nothing to sync for a folder. Refusing would lose every event.
    return result == 0 || errno == EINVAL;
}

// The result of unlinkat is not looked at: what called for it is reported already.
void remove(const FileDescriptor& folder, const QByteArray& name)
{
    ::unlinkat(folder.get(), name.constData(), 0);
}

bool replace(const FileDescriptor& folder, const QByteArray& temporary, const QByteArray& name)
{
    if (::renameat(folder.get(), temporary.constData(), folder.get(), name.constData()) != 0)
    {
        remove(folder, temporary);
        return false;
    }
    return syncFolder(folder);
}

// Gives a complete file its name, which is new as a rule.
bool publish(const FileDescriptor& folder, const QByteArray& temporary, const QByteArray& name)
{
    if (::renameat2(folder.get(), temporary.constData(), folder.get(), name.constData(),
                    RENAME_NOREPLACE) == 0)
    {
        if (!syncFolder(folder))
        {
            remove(folder, name);
            return false;
        }
        return true;
    }
    // EINVAL: this file system cannot tell a new name from one that exists.
    if (errno == EEXIST || errno == EINVAL)
    {
        return replace(folder, temporary, name);
    }
    remove(folder, temporary);
    return false;
}

// Gives the file a name in the folder. linkat() never replaces and never follows a link there.
bool link(const FileDescriptor& file, const FileDescriptor& folder, const QByteArray& name)
{
    const QByteArray unnamed = "/proc/self/fd/" + QByteArray::number(file.get());
    return ::linkat(AT_FDCWD, unnamed.constData(), folder.get(), name.constData(),
                    AT_SYMLINK_FOLLOW) == 0;
}

Outcome linkAndReplace(FileDescriptor& file, const FileDescriptor& folder, const QByteArray& name)
{
    for (int attempt = 0; attempt < attempts; ++attempt)
    {
        const QByteArray temporary = temporaryName();
        if (link(file, folder, temporary))
        {
            if (!file.close())
            {
                remove(folder, temporary);
                return Outcome::Failed;
            }
            return replace(folder, temporary, name) ? Outcome::Written : Outcome::Failed;
        }
        if (errno != EEXIST)
        {
            break;
        }
    }
    return Outcome::Failed;
}

// The file has no name until it is complete and synced, so that a kill leaves nothing behind.
Outcome writeUnnamedFile(const QByteArray& bytes, const FileDescriptor& folder,
                         const QByteArray& name)
{
    FileDescriptor file(
        FileDescriptor::open(folder.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, mode));
    if (!file.isOpen())
    {
        const bool isKnown = errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL;
        return isKnown ? Outcome::Failed : Outcome::NotSupported;
    }
    if (!writeAll(file, bytes) || !syncData(file))
    {
        return Outcome::Failed;
    }
    if (link(file, folder, name))
    {
        if (!file.close() || !syncFolder(folder))
        {
            remove(folder, name);
            return Outcome::Failed;
        }
        return Outcome::Written;
    }
    if (errno == EEXIST)
    {
        return linkAndReplace(file, folder, name);
    }
    // ENOENT: /proc is not mounted.
    return errno == ENOENT ? Outcome::NotSupported : Outcome::Failed;
}

// For file systems without unnamed files. A kill may leave the temporary file.
Outcome writeTemporaryFile(const QByteArray& bytes, const FileDescriptor& folder,
                           const QByteArray& name)
{
    for (int attempt = 0; attempt < attempts; ++attempt)
    {
        const QByteArray temporary = temporaryName();
        FileDescriptor file(FileDescriptor::open(
            folder.get(), temporary, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
        if (file.isOpen())
        {
            if (!writeAll(file, bytes) || !syncData(file) || !file.close())
            {
                remove(folder, temporary);
                return Outcome::Failed;
            }
            return publish(folder, temporary, name) ? Outcome::Written : Outcome::Failed;
        }
        if (errno != EEXIST)
        {
            break;
        }
    }
    return Outcome::Failed;
}
} // namespace

bool DurableFile::writeBytesToFile(const QByteArray& bytes, const QString& path)
{
    // The system would cut the path there and write another file.
    if (path.contains(QChar::Null))
    {
        return false;
    }
    // As QDir, which makes the folder, encodes it.
    const QByteArray encodedPath = QFile::encodeName(path);
    const int nameBegin = encodedPath.lastIndexOf('/') + 1;
    const QByteArray name = encodedPath.mid(nameBegin);
    if (name.isEmpty() || isOverFileSizeLimit(bytes.size()))
    {
        return false;
    }
    const QByteArray folderPath = nameBegin == 0 ? QByteArray(".") : encodedPath.left(nameBegin);
    const FileDescriptor folder(
        FileDescriptor::open(AT_FDCWD, folderPath, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen())
    {
        return false;
    }
    Outcome outcome = writeUnnamedFile(bytes, folder, name);
    if (outcome == Outcome::NotSupported)
    {
        outcome = writeTemporaryFile(bytes, folder, name);
    }
    return outcome == Outcome::Written;
}
