#include "eventlist/Progress.h"

#include "eventlist/Output.h"

namespace
{
constexpr qint64 patienceMs = 2000;
constexpr qint64 betweenLinesMs = 200;
} // namespace

Progress::Progress(const QString& what) : m_what(what)
{
    m_sinceStart.start();
}

Progress::~Progress()
{
    Output::clearStatus();
}

void Progress::tell(const QString& done)
{
    const qint64 elapsedMs = m_sinceStart.elapsed();
    if (elapsedMs < patienceMs ||
        (m_sinceShown.isValid() && !m_sinceShown.hasExpired(betweenLinesMs)))
    {
        return;
    }
    m_sinceShown.start();
    Output::status(QStringLiteral("%1%2 (%3 s)")
                       .arg(m_what, done.isEmpty() ? QString() : QStringLiteral(": ") + done,
                            QString::number(elapsedMs / 1000)));
}
