#pragma once

#include <QByteArray>

namespace eventlistd
{

/// Tells one spool file from every other: it is the same after a move and after a crash, and not
/// the same for a new file of an old name.
struct SpoolKey
{
    quint64 device = 0;
    quint64 inode = 0;
    qint64 modifiedNs = 0;
    QByteArray sha256;
};

} // namespace eventlistd
