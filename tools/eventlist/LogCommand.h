#pragma once

#include "eventlist/Command.h"

/// Sends an event from the shell.
class LogCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override
    {
        return {QStringLiteral("send"), QStringLiteral("emit")};
    }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    int run(const Arguments& arguments) override;
};
