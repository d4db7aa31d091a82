#pragma once

#include "eventlist/Command.h"

/// Resolves the descriptions of spool files into texts.
class SpoolResolveCommand : public Command
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
