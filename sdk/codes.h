// The value codes that the records and calls of the scanner library use, and the texts that stand
// for them in the window. Shared with the library; includes nothing but std.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace orva {

/// FileParam::nFormatIndex
enum class FileFormat : int
{
    kJpg = 0,
    kBmp = 1,
    kPng = 2,
    kTif = 3,
    kPdf = 4,
    kPdfText = 5, ///< image plus invisible text layer
    kOfd = 6,
    kOfdText = 7, ///< image plus invisible text layer
    kTxt = 8,
    kRtf = 9,
    kXls = 10,
};

struct FormatName
{
    FileFormat format;
    std::string_view text; ///< item of the file type list
    std::string_view extension; ///< without the dot
    bool holdsPages; ///< several pages fit into one file
};

inline constexpr std::array<FormatName, 11> kFormatNames { {
    { FileFormat::kJpg, "jpg", "jpg", false },
    { FileFormat::kBmp, "bmp", "bmp", false },
    { FileFormat::kPng, "png", "png", false },
    { FileFormat::kTif, "tif", "tif", true },
    { FileFormat::kPdf, "pdf", "pdf", true },
    { FileFormat::kPdfText, "双层pdf", "pdf", true },
    { FileFormat::kOfd, "ofd", "ofd", true },
    { FileFormat::kOfdText, "双层ofd", "ofd", true },
    { FileFormat::kTxt, "txt", "txt", true },
    { FileFormat::kRtf, "rtf", "rtf", true },
    { FileFormat::kXls, "xls", "xls", true },
} };

/// SetColorMode
enum class ColorMode : int
{
    kColor = 0,
    kGray = 1,
    kBlackWhite = 2,
    kMultiStream = 3
};
inline constexpr std::array<std::string_view, 4> kColorModeTexts { "彩色", "灰度", "黑白",
    "多流输出" };

/// What stands at the end of the names of the files that a side gives in kMultiStream, in order.
inline constexpr std::array<std::string_view, 3> kStreamTags { "color", "gray", "bw" };

/// ImageParam::nRotateAngle, the item order of the rotation list
enum class RotateAngle : int
{
    kNone = 0,
    kLeft90 = 1,
    kRight90 = 2,
    k180 = 3
};
inline constexpr std::array<std::string_view, 4> kRotateTexts { "不旋转", "左旋90度", "右旋90度",
    "旋转180度" };

/// ImageParam::nColorDropout, the item order of the dropout list
enum class ColorDropout : int
{
    kNone = 0,
    kRed = 1,
    kGreen = 2,
    kBlue = 3
};
inline constexpr std::array<std::string_view, 4> kDropoutTexts { "无操作", "红色", "绿色", "蓝色" };

/// The item order of the one list for splitting and merging
inline constexpr std::array<std::string_view, 5> kMergeTexts { "无操作", "上下拆分", "左右拆分",
    "上下合并", "左右合并" };

/// ImageParam::nDenoise. The jump from 0 to 3 is the library's numbering.
enum class Denoise : int
{
    kOff = 0,
    kNormal = 3,
    kStrong = 4
};

/// ImageParam::nAutoTextMode
enum class TextOrientation : int
{
    kOff = 0,
    kFast = 1,
    kFullText = 2,
    kComplex = 3
};
inline constexpr std::array<std::string_view, 3> kTextOrientationTexts { "快速识别", "全文识别",
    "复杂识别" };

/// FileParam::nDocType, the item order of the document type list and of the rows of GetImageParam
enum class DocumentType : int
{
    kTextAndPictures = 0,
    kText = 1,
    kPictures = 2
};

/// FileParam::nTimeNamedType
enum class DateOrder : int
{
    kUnknown = -1,
    kYearMonthDay = 0,
    kMonthDayYear = 1,
    kDayMonthYear = 2
};

/// GetButtonStatus. Any other value is ignored by the application.
enum class Button : int
{
    kNone = 0,
    kScan = 1,
    kScanAndOpen = 2,
    kToggleWindow = 4,
    kCancel = 8
};

/// First argument of the state callback
enum class JobState : int
{
    kSideScanned = 1,
    kFileSaved = 2,
    kEnded = -1
};

/// JPEG quality, percent, by the index that SetJPGQulity takes
inline constexpr std::array<int, 5> kJpegQualities { 100, 70, 50, 30, 10 };

/// Names of the paper sources that the library offers
inline constexpr std::string_view kSourceFlatbed = "平板";
inline constexpr std::string_view kSourceFeeder = "ADF单面";
inline constexpr std::string_view kSourceDuplex = "ADF双面";
/// A source whose name holds this text scans both sides of a sheet
inline constexpr std::string_view kDuplexMark = "双";

} // namespace orva
