#include "eventlist/Arguments.h"

Arguments::Arguments(const QVector<Option>& options)
{
    for (const Option& option : options)
    {
        m_parser.addOption(QCommandLineOption(option.names, option.description, option.valueName));
        m_names += option.names;
    }
}

bool Arguments::parse(const QStringList& words)
{
    // The parser skips the first word, which is the name of the program elsewhere.
    if (m_parser.parse(QStringList{QString()} + words))
    {
        return true;
    }
    m_errorText = m_parser.errorText();
    if (m_errorText.endsWith(QLatin1Char('.')))
    {
        m_errorText.chop(1);
    }
    return false;
}

QStringList Arguments::list(const QString& option) const
{
    QStringList elements;
    for (const QString& value : values(option))
    {
        elements += value.split(QLatin1Char(','), Qt::SkipEmptyParts);
    }
    return elements;
}

bool Arguments::readNumber(const QString& option, qint64 minimum, qint64 fallback, qint64& number,
                           QString& error) const
{
    number = fallback;
    if (!isSet(option))
    {
        return true;
    }
    bool isNumber = false;
    number = value(option).toLongLong(&isNumber);
    if (!isNumber || number < minimum)
    {
        error = QStringLiteral("--%1 takes a whole number from %2 on, not '%3'")
                    .arg(option, QString::number(minimum), value(option));
        return false;
    }
    return true;
}
