// The states of the library and what may be asked in each.
#pragma once

#include "sdk/result_codes.h"

namespace orva {

//            Init             SelectScanner              Scan              CancelScan
//   closed ---------> idle ----------------> configured -------> scanning ------------> cancelling
//     ^                |                      |   ^               |                      |
//     |                |                      |   +---------------+----------------------+
//     |                |                      |                     the job has ended
//     +----------------+----------------------+
//             UnInit (a running job is cancelled and waited for first)
//
// Scan without a scanner passes from idle through scanning back to idle: the refusal is told by the
// callbacks as every end of a job is.
enum class SessionState
{
    kClosed,
    kIdle, ///< no scanner selected
    kConfigured, ///< a scanner is selected
    kScanning,
    kCancelling,
};

/// What an entry point needs.
enum class Need
{
    kOpen, ///< the library: GetScannerCount, GetScannerName, ClearTmpData
    kNoJob, ///< and no job: SelectScanner, callbacks, records
    kScanner, ///< a scanner; answers from what is known, also while a job runs: names, lists,
              ///< values
    kFreeScanner, ///< a scanner that no job uses: everything that asks or sets the device
};

constexpr bool hasJob(SessionState state)
{
    return state == SessionState::kScanning || state == SessionState::kCancelling;
}

/// kOk, or why the entry point is refused.
constexpr ResultCode permitted(SessionState state, Need need)
{
    if (state == SessionState::kClosed) {
        return kNotInitialised;
    }
    if (hasJob(state) && (need == Need::kNoJob || need == Need::kFreeScanner)) {
        return kBusy;
    }
    if (state == SessionState::kIdle && (need == Need::kScanner || need == Need::kFreeScanner)) {
        return kNoScannerSelected;
    }
    return kOk;
}

} // namespace orva
