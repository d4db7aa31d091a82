#include "eventlist/ResolvedTexts.h"

#include "eventlist/CommonTexts.h"
#include "eventlist/ExitCode.h"
#include "eventlist/JsonText.h"
#include "eventlist/Language.h"
#include "eventlist/Output.h"
#include "eventlist/SafeText.h"

#include "Definitions/EventlistHandlerDefinitions.h"

QVector<Option> ResolvedTexts::options()
{
    return {
        {{QStringLiteral("l"), QStringLiteral("language")},
         QStringLiteral("LANGUAGE"),
         QStringLiteral("de, en, fr ... or all; without it, that of your locale,\n"
                        "and with --json all")},
        {{QStringLiteral("texts")},
         QStringLiteral("FOLDER"),
         QStringLiteral("language files (*.qm) for emergency events, which carry no\n"
                        "sentence; without it the common ones")},
        {{QStringLiteral("j"), QStringLiteral("json")},
         QString(),
         QStringLiteral("JSON, for programs: an array with an object for each event")},
    };
}

ResolvedTexts::ResolvedTexts(const Arguments& arguments)
    : m_language(Language::ofArguments(arguments)),
      m_textFolder(arguments.isSet(QStringLiteral("texts"))
                       ? arguments.value(QStringLiteral("texts"))
                       : CommonTexts::folder()),
      m_isJson(arguments.isSet(QStringLiteral("json")))
{
}

void ResolvedTexts::fail(const QString& source, const QString& reason)
{
    m_hasFailed = true;
    Output::error(source + QStringLiteral(": ") + reason);
}

void ResolvedTexts::add(const StoredText& text, const QString& source)
{
    Resolved resolved{text.eventId(), {}};
    QString error;
    if (text.resolve(m_textFolder, resolved.texts, error))
    {
        m_resolved.append(resolved);
    }
    else
    {
        fail(source, error);
    }
}

int ResolvedTexts::print() const
{
    const ExitCode code = m_hasFailed ? ExitCode::failed : ExitCode::success;
    QJsonArray objects;
    QString text;
    for (const Resolved& resolved : m_resolved)
    {
        const QVariantMap& texts = resolved.texts;
        const QString one = StoredText::inLanguage(texts, m_language);
        objects.append(
            QJsonObject{{EventlistHandlerDefinitions::getListColumnNameEventId(), resolved.eventId},
                        {EventlistHandlerDefinitions::getListColumnNameDescription(),
                         m_language.isEmpty() ? QJsonValue(QJsonObject::fromVariantMap(texts))
                                              : QJsonValue(one)}});
        if (!m_language.isEmpty())
        {
            text += SafeText::escaped(one) + QLatin1Char('\n');
            continue;
        }
        text += text.isEmpty() ? QString() : QStringLiteral("\n");
        for (auto language = texts.cbegin(); language != texts.cend(); ++language)
        {
            text += SafeText::escaped(language.key()) + QStringLiteral(": ") +
                    SafeText::escaped(language->toString()) + QLatin1Char('\n');
        }
    }
    Output::write(m_isJson ? JsonText::of(objects) : text, code);
    return code;
}
