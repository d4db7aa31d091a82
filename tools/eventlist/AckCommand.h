#pragma once

#include "eventlist/Command.h"

/// Acknowledges alarms, faults and the central detector.
class AckCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("acknowledge")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    int run(const Arguments& arguments) override;
};
