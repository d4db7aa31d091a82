#include "Platform/JsonFunctions.h"

#include <QFile>
#include <QJsonObject>
#include <QString>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

// Writes files "0.event.json" to "<names - 1>.event.json" again and again, and notes for each
// attempt what writeJsonObjectToFile() said. It is disturbed while it does so; another process
// checks the folder.
//
// The notes go into shared memory: no system call, so that nothing but the function under test makes
// the calls that are made to fail, and they outlive a kill.
namespace
{
enum Note : std::uint8_t
{
    NotTried = 0,
    Failed = 1,
    Written = 2,
    Running = 3
};

QJsonObject makeEvent(int attempt, int padding)
{
    return {{QStringLiteral("attempt"), attempt},
            {QStringLiteral("padding"), QString(padding, QLatin1Char('x'))},
            {QStringLiteral("zEnd"), QStringLiteral("complete")}};
}
} // namespace

int main(int argc, char* argv[])
{
    if (argc != 6)
    {
        std::fprintf(stderr, "usage: spool_writer FOLDER NOTES ATTEMPTS NAMES PADDING\n");
        return EXIT_FAILURE;
    }
    const QString folder = QFile::decodeName(argv[1]);
    const int attempts = std::atoi(argv[3]);
    const int names = std::atoi(argv[4]);
    const int padding = std::atoi(argv[5]);

    const int notesFile = ::open(argv[2], O_RDWR | O_CLOEXEC);
    void* const memory =
        ::mmap(nullptr, size_t(attempts), PROT_READ | PROT_WRITE, MAP_SHARED, notesFile, 0);
    if (memory == MAP_FAILED)
    {
        std::perror("notes");
        return EXIT_FAILURE;
    }
    auto* const notes = static_cast<volatile std::uint8_t*>(memory);
    for (int attempt = 0; attempt < attempts; ++attempt)
    {
        const QString path = folder + QLatin1Char('/') + QString::number(attempt % names) +
                             QStringLiteral(".event.json");
        notes[attempt] = Running;
        notes[attempt] =
            writeJsonObjectToFile(makeEvent(attempt, padding), path) ? Written : Failed;
    }
    return EXIT_SUCCESS;
}
