#pragma once

#include "eventlist/Command.h"

class TextCheck;

/// Compares a module's language files with each other and with its sources.
class TextsCheckCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("texts validate")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;

private:
    int readLanguageFiles(const Arguments& arguments, TextCheck& check) const;
    int readSources(const Arguments& arguments, TextCheck& check) const;
};
