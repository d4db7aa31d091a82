#include "FileDescriptor.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

FileDescriptor::FileDescriptor(int fileDescriptor) : m_fileDescriptor(fileDescriptor) {}

FileDescriptor::~FileDescriptor()
{
    // Only on the way out of a failure, or for what was only read: the result changes nothing.
    if (isOpen())
    {
        ::close(m_fileDescriptor);
    }
}

int FileDescriptor::open(int folder, const QByteArray& path, int flags, unsigned mode)
{
    int fileDescriptor = -1;
    do
    {
        fileDescriptor = ::openat(folder, path.constData(), flags, mode);
    }
    while (fileDescriptor < 0 && errno == EINTR);
    return fileDescriptor;
}

bool FileDescriptor::close()
{
    const int fileDescriptor = m_fileDescriptor;
    m_fileDescriptor = -1;
    // After EINTR the descriptor is gone all the same; a second close could hit another file.
    return ::close(fileDescriptor) == 0 || errno == EINTR;
}
