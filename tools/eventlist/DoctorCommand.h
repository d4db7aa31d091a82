#pragma once

#include "eventlist/Command.h"

/// Examines the device and says what to do.
class DoctorCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("status")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;
};
