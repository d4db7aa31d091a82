#pragma once

#include <QTest>

#include <chrono>
#include <functional>

/// How long a test waits for what must happen. It is long, because it passes only when a test
/// fails: a loaded machine must not make a difference.
constexpr std::chrono::milliseconds defaultDeadline{30000};

/// Waits for a condition and lets the events of this thread run meanwhile. Where a comparison can
/// be written down, QTRY_COMPARE with the same deadline tells more when it fails.
/// \returns the condition's last value: false when the deadline has passed.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds deadline = defaultDeadline);
