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
    { "pdf1", 2 },
    { "function", 4 },
    { "button-3", 4 },
    { "extra", 4 },
    { "ocr", 4 },
    { "newfile", 4 },
    { "cancel", 8 },
    { "stop", 8 },
};
/// Their text names the button; reading one may clear it.
inline const Words kButtonTextOptions { "button-pressed", "message" };
/// What such a text means (codes.h, Button); 0: no button.
int buttonOfText(const std::string& text);

inline const Words kPaperSensors { "page-loaded", "adf-loaded", "doc-in-adf", "adf-status" };
inline const Words kNoPaperWords { "No documents", "Empty", "No paper", "None" };
inline const Words kDuplexSwitches { "duplex", "adf-mode", "both-sides" };
inline const Words kSleepOptions { "sleeptimer", "power-save-time", "sleep-timer",
    "lamp-off-time" };
inline const Words kAutoOffOptions { "offtimer", "auto-off-time" };
inline const Words kWidthOptions { "page-width", "pagewidth" };
inline const Words kHeightOptions { "page-height", "pageheight" };

/// Double-feed sensors first: some activate those behind them. Then paper protection.
inline const Words kPaperGuards { "df-action", "df-thickness", "df-length", "double-feed",
    "dfeed-detect", "dfeed", "dfeed-stop", "paper-protect", "adv-paper-protect", "staple-detect",
    "stapledetect" };
inline const Words kGuardOn { "Stop", "On", "Yes" };
inline const Words kGuardOff { "Default", "Off", "No" };

inline const Words kDropoutOptions { "dropoutcolor", "dropout-front", "dropout-back",
    "color-filter", "dropout", "dropout-color" };
inline const Words kDropRed { "Red", "red" };
inline const Words kDropGreen { "Green", "green" };
inline const Words kDropBlue { "Blue", "blue" };
inline const Words kDropNone { "None", "Default", "Off", "none" };

} // namespace orva
