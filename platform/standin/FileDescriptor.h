#pragma once

#include <QByteArray>

/// Owns a file descriptor.
class FileDescriptor
{
public:
    explicit FileDescriptor(int fileDescriptor);
    ~FileDescriptor();
    Q_DISABLE_COPY(FileDescriptor)

    /// openat(), repeated when a signal interrupts it.
    /// Failure: a negative number, and errno.
    static int open(int folder, const QByteArray& path, int flags, unsigned mode = 0);

    int get() const { return m_fileDescriptor; }
    bool isOpen() const { return m_fileDescriptor >= 0; }

    /// Closes it now.
    /// Failure: false when the file system reports a write that failed late.
    bool close();

private:
    int m_fileDescriptor;
};
