#pragma once

#include "eventlist/Command.h"

/// Leaves the emergency event of a watchdog in the spool folder.
class EmergencyCommand : public Command
{
public:
    QString name() const override;
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;
};
