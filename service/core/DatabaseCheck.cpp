#include "core/DatabaseCheck.h"

#include <QDebug>
#include <QProcess>

namespace eventlistd
{

DatabaseCheck::DatabaseCheck(const QString& program, const QString& path, QObject* parent)
    : QObject(parent)
{
    auto* checker = new QProcess(this);
    QObject::connect(checker, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
                     [this](int exitCode, QProcess::ExitStatus status) {
                         deleteLater();
                         if (status == QProcess::NormalExit && exitCode == exitCodeDamaged)
                         {
                             qWarning() << "The check beside the work has found damage";
                             Q_EMIT damageFound();
                         }
                     });
    checker->setProcessChannelMode(QProcess::ForwardedChannels);
    checker->start(program, {QStringLiteral("--check"), path});
}

} // namespace eventlistd
