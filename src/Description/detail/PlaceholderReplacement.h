#pragma once

#include <QString>
#include <QStringList>

#include <vector>

/// Puts arguments into texts, wherever a placeholder stands: what QString::replace gives, an empty
/// placeholder included, but in one pass and within a bound.
class PlaceholderReplacement
{
public:
    explicit PlaceholderReplacement(const QString& placeholder);

    /// What it costs to look for one placeholder in the texts: their UTF-16 units, and some more for
    /// each text, also for an empty one.
    static qint64 searchedUnits(const QStringList& texts);

    /// Whether the texts together have at most so many UTF-16 units afterwards, or at least do not
    /// grow.
    /// \param arguments  one for each text
    bool staysBelow(qint64 maximumUnits, const QStringList& texts,
                    const QStringList& arguments) const;

    /// The text with the argument in all places.
    QString replaceIn(const QString& text, const QString& argument) const;

private:
    class Places;

    qint64 sizeAfterReplacement(const QString& text, const QString& argument) const;

    int extended(int matched, QChar character) const;

    const QString m_placeholder;
    // For each beginning of the placeholder: how much of it is also its end, but not all of it.
    std::vector<int> m_borders;
};
