// What a button of the scanner does. The monitor thread asks, decides here, and queues the rest.
#pragma once

#include <QString>

#include <functional>
#include <string>
#include <vector>

namespace rules {

enum class KeyAction
{
    kIgnore, ///< 3, 5, 6, 7 and anything else
    kOpenResult, ///< 0: no button; the result of a finished button-2 scan is opened
    kStartScan, ///< 1
    kStartScanAndOpen, ///< 2: set the open-result flag, then start
    kToggleWindow, ///< 4
    kNoteCancel, ///< 8: printed only, the scanner itself cancels
};

/// Value of GetButtonStatus to action.
[[nodiscard]] KeyAction keyAction(int value);

/// What an idle poll does about the result of a button-2 scan.
struct OpenResult
{
    bool clearFlags = false; ///< clear the scan-finished and the open-result flag
    bool open = false; ///< open `file` with the desktop's application, then write the log line
    std::string file; ///< last file of the job
    std::string logLine; ///< for the run log; empty when nothing happens
};
/// Needs both flags. `exists` is asked only for the last file; monitor thread.
[[nodiscard]] OpenResult openResult(bool scanFinished, bool openRequested,
    const std::vector<std::string>& files, const std::function<bool(const std::string&)>& exists);

/// 隐藏主界面 when the label flag is set, else 显示主界面. Prepared by button 4 and shown nowhere.
[[nodiscard]] QString toggleLabel(bool labelFlag);

} // namespace rules
