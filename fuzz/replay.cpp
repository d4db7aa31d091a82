// Gives a fuzz target every file of its corpus, in the order of their names: the main function where there is no
// fuzzer. The arguments are files and folders.

#include "FuzzTarget.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdio>

namespace
{
bool replay(const QString& path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
    {
        std::fprintf(stderr, "Cannot read %s\n", qPrintable(path));
        return false;
    }
    const QByteArray input = file.readAll();
    // A heap block of exactly this size, whose end the address sanitizer watches.
    const std::vector<uint8_t> data(input.cbegin(), input.cend());
    std::fprintf(stderr, "%s\n", qPrintable(path));
    return LLVMFuzzerTestOneInput(data.data(), data.size()) == 0;
}
} // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i)
    {
        const QString path = QFile::decodeName(argv[i]);
        const QStringList names =
            QFileInfo(path).isDir() ? QDir(path).entryList(QDir::Files, QDir::Name) : QStringList();
        for (const QString& name : QFileInfo(path).isDir() ? names : QStringList(QString()))
        {
            if (!replay(name.isEmpty() ? path : QDir(path).filePath(name)))
            {
                return 1;
            }
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
