// What each work status of the template dialog says and offers. No widgets.
#pragma once

#include <QString>

enum class WorkStatusButtons
{
    kNone,
    kYes,
    kYesNo
};
enum class WorkStatusIcon
{
    kInformation,
    kWarning,
    kCritical
};

struct WorkStatusNotice
{
    QString title;
    QString text;
    WorkStatusButtons buttons = WorkStatusButtons::kYes;
    WorkStatusIcon icon = WorkStatusIcon::kInformation;
};

/// The statuses that the template dialog reports itself.
namespace work_status {
inline constexpr int kAskExit = 0;
inline constexpr int kReading = 4;
inline constexpr int kNoAccess = 12;
inline constexpr int kDeleteNameEmpty = 13;
inline constexpr int kDeleted = 14;
inline constexpr int kDeleteFailed = 15;
inline constexpr int kDeleteUnknown = 16;
inline constexpr int kAskDelete = 17;
inline constexpr int kAddNameEmpty = 20;
inline constexpr int kAdded = 21;
inline constexpr int kAddFailed = 22;
inline constexpr int kAddNameExists = 23;
inline constexpr int kAskAdd = 24;
inline constexpr int kAdding = 25;
inline constexpr int kApplied = 28;
inline constexpr int kApplyFailed = 29;
inline constexpr int kAskApply = 31;
} // namespace work_status

/// `value` is a percentage, for the progress codes; `name` a template, for those that name one. A
/// code without an entry has no title and no text. Any thread.
[[nodiscard]] WorkStatusNotice workStatusNotice(int code, int value, const QString& name);
