// The waiting times of the application, once. Test builds divide them by TARVEX_TIME_DIVISOR.
#pragma once

#include <chrono>

#ifndef TARVEX_TIME_DIVISOR
#define TARVEX_TIME_DIVISOR 1
#endif

namespace timing {

using std::chrono::milliseconds;

/// Between two polls of the scanner's buttons.
inline constexpr milliseconds kButtonPoll { 2000 / TARVEX_TIME_DIVISOR };
/// Between two looks (and two log lines) while a pause of the button monitor waits.
inline constexpr milliseconds kPauseRetry { 1000 / TARVEX_TIME_DIVISOR };
/// The longest that a pause of the button monitor waits for a poll, or for what a button does. A
/// library that takes longer to tell its buttons is not going to scan either.
inline constexpr milliseconds kPollLimit { 15000 / TARVEX_TIME_DIVISOR };
/// After a scan error, before the button monitor goes on.
inline constexpr milliseconds kErrorHold { 1000 / TARVEX_TIME_DIVISOR };
/// Before the scanned file of a preview is deleted.
inline constexpr milliseconds kPreviewHold { 1000 / TARVEX_TIME_DIVISOR };
/// Between two texts of the search splash.
inline constexpr milliseconds kSplashStep { 300 / TARVEX_TIME_DIVISOR };
/// From start-up to the device search; whole seconds, never divided (alarm(2)).
inline constexpr unsigned kSearchAlarmSeconds = 1;
/// The longest a closing window waits for a running job to end.
inline constexpr milliseconds kCloseLimit { 5000 };

} // namespace timing
