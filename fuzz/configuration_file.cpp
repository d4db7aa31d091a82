// Configuration descriptions as files: an instance name, the path of a leaf, and the file's content, one after the
// other in lines. What is loaded is what Qt's parser reads, no key twice and not too deep, and lies in the folder.

#include "FuzzTarget.h"
#include "ReferenceJson.h"

#include "Platform/ConfigurationAndProcessDataTools.h"
#include "Platform/ConfigurationDataAndProcessDescriptionAccess.h"

#include <QDir>
#include <QFile>

namespace fuzz_configuration_file
{
const QString heads[] = {QStringLiteral("Can't read configuration description ")};
const QString bait = QStringLiteral("lies outside");

void write(const QString& path, const QByteArray& content)
{
    QFile file(path);
    fuzz::require(file.open(QFile::WriteOnly) && file.write(content) == content.size(),
                  "the file is written", file.errorString());
}

const QDir& instances()
{
    static const QDir folder = [] {
        const QDir made(fuzz::folder());
        fuzz::require(made.mkpath(QStringLiteral("inside")), "the folder is made");
        write(made.filePath(QStringLiteral("outside.json")),
              "{\"value\": \"" + bait.toUtf8() + "\"}");
        QFile::link(QStringLiteral("../outside.json"),
                    made.filePath(QStringLiteral("inside/link.json")));
        return QDir(made.filePath(QStringLiteral("inside")));
    }();
    return folder;
}

QByteArray takeLine(QByteArray& bytes)
{
    const int end = bytes.indexOf('\n');
    const QByteArray line = bytes.left(end);
    bytes = end < 0 ? QByteArray() : bytes.mid(end + 1);
    return line;
}

QVariant walk(const QString& path, const QJsonObject& object)
{
    QJsonValue value = object;
    const QStringList steps = path.split(QLatin1Char('/'));
    for (const QString& step : steps)
    {
        value = step.isEmpty() ? QJsonValue(QJsonValue::Undefined) : value[step];
    }
    return value[QStringLiteral("value")].toVariant();
}

using Access = ConfigurationDataAndProcessDescriptionAccess;

void checkLoaded(const QByteArray& content, const QString& name, const QString& url)
{
    const auto tree = Access::getParsedConfigurationProcessDescription(instances(), name, false);
    const QStringList warnings = fuzz::Log::take();
    const QVariant value = ConfigurationAndProcessDataTools::extractConfigValue(url, tree);
    fuzz::require(fuzz::Log::take().isEmpty(), "looking for a leaf gives no warning");
    fuzz::require(warnings.size() == (tree ? 0 : 1), "one warning tells of a file that is refused",
                  warnings.join(QLatin1Char('\n')));
    fuzz::Log::requireOnly(warnings, {heads[0]});
    if (!tree)
    {
        fuzz::require(!value.isValid(), "nothing is found in what was refused");
        return;
    }
    fuzz::require(name == QLatin1String("pump"), "what is loaded is the file of this name", name);
    const fuzz::ReferenceJson reference(content);
    fuzz::require(reference.isAcceptable, "what is loaded is good");
    if (!reference.hasMarks)
    {
        fuzz::require(value == walk(url, reference.object), "the leaf has the value of the file",
                      url);
    }
}

FUZZ_TARGET(configuration_file)
{
    QByteArray content(reinterpret_cast<const char*>(data), int(size));
    const QString name = QString::fromUtf8(takeLine(content));
    const QString url = QString::fromUtf8(takeLine(content));
    write(instances().filePath(QStringLiteral("pump.json")), content);
    fuzz::Log::take();
    checkLoaded(content, name, url);

    // As Qt itself writes it, nothing is left to complain about.
    const fuzz::ReferenceJson reference(content);
    if (reference.isAcceptable && !reference.hasMarks)
    {
        const QByteArray clean = QJsonDocument(reference.object).toJson(QJsonDocument::Compact);
        write(instances().filePath(QStringLiteral("pump.json")), clean);
        const auto tree = Access::getParsedConfigurationProcessDescription(
            instances(), QStringLiteral("pump"), false);
        fuzz::require(tree, "a good file is loaded", fuzz::Log::take().join(QLatin1Char('\n')));
    }
    return 0;
}
} // namespace fuzz_configuration_file
