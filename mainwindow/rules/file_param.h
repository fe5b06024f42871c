// The output file record of a job, from the plain values of the controls, and the log lines that
// tell what was sent.
#pragma once

#include "sdk/records.h"

#include <QString>

#include <string>
#include <vector>

namespace rules {

/// What the settings page gives: texts of its fields, and the codes of param_codes.h.
struct FileControls
{
    QString folder;
    QString prefix;
    QString separator; ///< empty for 无
    bool timeNamed = true;
    int dateOrder = 0; ///< when named by time
    QString serialStart; ///< text of the field, not yet padded
    int serialDigits = 0;
    bool coverSameName = true;
    int multiPage = 0;
    int fileFormat = 0;
    int docType = 0; ///< index
};

enum class FileParamFault
{
    kNone,
    kFolderTooLong, ///< over 255 bytes of UTF-8
    kPrefixRefused, ///< over 19 bytes, or holds "/" or a control character
    kSeparatorRefused, ///< over 4 bytes, or holds "/" or a control character
    kSerialRefused, ///< over 10 characters when padded, or holds "/" or a control character
};

/// Title and text of a notice for the operator.
struct Notice
{
    QString title;
    QString text;
};

/// Fills the record, unused bytes and padding zero: everything but the folder, which is added after
/// it has passed the writability test. For a preview the format is 0 and the job is single-page.
/// nTimeNamedType is written only when naming by time, szIndex only when naming by serial number.
/// Nothing is cut: a text that does not fit gives its fault, the first in the order of the enum,
/// and the record is then all zero and must not be sent.
[[nodiscard]] FileParamFault fillFileParam(
    const FileControls& controls, bool preview, FileParam* param);

/// Copies the output folder into the record; kFolderTooLong leaves it as it was.
[[nodiscard]] FileParamFault setFolder(const QString& folder, FileParam* param);

/// A folder that a dialog could have given: absolute and short enough. An empty text passes too.
[[nodiscard]] bool isOutputFolder(const QString& folder);

/// What to tell the operator about a text that does not fit; empty for kNone.
[[nodiscard]] Notice faultNotice(FileParamFault fault);

/// The run-log lines "# SDK SET ...", in their order. Write each with runLog("%s", line.c_str()).
[[nodiscard]] std::vector<std::string> sentParameterLines(
    int colorMode, int jpgQuality, const ImageParam& image, const FileParam& file);

/// The line for standard output about blank pages, with its line break.
[[nodiscard]] std::string blankPageLine(const ImageParam& image);

} // namespace rules
