#pragma once

#include <QString>
#include <QStringList>

/// Puts arguments into texts, wherever a placeholder stands: what QString::replace gives, an empty
/// placeholder included, but in one pass and within a bound.
class PlaceholderReplacement
{
public:
    explicit PlaceholderReplacement(const QString& placeholder);

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

    const QString m_placeholder;
};
