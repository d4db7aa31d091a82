#include "LanguageFileCheck.h"

#include <QtEndian>

namespace
{
// The parts of the file: a tag of one byte, a length of four, big endian, and the content.
constexpr int headSize = 5;
constexpr uchar contextsPart = 0x2f;
constexpr uchar offsetsPart = 0x42;
constexpr uchar messagesPart = 0x69;
constexpr uchar pluralRulesPart = 0x88;
constexpr uchar dependenciesPart = 0x96;
constexpr uchar languagePart = 0xa7;

// A message is a list of fields, each a tag and, but for the last, a length and the content.
constexpr uchar endField = 1;
constexpr uchar translationField = 3;
constexpr uchar sourceField = 6;
constexpr uchar contextField = 7;
constexpr uchar commentField = 8;

// Many offsets may lead to one message: an endless one would be walked as often.
constexpr int maxFields = 32;

struct Part
{
    uchar tag = 0;
    QByteArray content;
};

// Cuts the next tag, length and content off. The content shares the data of the file.
bool takePart(const QByteArray& data, int& position, Part& part)
{
    if (data.size() - position < headSize)
    {
        return false;
    }
    const char* head = data.constData() + position;
    const auto length = qFromBigEndian<quint32>(head + 1);
    position += headSize;
    if (length > quint32(data.size() - position))
    {
        return false;
    }
    part.tag = uchar(*head);
    part.content = QByteArray::fromRawData(data.constData() + position, int(length));
    position += int(length);
    return true;
}

bool isMessage(const QByteArray& messages, quint32 offset)
{
    if (offset >= quint32(messages.size()))
    {
        return false;
    }
    static const QByteArray emptyText = QByteArray::fromHex("03ffffffff");
    int position = int(offset);
    for (int count = 0; count < maxFields && position < messages.size(); ++count)
    {
        if (uchar(messages.at(position)) == endField)
        {
            return true;
        }
        // An empty text: a translation without length, at which the look-up ends.
        if (messages.mid(position, headSize) == emptyText)
        {
            return true;
        }
        Part field;
        if (!takePart(messages, position, field))
        {
            return false;
        }
        const bool isTranslation = field.tag == translationField && field.content.size() % 2 == 0;
        if (!isTranslation && field.tag != sourceField && field.tag != contextField &&
            field.tag != commentField)
        {
            return false;
        }
    }
    return false;
}

bool areMessages(const QByteArray& offsets, const QByteArray& messages)
{
    constexpr int entrySize = 8; // hash and offset
    if (offsets.size() % entrySize != 0)
    {
        return false;
    }
    for (int entry = 0; entry < offsets.size(); entry += entrySize)
    {
        if (!isMessage(messages, qFromBigEndian<quint32>(offsets.constData() + entry + 4)))
        {
            return false;
        }
    }
    return true;
}
} // namespace

QString LanguageFileCheck::findFault(const QByteArray& file)
{
    const QByteArray magic = QByteArray::fromHex("3cb86418caef9c95cd211cbf60a1bddd");
    if (!file.startsWith(magic))
    {
        return QStringLiteral("no compiled language file");
    }
    const QString damaged = QStringLiteral("damaged language file");
    QByteArray offsets;
    QByteArray messages;
    int position = magic.size();
    while (position < file.size())
    {
        Part part;
        if (!takePart(file, position, part))
        {
            return damaged;
        }
        switch (part.tag)
        {
        case offsetsPart:
            offsets = part.content;
            break;
        case messagesPart:
            messages = part.content;
            break;
        case languagePart:
        case pluralRulesPart:
            break;
        case contextsPart:
        case dependenciesPart:
            // Such a file has no ids, or makes QTranslator read further files.
            return QStringLiteral("not made with \"lrelease -idbased\"");
        default:
            return damaged;
        }
    }
    return areMessages(offsets, messages) ? QString() : damaged;
}
