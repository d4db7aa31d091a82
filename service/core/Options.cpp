#include "core/Options.h"

#include <QCommandLineParser>

namespace eventlistd
{

namespace
{
Options refusal(const QString& text)
{
    Options options;
    options.action = Options::Action::refuse;
    options.text = text;
    return options;
}

// Takes the whole numbers of the command line and remembers the first that is none.
class NumberReader
{
public:
    explicit NumberReader(const QCommandLineParser& parser) : m_parser(parser) {}

    template<typename Number>
    void read(const QString& option, Number& number)
    {
        if (m_parser.isSet(option))
        {
            bool isNumber = false;
            const qint64 value = m_parser.value(option).toLongLong(&isNumber);
            if (!isNumber || value < 1 || Number(value) < 1)
            {
                error = QStringLiteral("--") + option +
                        QStringLiteral(" needs a whole number above zero");
            }
            number = Number(value);
        }
    }

    QString error;

private:
    const QCommandLineParser& m_parser;
};
} // namespace

Options Options::parse(const QStringList& arguments)
{
    const QString root = QStringLiteral(EVENTLISTHANDLER_DATA_ROOT);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Keeps the central event list and alarm list of the device.\n\n"
                       "Says \"eventlistd: ready\" on its standard error when it can be reached "
                       "on the bus.\nEnds with 0 on SIGTERM and SIGINT, 1 when the command line is "
                       "wrong, 3 when\nanother process has the bus name, 4 when the database "
                       "cannot be opened."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const auto option = [&](const char* name, const char* description, const char* value,
                            const QString& standard = QString()) {
        parser.addOption(
            {QLatin1String(name), QLatin1String(description), QLatin1String(value), standard});
    };
    option("database", "File that holds the lists.", "file",
           root + QStringLiteral("var/eventlistd/eventlist.sqlite"));
    option("spool", "Folder in which modules leave their events.", "folder",
           root + QStringLiteral("var/EventToFileData/"));
    option("texts", "Folder with the language files of the service.", "folder",
           root + QStringLiteral("share/texts/"));
    option("max-rows", "Events that the list holds; the oldest go. Default 1000000.", "n");
    option("max-bytes", "Bytes that the list takes; the oldest go. Default 1073741824.", "n");
    option("max-alarms", "Rows of the alarm list. Default 10000.", "n");
    option("sender-rate", "Events a second that one sender may send on and on. Default 5000.", "n");
    option("sender-burst", "Events that one sender may send at once. Default 250000.", "n");
    option(
        "query-rate",
        "Milliseconds of a second that the queries of one sender may take on and on. Default 500.",
        "ms");
    option("query-burst",
           "Milliseconds that the queries of one sender may take at once. Default 10000.", "ms");
    option("check", "Checks a database and ends: 0 when it is sound, 5 when it is damaged.",
           "file");

    if (!parser.parse(arguments) || !parser.positionalArguments().isEmpty())
    {
        return refusal(parser.errorText().isEmpty() ? QStringLiteral("Unknown argument: ") +
                                                          parser.positionalArguments().constFirst()
                                                    : parser.errorText());
    }
    Options options;
    if (parser.isSet(help) || parser.isSet(version))
    {
        options.action = Action::print;
        options.text = parser.isSet(help) ? parser.helpText()
                                          : QStringLiteral("eventlistd " EVENTLISTD_VERSION "\n");
        return options;
    }
    const bool isCheck = parser.isSet(QStringLiteral("check"));
    options.action = isCheck ? Action::check : Action::run;
    options.service.databasePath =
        parser.value(isCheck ? QStringLiteral("check") : QStringLiteral("database"));
    options.service.spool.folder = parser.value(QStringLiteral("spool"));
    options.textsFolder = parser.value(QStringLiteral("texts"));
    NumberReader numbers(parser);
    numbers.read(QStringLiteral("max-rows"), options.service.maximumRows);
    numbers.read(QStringLiteral("max-bytes"), options.service.maximumBytes);
    numbers.read(QStringLiteral("max-alarms"), options.service.maximumAlarms);
    numbers.read(QStringLiteral("sender-rate"), options.service.senderLimits.eventsPerSecond);
    numbers.read(QStringLiteral("sender-burst"), options.service.senderLimits.eventBurst);
    numbers.read(QStringLiteral("query-rate"), options.service.senderLimits.queryMsPerSecond);
    numbers.read(QStringLiteral("query-burst"), options.service.senderLimits.queryMsBurst);
    return numbers.error.isEmpty() ? options : refusal(numbers.error);
}

} // namespace eventlistd
