#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QDebug>
#include <QJsonArray>
#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <utility>

/// Begins the function that gets an input. A target lies in a namespace of its own, so that all of them go into the one
/// program that replays what was kept; with the fuzzer each is a program by itself.
#ifdef FUZZ_REPLAY
#define FUZZ_TARGET(name)                                                                          \
    int takeInput(const uint8_t* data, size_t size);                                               \
    [[maybe_unused]] const bool isKnown = fuzz::addTarget(#name, takeInput);                       \
    int takeInput(const uint8_t* data, size_t size)
#else
#define FUZZ_TARGET(name) extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
#endif

namespace fuzz
{

using TakeInput = int (*)(const uint8_t* data, size_t size);

/// The targets of this program by their names.
inline QMap<QString, TakeInput>& targets()
{
    static QMap<QString, TakeInput> known;
    return known;
}

inline bool addTarget(const char* name, TakeInput takeInput)
{
    targets().insert(QLatin1String(name), takeInput);
    return true;
}

/// Ends the process when something does not hold that must: the fuzzer keeps the input, the replay
/// fails.
inline void require(bool holds, const char* what, const QString& shown = QString())
{
    if (!holds)
    {
        std::fprintf(stderr, "Does not hold: %s: %s\n", what, shown.toUtf8().constData());
        std::abort();
    }
}

/// A string as a warning shows it.
inline QString quoted(const QString& text)
{
    QString result;
    QDebug(&result).nospace() << text;
    return result;
}

/// Takes the Qt message log, Qt's own messages too, from all threads.
class Log
{
public:
    /// What was logged since the last time.
    static QStringList take()
    {
        instance();
        const std::lock_guard<std::mutex> lock(sm_mutex);
        return std::exchange(sm_texts, QStringList());
    }

    /// Every line has to begin with one of these.
    static void requireOnly(const QStringList& lines, const QStringList& heads)
    {
        for (const QString& line : lines)
        {
            bool isKnown = false;
            for (const QString& head : heads)
            {
                isKnown = isKnown || line.startsWith(head);
            }
            require(isKnown, "a warning of the code under test, and nothing else", line);
        }
    }

private:
    static void instance()
    {
        static const QtMessageHandler before =
            qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
                const std::lock_guard<std::mutex> lock(sm_mutex);
                sm_texts.append(text);
            });
        Q_UNUSED(before)
    }

    static inline std::mutex sm_mutex;
    static inline QStringList sm_texts;
};

/// For targets with timers and plugins. The same one at each call.
inline void haveApplication()
{
    static int argumentCount = 0;
    static char* arguments = nullptr;
    static const QCoreApplication application(argumentCount, &arguments);
}

/// A folder of this process in memory, which is removed at its end.
inline const QString& folder()
{
    static const QTemporaryDir made(QStringLiteral("/dev/shm/fuzz-XXXXXX"));
    static const QString path = made.path();
    require(made.isValid(), "a folder in memory", made.errorString());
    return path;
}

/// Cuts the input up. At its end everything is zero and empty, so that each input has a meaning.
class Input
{
public:
    /// \param words  texts that mean something to the target; they come often
    Input(const uint8_t* data, size_t size, const QStringList& words)
        : m_data(data), m_end(data + size), m_words(words)
    {
    }

    bool isEmpty() const { return m_data == m_end; }

    int byte() { return isEmpty() ? 0 : *m_data++; }

    /// 0 to bound - 1.
    int below(int bound) { return byte() % bound; }

    qint64 number()
    {
        quint64 number = 0;
        for (int i = below(9); i > 0; --i)
        {
            number = number << 8 | quint64(byte());
        }
        return qint64(number);
    }

    QByteArray bytes(int length)
    {
        const int taken = qMin(length, int(m_end - m_data));
        const QByteArray result(reinterpret_cast<const char*>(m_data), taken);
        m_data += taken;
        return result;
    }

    QByteArray rest() { return bytes(int(m_end - m_data)); }

    /// A word of the target, or two of them in a row, or UTF-16 units of any value.
    QString text()
    {
        const int kind = byte();
        if (kind < 0xa0)
        {
            return m_words.at(kind % m_words.size());
        }
        if (kind < 0xd0)
        {
            return m_words.at(kind % m_words.size()) + m_words.at(below(m_words.size()));
        }
        QString text;
        for (int i = kind - 0xd0; i > 0 && !isEmpty(); --i)
        {
            const int low = byte();
            text += QChar(ushort(low < 0xf0 ? low : low << 8 | byte()));
        }
        return text;
    }

    QStringList texts(int most)
    {
        QStringList list;
        for (int i = below(most + 1); i > 0; --i)
        {
            list.append(text());
        }
        return list;
    }

    QJsonValue json(int depth)
    {
        const int kind = byte();
        if (depth > 0 && kind < 0x60)
        {
            return object(depth - 1);
        }
        switch (kind % 6)
        {
        case 0:
            return QJsonValue();
        case 1:
            return kind > 0x80;
        case 2:
            return double(number());
        case 3:
            return QJsonArray{text(), depth > 0 ? json(depth - 1) : QJsonValue()};
        default:
            return text();
        }
    }

    QJsonObject object(int depth)
    {
        QJsonObject object;
        for (int i = below(6); i > 0; --i)
        {
            const QString key = text();
            object.insert(key, json(depth));
        }
        return object;
    }

private:
    const uint8_t* m_data;
    const uint8_t* const m_end;
    const QStringList& m_words;
};

} // namespace fuzz
