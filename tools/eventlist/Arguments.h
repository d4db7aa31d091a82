#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>
#include <QVector>

/// One option of a sub-command, as it is parsed and as --help shows it.
struct Option
{
    QStringList names;
    QString valueName; ///< empty: a switch
    QString description;
};

/// The command line of one sub-command, taken apart.
class Arguments
{
public:
    explicit Arguments(const QVector<Option>& options);

    /// Takes the words behind the name of the sub-command.
    /// Failure: false, and errorText() says why.
    bool parse(const QStringList& words);

    QString errorText() const { return m_errorText; }

    /// Also false for an option that this sub-command does not have.
    bool isSet(const QString& option) const
    {
        return m_names.contains(option) && m_parser.isSet(option);
    }
    QString value(const QString& option) const { return m_parser.value(option); }
    QStringList values(const QString& option) const
    {
        return isSet(option) ? m_parser.values(option) : QStringList();
    }
    /// What is no option.
    QStringList words() const { return m_parser.positionalArguments(); }

    /// All values of an option that may be repeated and whose values may be joined by commas.
    QStringList list(const QString& option) const;

    /// The value as a whole number from minimum on; absent gives the fall-back.
    /// Failure: false, and error says why.
    bool readNumber(const QString& option, qint64 minimum, qint64 fallback, qint64& number,
                    QString& error) const;

private:
    QCommandLineParser m_parser;
    QStringList m_names;
    QString m_errorText;
};
