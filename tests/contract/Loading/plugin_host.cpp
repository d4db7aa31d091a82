// A program that opens the library as a plug-in, with Qt's loader. It is linked with nothing but Qt.
//   plugin_host PLATFORM LIBRARY

#include <QCoreApplication>
#include <QLibrary>
#include <QTextStream>

namespace
{
bool isFine = true;

void require(bool holds, const char* what, const QLibrary& library)
{
    if (!holds)
    {
        QTextStream(stderr) << "Does not hold: " << what << ": " << library.errorString() << '\n';
        isFine = false;
    }
}

void requireRefusal(const char* when, const QString& path)
{
    QLibrary library(path);
    require(!library.load() && library.errorString().contains(QLatin1String("undefined symbol")),
            when, library);
}
} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList paths = QCoreApplication::arguments().mid(1);
    if (paths.size() != 2)
    {
        QTextStream(stderr) << "plugin_host PLATFORM LIBRARY\n";
        return 2;
    }
    const QString& path = paths.last();
    requireRefusal("refused without a platform layer", path);

    QLibrary platform(paths.first());
    require(platform.load(), "a platform layer loads", platform);
    requireRefusal("refused beside a platform layer out of the global scope", path);
    platform.setLoadHints(QLibrary::ExportExternalSymbolsHint);
    require(platform.load(), "a platform layer that is loaded stays so", platform);
    requireRefusal("refused because the hint came too late", path);
    require(platform.unload(), "a platform layer unloads", platform);

    platform.setLoadHints(QLibrary::ExportExternalSymbolsHint);
    require(platform.load(), "a platform layer loads into the global scope", platform);
    QLibrary library(path);
    require(library.load(), "the library loads beside it", library);
    return isFine ? 0 : 1;
}
