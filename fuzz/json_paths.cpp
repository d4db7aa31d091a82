// Paths into JSON objects: the three readers find what a walk from key to key finds, and touch their result only then.

#include "Platform/JsonFunctions.h"

#include "FuzzTarget.h"

#include <QJsonDocument>

#include <cstring>

namespace fuzz_json_paths
{
const QStringList words{QStringLiteral("a"), QStringLiteral("b"),    QStringLiteral("a/b"),
                        QStringLiteral("/"), QStringLiteral("a/"),   QStringLiteral("value"),
                        QString(),           QStringLiteral("%1/a"), QStringLiteral("ü")};

QJsonValue walk(const QString& path, const QJsonObject& object)
{
    QJsonValue value = object;
    const QStringList steps = path.split(QLatin1Char('/'));
    for (const QString& step : steps)
    {
        value = step.isEmpty() ? QJsonValue(QJsonValue::Undefined) : value[step];
    }
    return value;
}

FUZZ_TARGET(json_paths)
{
    fuzz::Input input(data, size, words);
    const bool isText = size > 1 && std::memchr(data, '\n', size) != nullptr && data[0] < 0x80;
    const QByteArray all(reinterpret_cast<const char*>(data), int(size));
    const QString path = isText ? QString::fromUtf8(all.left(all.indexOf('\n')))
                                : input.texts(4).join(QLatin1Char('/'));
    const QJsonObject object =
        isText ? QJsonDocument::fromJson(all.mid(all.indexOf('\n') + 1)).object() : input.object(3);
    fuzz::Log::take();
    const QJsonValue expected = walk(path, object);

    const QJsonValue before(QStringLiteral("before"));
    QJsonValue value = before;
    fuzz::require(readJsonValue(path, object, value) == !expected.isUndefined(),
                  "a value is found where there is one", path);
    fuzz::require(value == (expected.isUndefined() ? before : expected), "the value is that one");

    QString text = QStringLiteral("before");
    fuzz::require(readStringValueFromJson(path, object, text) == expected.isString(),
                  "a text is found where there is one", path);
    fuzz::require(text == expected.toString(QStringLiteral("before")), "the text is that one");

    const QJsonObject untouched{{QStringLiteral("before"), 7}};
    QJsonObject found = untouched;
    fuzz::require(readJsonObjectFromJson(path, object, found) == expected.isObject(),
                  "an object is found where there is one", path);
    // Qt takes an empty object for none when it is asked for a substitute.
    fuzz::require(found == (expected.isObject() ? expected.toObject() : untouched),
                  "the object is that one", path);
    fuzz::require(fuzz::Log::take().isEmpty(), "there is no warning");
    return 0;
}
} // namespace fuzz_json_paths
