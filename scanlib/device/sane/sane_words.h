// What the drivers call the same thing. Modes are matched by whole words only: "Gray" must never
// catch a halftone mode that begins so.
#pragma once

#include "scanlib/device/device.h"

#include <string>
#include <string_view>
#include <vector>

namespace orva {

using Words = std::vector<std::string_view>;

enum class SourceWord
{
    kUnknown,
    kFlatbed,
    kFeeder,
    kDuplex
};

/// Known spellings first, then the parts that such words have in common. Backs alone, cards and
/// film units are kUnknown: they are not offered.
SourceWord sourceWord(std::string_view word);

inline const Words kColorModes { "Color", "24bit Color", "24-bit Color", "24 bit Color", "Colour",
    "RGB", "Color (24-bit)", "24bit Color[Fast]", "True Color", "color" };
inline const Words kGrayModes { "Gray", "True Gray", "Grayscale", "Greyscale", "Grey", "8bit Gray",
    "8-bit Gray", "8 bit Gray", "256 Grey Levels", "Gray (8-bit)", "gray" };
inline const Words kLineartModes { "Lineart", "Black & White", "Black and White", "Black And White",
    "Binary", "B&W", "Line Art", "lineart" };

struct ButtonOption
{
    std::string_view option;
    int value; ///< codes.h, Button
};
inline constexpr ButtonOption kButtonOptions[] {
    { "scan", 1 },
    { "start", 1 },
    { "button-1", 1 },
    { "email", 2 },
    { "copy", 2 },
    { "file", 2 },
    { "button-2", 2 },
    { "pdf", 2 },
    { "extra", 4 },
    { "newfile", 4 },
    { "cancel", 8 },
    { "stop", 8 },
};

inline const Words kPaperSensors { "page-loaded", "adf-loaded", "doc-in-adf" };
inline const Words kDuplexSwitches { "duplex", "adf-mode", "both-sides" };
inline const Words kSleepOptions { "sleeptimer", "power-save-time" };
inline const Words kAutoOffOptions { "offtimer" };
inline const Words kWidthOptions { "page-width", "pagewidth" };
inline const Words kHeightOptions { "page-height", "pageheight" };

} // namespace orva
