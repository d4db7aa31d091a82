#pragma once

#include <QObject>
#include <QString>

namespace eventlistd
{

/// What the program ends with when "--check" has found damage.
constexpr int exitCodeDamaged = 5;

/// Looks for damage in a large database file. Reading it as a whole takes seconds, and meanwhile
/// events come: another process does it. Deletes itself when that has ended.
class DatabaseCheck : public QObject
{
    Q_OBJECT
public:
    /// \param program  is called with "--check <path>" and ends with exitCodeDamaged
    DatabaseCheck(const QString& program, const QString& path, QObject* parent);

Q_SIGNALS:
    void damageFound();
};

} // namespace eventlistd
