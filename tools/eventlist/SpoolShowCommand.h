#pragma once

#include "eventlist/Command.h"

/// Shows spool files whole.
class SpoolShowCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("spool cat")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;
};
