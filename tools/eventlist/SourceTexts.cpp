#include "eventlist/SourceTexts.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QStringList>

namespace
{
enum class Grammar : int
{
    slashComments,
    python,
    words
};

const QStringList& slashEndings()
{
    static const QStringList endings =
        QStringLiteral("c cc cpp cxx h hh hpp hxx js json qml").split(QLatin1Char(' '));
    return endings;
}

Grammar grammarOf(const QString& path)
{
    const QString ending = QFileInfo(path).suffix().toLower();
    if (slashEndings().contains(ending))
    {
        return Grammar::slashComments;
    }
    return ending == QLatin1String("py") ? Grammar::python : Grammar::words;
}

// Goes through a source once, from the left to the right.
class Reader
{
public:
    Reader(const QString& content, Grammar grammar) : m_content(content), m_grammar(grammar) {}

    QVector<SourceTexts::Text> read()
    {
        while (m_position < m_content.size())
        {
            if (skipBlanks() || skipComment() || skipInclude())
            {
                continue;
            }
            if (isOpeningQuote())
            {
                readLiteral();
                continue;
            }
            m_isAfterLiteral = false;
            ++m_position;
        }
        return m_texts;
    }

private:
    bool isNext(const char* word) const
    {
        return m_content.midRef(m_position).startsWith(QLatin1String(word));
    }
    QChar previous() const
    {
        return m_position > 0 ? m_content.at(m_position - 1) : QChar(QLatin1Char('\n'));
    }

    void goTo(int position)
    {
        const int end = position < 0 ? m_content.size() : qMin(position, m_content.size());
        m_line += m_content.midRef(m_position, end - m_position).count(QLatin1Char('\n'));
        m_position = end;
    }

    bool skipBlanks()
    {
        int end = m_position;
        while (end < m_content.size() &&
               (m_content.at(end).isSpace() || m_content.midRef(end, 2) == QLatin1String("\\\n")))
        {
            ++end;
        }
        const bool isBlank = end > m_position;
        goTo(end);
        return isBlank;
    }

    bool skipComment()
    {
        if (m_grammar == Grammar::slashComments && isNext("/*"))
        {
            const int end = m_content.indexOf(QLatin1String("*/"), m_position + 2);
            goTo(end < 0 ? end : end + 2);
            return true;
        }
        if (isNext(m_grammar == Grammar::slashComments ? "//" : "#"))
        {
            goTo(m_content.indexOf(QLatin1Char('\n'), m_position));
            return true;
        }
        return false;
    }

    bool skipInclude()
    {
        static const QRegularExpression include(QStringLiteral("^#\\s*include\\b"));
        if (m_grammar != Grammar::slashComments || !isNext("#") ||
            !include.match(m_content.midRef(m_position, 40)).hasMatch())
        {
            return false;
        }
        goTo(m_content.indexOf(QLatin1Char('\n'), m_position));
        return true;
    }

    bool isOpeningQuote() const
    {
        const QChar quote = m_content.at(m_position);
        // 1'000'000
        const bool isSeparator = quote == QLatin1Char('\'') &&
                                 m_grammar == Grammar::slashComments && previous().isDigit();
        return quote == QLatin1Char('"') || (quote == QLatin1Char('\'') && !isSeparator);
    }

    void readLiteral()
    {
        const int line = m_line;
        QString text;
        if (m_grammar == Grammar::slashComments && previous() == QLatin1Char('R'))
        {
            text = readRaw();
        }
        else if (m_grammar == Grammar::python && (isNext("\"\"\"") || isNext("'''")))
        {
            text = readUpTo(m_content.mid(m_position, 3), 3);
        }
        else
        {
            text = readPlain();
        }
        if (m_isAfterLiteral)
        {
            m_texts.last().text += text;
        }
        else
        {
            m_texts.append({text, line});
        }
        m_isAfterLiteral = true;
    }

    QString readUpTo(const QString& closing, int openingLength)
    {
        const int begin = m_position + openingLength;
        const int end = m_content.indexOf(closing, begin);
        const QString text = m_content.mid(begin, end < 0 ? -1 : end - begin);
        goTo(end < 0 ? end : end + closing.size());
        return text;
    }

    QString readRaw()
    {
        const int bracket = m_content.indexOf(QLatin1Char('('), m_position);
        if (bracket < 0)
        {
            return readPlain();
        }
        const QString delimiter = m_content.mid(m_position + 1, bracket - m_position - 1);
        return readUpTo(QLatin1Char(')') + delimiter + QLatin1Char('"'), bracket + 1 - m_position);
    }

    // Ends with the line, so that a quote which was none does no more harm than that.
    QString readPlain()
    {
        const QChar quote = m_content.at(m_position);
        QString text;
        int end = m_position + 1;
        while (end < m_content.size() && m_content.at(end) != quote &&
               m_content.at(end) != QLatin1Char('\n'))
        {
            end += m_content.at(end) == QLatin1Char('\\') ? 1 : 0;
            text += m_content.mid(end, 1);
            ++end;
        }
        goTo(end + 1);
        return text;
    }

    const QString& m_content;
    const Grammar m_grammar;
    QVector<SourceTexts::Text> m_texts;
    int m_position = 0;
    int m_line = 1;
    bool m_isAfterLiteral = false;
};

QVector<SourceTexts::Text> words(const QString& content)
{
    static const QRegularExpression comment(QStringLiteral("(^|\\s)#.*$"));
    static const QRegularExpression word(
        QStringLiteral("(?<![\\w/.%$-])[\\w.%-]+(?:/[\\w.%-]+)+(?![\\w/])"),
        QRegularExpression::UseUnicodePropertiesOption);
    QVector<SourceTexts::Text> texts;
    const QStringList lines = content.split(QLatin1Char('\n'));
    for (int i = 0; i < lines.size(); ++i)
    {
        auto found = word.globalMatch(QString(lines.at(i)).remove(comment));
        while (found.hasNext())
        {
            texts.append({found.next().captured(), i + 1});
        }
    }
    return texts;
}
} // namespace

QVector<SourceTexts::Text> SourceTexts::of(const QString& path, const QString& content)
{
    const Grammar grammar = grammarOf(path);
    return grammar == Grammar::words ? words(content) : Reader(content, grammar).read();
}

QStringList SourceTexts::filePatterns()
{
    QStringList patterns = {QStringLiteral("*.py"), QStringLiteral("*.sh")};
    for (const QString& ending : slashEndings())
    {
        patterns.append(QStringLiteral("*.") + ending);
    }
    return patterns;
}
