#include "eventlist/LanguageFile.h"

#include "eventlist/FileContent.h"

#include <QFileInfo>
#include <QXmlStreamReader>

namespace
{
constexpr qint64 largestFile = 64 * 1024 * 1024;

LanguageFile::Mark markOf(const QString& type)
{
    if (type == QLatin1String("unfinished"))
    {
        return LanguageFile::Mark::unfinished;
    }
    const bool isGone = type == QLatin1String("obsolete") || type == QLatin1String("vanished");
    return isGone ? LanguageFile::Mark::gone : LanguageFile::Mark::finished;
}

// Text of an element; a character that XML cannot hold stands in an element of its own.
QString textOf(QXmlStreamReader& xml)
{
    QString text;
    while (!xml.atEnd() && xml.readNext() != QXmlStreamReader::EndElement)
    {
        if (xml.isCharacters())
        {
            text += xml.text();
        }
        else if (xml.isStartElement())
        {
            const QString value = xml.attributes().value(QStringLiteral("value")).toString();
            const bool isByte = xml.name() == QLatin1String("byte");
            const bool isHexadecimal = value.startsWith(QLatin1Char('x'));
            const uint code = isHexadecimal ? value.mid(1).toUInt(nullptr, 16) : value.toUInt();
            text += isByte ? QString(QChar(ushort(code))) : QString();
            xml.skipCurrentElement();
        }
    }
    return text;
}

QStringList formsOf(QXmlStreamReader& xml)
{
    QStringList forms;
    while (xml.readNextStartElement())
    {
        if (xml.name() == QLatin1String("numerusform"))
        {
            forms.append(textOf(xml));
        }
        else
        {
            xml.skipCurrentElement();
        }
    }
    return forms;
}

LanguageFile::Message readMessage(QXmlStreamReader& xml)
{
    LanguageFile::Message message;
    message.line = int(xml.lineNumber());
    message.url = xml.attributes().value(QStringLiteral("id")).toString();
    message.isNumerus = xml.attributes().value(QStringLiteral("numerus")) == QLatin1String("yes");
    while (xml.readNextStartElement())
    {
        if (xml.name() == QLatin1String("translation"))
        {
            message.mark = markOf(xml.attributes().value(QStringLiteral("type")).toString());
            message.texts = message.isNumerus ? formsOf(xml) : QStringList(textOf(xml));
        }
        else
        {
            xml.skipCurrentElement();
        }
    }
    return message;
}
} // namespace

LanguageFile::LanguageFile(const QString& path) : m_path(path)
{
    QByteArray content;
    QString error;
    if (!FileContent::read(path, largestFile, content, error))
    {
        fail(error, 0);
        return;
    }
    QXmlStreamReader xml(content);
    if (xml.readNextStartElement() && xml.name() != QLatin1String("TS"))
    {
        fail(QStringLiteral("it is no file of Qt Linguist"), int(xml.lineNumber()));
        return;
    }
    m_language = xml.attributes().value(QStringLiteral("language")).toString();
    while (!xml.atEnd())
    {
        if (xml.readNext() == QXmlStreamReader::StartElement &&
            xml.name() == QLatin1String("message"))
        {
            m_messages.append(readMessage(xml));
        }
    }
    if (xml.hasError())
    {
        fail(xml.errorString(), int(xml.lineNumber()));
    }
}

void LanguageFile::fail(const QString& text, int line)
{
    m_errorText = text;
    m_errorLine = line;
    m_messages.clear();
}

QString LanguageFile::languageKey() const
{
    return QFileInfo(m_path).completeBaseName();
}
