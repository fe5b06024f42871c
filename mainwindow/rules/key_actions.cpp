#include "mainwindow/rules/key_actions.h"

#include "sdk/codes.h"

namespace rules {

KeyAction keyAction(int value)
{
    switch (static_cast<orva::Button>(value)) {
    case orva::Button::kNone:
        return KeyAction::kOpenResult;
    case orva::Button::kScan:
        return KeyAction::kStartScan;
    case orva::Button::kScanAndOpen:
        return KeyAction::kStartScanAndOpen;
    case orva::Button::kToggleWindow:
        return KeyAction::kToggleWindow;
    case orva::Button::kCancel:
        return KeyAction::kNoteCancel;
    }
    return KeyAction::kIgnore;
}

OpenResult openResult(bool scanFinished, bool openRequested, const std::vector<std::string>& files,
    const std::function<bool(const std::string&)>& exists)
{
    OpenResult result;
    if (!scanFinished || !openRequested) {
        return result;
    }
    result.clearFlags = true;
    if (files.empty()) {
        result.logLine = "[func:onVal0KeyPress]iof_file_name is empty!";
        return result;
    }
    result.file = files.back();
    result.open = exists(result.file);
    result.logLine = result.open
        ? "[func:onVal0KeyPress]open file :" + result.file + " success!"
        : "[func:onVal0KeyPress]the file:" + result.file + " is not exist!";
    return result;
}

QString toggleLabel(bool labelFlag)
{
    return labelFlag ? QStringLiteral("隐藏主界面") : QStringLiteral("显示主界面");
}

} // namespace rules
