// What a job that died, or that could not write its files, left behind: its pages become files
// after all, at the next start of the library.
#pragma once

#include "scanlib/base/cancel_token.h"
#include "scanlib/session/page_tools.h"

#include <filesystem>

namespace orva {

/// Writes the pages of dead jobs into the folders that they were meant for, under the names that
/// their files would have had with "_恢复" behind them (nothing is replaced), and removes hidden
/// files of dead jobs. What cannot be written stays. Returns the number of files made. Any thread;
/// stops between two jobs when it is cancelled.
int recoverJobs(
    const std::filesystem::path& spoolRoot, const PageTools& tools, const CancelToken& cancel);

/// Deletes what nobody needs any more: folders of dead jobs without unsaved pages, and those whose
/// pages could not be saved for a week. kFileWrite when something cannot be deleted.
Status clearSpool(const std::filesystem::path& spoolRoot);

} // namespace orva
