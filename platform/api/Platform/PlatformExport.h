#pragma once

#include <QtGlobal>

/// Marks what the platform layer offers. The same in the library that defines it and in those that
/// use it.
#define PLATFORM_EXPORT Q_DECL_EXPORT
