#include "dialogs/work_status.h"

#include <algorithm>
#include <iterator>

namespace {

using Buttons = WorkStatusButtons;
using Icon = WorkStatusIcon;

/// The argument, if any, stands between the two parts of the text. The blanks after a line break
/// belong to the text.
enum class Argument
{
    kNone,
    kPercent,
    kName
};

struct Entry
{
    int code;
    const char* title;
    const char* before;
    Argument argument;
    const char* after;
    Buttons buttons;
    Icon icon;
};

constexpr Argument kNone = Argument::kNone;
constexpr Argument kPercent = Argument::kPercent;
constexpr Argument kName = Argument::kName;
constexpr Buttons kYes = Buttons::kYes;
constexpr Buttons kYesNo = Buttons::kYesNo;
constexpr Buttons kNoButton = Buttons::kNone;
constexpr Icon kInfo = Icon::kInformation;
constexpr Icon kWarn = Icon::kWarning;
constexpr Icon kError = Icon::kCritical;

// clang-format off
constexpr Entry kEntries[] = {
    { -1, "保 存", "数据校验失败\n         请检查", kNone, "", kYes, kError },
    { 0, "退 出", "请确定是否退出\n", kNone, "", kYesNo, kInfo },
    { 2, "刷 新", "刷新开始\n         ", kNone, "", kNoButton, kInfo },
    { 3, "保 存", "数据保存开始\n         ", kNone, "", kNoButton, kInfo },
    { 4, "获 取", "数据读取开始\n         ", kNone, "", kNoButton, kInfo },
    { 5, "保 存", "数据保存中...\n     已完成", kPercent, "%", kNoButton, kInfo },
    { 6, "获 取", "数据获取中...\n     已完成", kPercent, "%", kNoButton, kInfo },
    { 7, "刷 新", "界面更新中...\n     已完成", kPercent, "%", kNoButton, kInfo },
    { 8, "完 成", "保存完成\n         ", kNone, "", kYes, kInfo },
    { 9, "完 成", "读取信息完成\n      ", kNone, "", kYes, kInfo },
    { 10, "完 成", "界面更新完成\n      ", kNone, "", kYes, kInfo },
    { 11, "保 存", "模板名称已命名\n    请检查", kNone, "", kYes, kWarn },
    { 12, "初始化", "文件访问失败\n      ", kNone, "", kYes, kError },
    { 13, "模板删除", "模板名为空\n   请检查 ", kNone, "", kYes, kWarn },
    { 14, "模板删除", "删除成功\n     ", kNone, "", kYes, kInfo },
    { 15, "模板删除", "删除失败\n     请检查", kNone, "", kYes, kError },
    { 16, "模板删除", "模板不存在\n     请检查", kNone, "", kYes, kWarn },
    { 17, "模板删除", "删除模板", kName, "?\n", kYesNo, kWarn },
    { 20, "模板添加", "模板名为空\n   请检查 ", kNone, "", kYes, kWarn },
    { 21, "模板添加", "添加成功\n     ", kNone, "", kYes, kInfo },
    { 22, "模板添加", "添加失败\n     请检查", kNone, "", kYes, kError },
    { 23, "模板添加", "该模板名称已存在\n     请重新输入", kNone, "", kYes, kWarn },
    { 24, "模板添加", "添加模板", kName, "?\n", kYesNo, kWarn },
    { 25, "模板添加", "添加模板", kName, "\n     进行中...", kNoButton, kInfo },
    { 28, "刷 新", "成功\n     ", kNone, "", kYes, kInfo },
    { 29, "刷 新", "失败\n     请检查", kNone, "", kYes, kError },
    { 31, "刷 新", "确定应用(", kName, ")\n模板?\n", kYesNo, kWarn },
};
// clang-format on

} // namespace

WorkStatusNotice workStatusNotice(int code, int value, const QString& name)
{
    const auto* const entry = std::find_if(std::begin(kEntries), std::end(kEntries),
        [code](const Entry& candidate) { return candidate.code == code; });
    if (entry == std::end(kEntries)) {
        return {};
    }
    QString text = QString::fromUtf8(entry->before);
    if (entry->argument == Argument::kPercent) {
        text += QString::number(value);
    } else if (entry->argument == Argument::kName) {
        text += name;
    }
    text += QString::fromUtf8(entry->after);
    return { QString::fromUtf8(entry->title), text, entry->buttons, entry->icon };
}
