#pragma once

#include "eventlist/Command.h"

/// Shows the event list.
class ListCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("show")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    int run(const Arguments& arguments) override;

private:
    int follow(const Arguments& arguments) const;
};
