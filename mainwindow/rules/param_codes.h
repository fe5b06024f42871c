// From the text or index of a setting control to the scanner library's code. One function a
// setting, no widgets, no logging; sdk/codes.h holds the codes and texts. The JPEG quality is sent
// as the raw index of its list and needs no rule.
#pragma once

#include <QString>

namespace rules {

/// The run-log line for a date order that nobody knows (code -1).
inline constexpr char kTimeNameTypeError[] = "时间命名类型设置错误：-1";

/// 0 彩色, 1 灰度, 2 黑白, 3 多流输出; 0 for any other text.
[[nodiscard]] int colorModeCode(const QString& text);
/// The text is exactly 黑白: the control rules.
[[nodiscard]] bool isBlackWhite(const QString& colorModeText);
/// The text holds 黑白 somewhere: the parameter record and the denoise list.
[[nodiscard]] bool holdsBlackWhite(const QString& colorModeText);

/// orva::FileFormat of the file type list; 0 (jpg) for any other text.
[[nodiscard]] int fileFormatCode(const QString& text);
/// Several pages fit into one file of this type; false for any unknown text, which means jpg.
[[nodiscard]] bool holdsPages(const QString& fileTypeText);

/// 0 不旋转, 1 左旋90度, 2 右旋90度, 3 旋转180度; 0 for any other text.
[[nodiscard]] int rotateCode(const QString& text);
/// 0 无操作, 1 红色, 2 绿色, 3 蓝色; 0 for any other text.
[[nodiscard]] int dropoutCode(const QString& text);
/// 1 上下拆分, 2 左右拆分; 0 for any other text of the one list for splitting and merging.
[[nodiscard]] int splitCode(const QString& mergeListText);
/// 1 上下合并, 2 左右合并; 0 for any other text of the one list for splitting and merging.
[[nodiscard]] int mergeCode(const QString& mergeListText);
/// 0 when text orientation is off; else 1 快速识别, 2 全文识别, 3 复杂识别, 0 for any other text.
[[nodiscard]] int textModeCode(bool textOrientationOn, const QString& text);
/// Index of the denoise list: 1 gives 3, 2 gives 4, any other 0.
[[nodiscard]] int denoiseCode(int index);
/// 0 when the single-page button is checked, else 1 when the multi-page button is, else 0.
[[nodiscard]] int multiPageCode(bool singleChecked, bool multiChecked);
/// 1 by time, 0 by serial number; 1 when neither button is checked.
[[nodiscard]] int timeNamedCode(bool timeChecked, bool serialChecked);
/// 0 年月日, 1 月日年, 2 日月年; -1 for any other text (log kTimeNameTypeError then).
[[nodiscard]] int timeNameTypeCode(const QString& text);

} // namespace rules
