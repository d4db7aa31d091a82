// Gives a fuzz target the kept inputs of a folder, in the order of their names:  fuzz_replay TARGET FOLDER

#include "FuzzTarget.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <vector>

int main(int argc, char** argv)
{
    const fuzz::TakeInput takeInput =
        argc == 3 ? fuzz::targets().value(QString::fromUtf8(argv[1])) : nullptr;
    const QDir folder(QFile::decodeName(argc == 3 ? argv[2] : ""));
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    if (takeInput == nullptr || names.isEmpty())
    {
        std::fprintf(stderr, "Usage: fuzz_replay TARGET FOLDER\n");
        return 2;
    }
    for (const QString& name : names)
    {
        QFile file(folder.filePath(name));
        if (!file.open(QFile::ReadOnly))
        {
            std::fprintf(stderr, "Cannot read %s\n", qPrintable(name));
            return 1;
        }
        const QByteArray input = file.readAll();
        // A heap block of exactly this size, whose end the address sanitizer watches.
        const std::vector<uint8_t> data(input.cbegin(), input.cend());
        std::fprintf(stderr, "%s\n", qPrintable(name));
        if (takeInput(data.data(), data.size()) != 0)
        {
            return 1;
        }
    }
    std::printf("%d inputs\n", names.size());
    return 0;
}
