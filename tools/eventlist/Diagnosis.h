#pragma once

#include <QString>
#include <QVector>

/// What an examination of the device has found.
class Diagnosis
{
public:
    enum class Level : int
    {
        ok,
        warning,
        error
    };

    struct Finding
    {
        Level level;
        QString subject; ///< "bus", "spool"
        QString text;
        QString advice; ///< what to do; empty when all is well
    };

    void good(const QString& subject, const QString& text);
    void warn(const QString& subject, const QString& text, const QString& advice);
    void fail(const QString& subject, const QString& text, const QString& advice);

    const QVector<Finding>& findings() const { return m_findings; }
    int count(Level level) const;

    /// "ok", "warning", "error"
    static QString word(Level level);

private:
    QVector<Finding> m_findings;
};
