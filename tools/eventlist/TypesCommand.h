#pragma once

#include "eventlist/Command.h"

/// Shows the event types that the service knows.
class TypesCommand : public Command
{
public:
    QString name() const override;
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    int run(const Arguments& arguments) override;
};
