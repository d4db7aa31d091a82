#include "eventlist/DoctorCommand.h"

#include "eventlist/CommonTexts.h"
#include "eventlist/DeviceExamination.h"
#include "eventlist/Diagnosis.h"
#include "eventlist/ExitCode.h"
#include "eventlist/JsonText.h"
#include "eventlist/Output.h"
#include "eventlist/SafeText.h"
#include "eventlist/ServiceExamination.h"
#include "eventlist/SpoolOptions.h"

namespace
{
constexpr int levelCells = 9;
constexpr int subjectCells = 9;

QString styleOf(Diagnosis::Level level)
{
    switch (level)
    {
    case Diagnosis::Level::ok:
        return QStringLiteral("32");
    case Diagnosis::Level::warning:
        return QStringLiteral("1;33");
    case Diagnosis::Level::error:
        break;
    }
    return QStringLiteral("1;31");
}

QString lines(const Diagnosis::Finding& finding)
{
    const QString word = Diagnosis::word(finding.level);
    const QString shown =
        Output::isColoured() ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(styleOf(finding.level), word)
                             : word;
    QString text = shown + QString(levelCells - word.size(), QLatin1Char(' ')) +
                   finding.subject.leftJustified(subjectCells) + SafeText::escaped(finding.text) +
                   QLatin1Char('\n');
    if (!finding.advice.isEmpty())
    {
        text += QString(levelCells + subjectCells, QLatin1Char(' ')) + QStringLiteral("-> ") +
                SafeText::escaped(finding.advice) + QLatin1Char('\n');
    }
    return text;
}

QString jsonOf(const Diagnosis& diagnosis)
{
    QJsonArray objects;
    for (const Diagnosis::Finding& finding : diagnosis.findings())
    {
        objects.append(QJsonObject{{QStringLiteral("Level"), Diagnosis::word(finding.level)},
                                   {QStringLiteral("Subject"), finding.subject},
                                   {QStringLiteral("Text"), finding.text},
                                   {QStringLiteral("Advice"), finding.advice}});
    }
    return JsonText::of(objects);
}
} // namespace

QString DoctorCommand::name() const
{
    return QStringLiteral("doctor");
}

QString DoctorCommand::summary() const
{
    return QStringLiteral("examine this device, and say what to do");
}

QString DoctorCommand::usage() const
{
    return QStringLiteral("[options]");
}

QString DoctorCommand::explanation() const
{
    return QStringLiteral(
        "Looks at everything that events need on their way, and changes nothing: whether the bus\n"
        "is reached, who owns the name of the central service, whether its objects answer and\n"
        "its lists can be read; the rights, the space and the files of the spool folder; the\n"
        "common language files; the clock and the time zone. Behind a finding that needs\n"
        "somebody stands what to do.\n");
}

QVector<Option> DoctorCommand::options() const
{
    return {SpoolOptions::folderOption(),
            {{QStringLiteral("texts")},
             QStringLiteral("FOLDER"),
             QStringLiteral("the language files (*.qm) of the central service; without it\n"
                            "the common ones")},
            {{QStringLiteral("j"), QStringLiteral("json")},
             QString(),
             QStringLiteral("JSON, for programs: an array with an object for each finding")}};
}

QStringList DoctorCommand::examples() const
{
    return {QStringLiteral("doctor"),
            QStringLiteral("doctor --json | jq '.[] | select(.Level != \"ok\")'")};
}

QString DoctorCommand::exitCodes() const
{
    return QStringLiteral("0 no errors, 1 errors were found, 2 wrong command line, "
                          "3 bus or service not there");
}

int DoctorCommand::run(const Arguments& arguments)
{
    if (!arguments.words().isEmpty())
    {
        return complain(QStringLiteral("'%1' is no option").arg(arguments.words().first()));
    }
    Diagnosis diagnosis;
    ServiceExamination service(diagnosis);
    const bool isThere = service.run();
    DeviceExamination device(diagnosis);
    device.examineSpool(SpoolOptions::folder(arguments), service.isAnswering());
    device.examineTexts(arguments.isSet(QStringLiteral("texts"))
                            ? arguments.value(QStringLiteral("texts"))
                            : CommonTexts::folder());
    device.examineTime();

    const int errors = diagnosis.count(Diagnosis::Level::error);
    const ExitCode code = !isThere     ? ExitCode::notReachable
                          : errors > 0 ? ExitCode::failed
                                       : ExitCode::success;
    if (arguments.isSet(QStringLiteral("json")))
    {
        Output::write(jsonOf(diagnosis), code);
        return code;
    }
    QString text;
    for (const Diagnosis::Finding& finding : diagnosis.findings())
    {
        text += lines(finding);
    }
    Output::write(text + QStringLiteral("%1 errors, %2 warnings\n")
                             .arg(errors)
                             .arg(diagnosis.count(Diagnosis::Level::warning)),
                  code);
    return code;
}
