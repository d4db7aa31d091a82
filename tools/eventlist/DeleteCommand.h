#pragma once

#include "eventlist/Command.h"

/// Deletes the event list.
class DeleteCommand : public Command
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
