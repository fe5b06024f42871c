// What is done to a page between the device and the writer, as one plain record.
#pragma once

#include "scanlib/base/page.h"
#include "scanlib/base/status.h"
#include "sdk/codes.h"
#include "sdk/records.h"

#include <functional>

namespace orva {

struct ImageSettings
{
    ColorMode mode = ColorMode::kColor;
    bool autoLevel = false;
    bool autoCropDeskew = false;
    int brightness = 0; ///< -100..100
    int contrast = 0; ///< -100..100
    int threshold = 128; ///< 0..255, grey values below it become black
    /// Comes with the file settings, not with the record below. Of text the threshold counts
    /// against the paper of each place, so that uneven light leaves no dark corners.
    DocumentType document = DocumentType::kTextAndPictures;
    double gamma = 1.0; ///< 0.1..5.0
    RotateAngle rotate = RotateAngle::kNone;
    ColorDropout dropout = ColorDropout::kNone;
    bool reinforcedDropout = false;
    int split = 0; ///< 0 none, 1 top/bottom, 2 left/right
    int merge = 0; ///< 0 none, 1 top/bottom, 2 left/right
    Denoise denoise = Denoise::kOff;
    bool removeBackground = false;
    TextOrientation textOrientation = TextOrientation::kOff;
    /// Tells the turn that puts a page upright, for textOrientation; given by whoever can read.
    std::function<RotateAngle(const Page& page)> uprightTurn;
    bool removeHoles = false;
    bool removeBlank = false;
    int blankThreshold = 55; ///< 0..100
};

/// Takes over the record; values out of range are put to the nearest end, unknown codes to "off".
ImageSettings imageSettingsFrom(const ImageParam& param, ColorMode mode);

} // namespace orva
