#pragma once

#include "Definitions/EventlistHandlerStructs.h"

#include "Platform/TextManager.h"

#include <QList>
#include <QString>
#include <QStringList>

/// The event that is measured: about 200 bytes of text a language, one literal and one url argument
/// unless something else is wanted.
struct BenchmarkEvent
{
    using ArgumentList = QList<EventlistHandlerStructs::stDescriptionArgument>;

    static constexpr int usualArguments = 2;

    /// \param textFolder     made by make_texts.py; decides about the number of languages
    /// \param argumentCount  half of them url arguments; the text folder has to know the number
    BenchmarkEvent(const QString& textFolder, int argumentCount, int sourceTagCount);

    const TextManager texts;
    const QString moduleName = QStringLiteral("PumpControl");
    const QString url;
    const QStringList keywords = {QStringLiteral("Error")};
    ArgumentList arguments;
    ArgumentList urlArguments;
    QStringList sourceTags;
};

/// The same event as it goes over the bus, made by the public steps of the library one after the
/// other. What is left then is the call itself.
struct ReadyMadeEvent
{
    explicit ReadyMadeEvent(const BenchmarkEvent& event);

    QStringList eventAttributes;
    QString timestamp;
    QString moduleName;
    QString description;
    QStringList keywords;
    QString user;
    QString additionalData;
    QString alarmId;
};
