#pragma once

#include "eventlist/Command.h"

/// Tells whether the central service would take spool files.
class SpoolValidateCommand : public Command
{
public:
    QString name() const override;
    QStringList aliases() const override { return {QStringLiteral("spool check")}; }
    QString summary() const override;
    QString usage() const override;
    QString explanation() const override;
    QVector<Option> options() const override;
    QStringList examples() const override;
    QString exitCodes() const override;
    int run(const Arguments& arguments) override;
};
