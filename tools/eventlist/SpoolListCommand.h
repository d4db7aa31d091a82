#pragma once

#include "eventlist/Command.h"

/// Shows what lies in the spool folder.
class SpoolListCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("spool ls")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;
};
