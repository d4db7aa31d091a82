#pragma once

#include <QtGlobal>

namespace eventlistd
{

/// Milliseconds of a clock that nobody sets: for limits and intervals. The clock of the wall, which
/// may jump, is only for what a user is shown.
qint64 monotonicMs();

} // namespace eventlistd
