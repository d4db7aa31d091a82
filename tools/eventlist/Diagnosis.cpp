#include "eventlist/Diagnosis.h"

#include <algorithm>

void Diagnosis::good(const QString& subject, const QString& text)
{
    m_findings.append({Level::ok, subject, text, QString()});
}

void Diagnosis::warn(const QString& subject, const QString& text, const QString& advice)
{
    m_findings.append({Level::warning, subject, text, advice});
}

void Diagnosis::fail(const QString& subject, const QString& text, const QString& advice)
{
    m_findings.append({Level::error, subject, text, advice});
}

int Diagnosis::count(Level level) const
{
    return int(std::count_if(m_findings.begin(), m_findings.end(),
                             [level](const Finding& finding) { return finding.level == level; }));
}

QString Diagnosis::word(Level level)
{
    switch (level)
    {
    case Level::ok:
        return QStringLiteral("ok");
    case Level::warning:
        return QStringLiteral("warning");
    case Level::error:
        break;
    }
    return QStringLiteral("error");
}
