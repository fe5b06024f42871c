// The lists that follow the paper source: what to show after a change of source and which entry to
// select.
#pragma once

#include <QString>
#include <QStringList>

namespace rules {

/// Items for a list and the index to select; -1 when there is none.
struct ListChoice
{
    QStringList items;
    int selected = -1;
};

/// Both sides of a sheet are scanned: the name holds 双.
[[nodiscard]] bool isDuplexSource(const QString& source);
/// Sheets are fed: the name holds "ADF".
[[nodiscard]] bool isFeederSource(const QString& source);
/// Index of the first feeder, else 0; -1 for an empty list.
[[nodiscard]] int defaultSource(const QStringList& sources);

/// The library's list as it is. The previous text is kept where the list has it, else A4 (200 for
/// resolutions), else the first entry.
[[nodiscard]] ListChoice paperChoice(const QStringList& offered, const QString& previous);
[[nodiscard]] ListChoice resolutionChoice(const QStringList& offered, const QString& previous);
/// 无操作 and the two ways to split; the two ways to merge only for a two-sided source. The
/// previous text is kept where the list has it, else 无操作.
[[nodiscard]] ListChoice mergeChoice(const QString& source, const QString& previous);
/// For the reset to the device's defaults and the basic settings: the default whatever was
/// selected.
[[nodiscard]] ListChoice defaultPaperChoice(const QStringList& offered);
[[nodiscard]] ListChoice defaultResolutionChoice(const QStringList& offered);

} // namespace rules
