#pragma once

#include <QtGlobal>

/// Marks the classes that modules may use. Everything else of the library is hidden.
#define EVENTLISTHANDLER_EXPORT Q_DECL_EXPORT
