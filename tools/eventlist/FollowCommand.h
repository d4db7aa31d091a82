#pragma once

#include "eventlist/Command.h"

/// Prints events as they come.
class FollowCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override
    {
        return {QStringLiteral("monitor"), QStringLiteral("tail")};
    }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    int run(const Arguments& arguments) override;
};
