// The image processing record of a job, from the plain values of the controls.
#pragma once

#include "sdk/records.h"

#include <QString>

namespace rules {

/// What the parameter page shows. Texts are the current texts of the lists.
struct ImageControls
{
    QString colorMode;
    bool autoLevel = false;
    bool autoCrop = false;
    int brightness = 0; ///< -100..100
    int contrast = 0; ///< -100..100
    int threshold = 0; ///< 0..255
    double gamma = 1.0; ///< 0.1..5.0
    QString rotation;
    QString dropout;
    bool reinforcedDropout = false;
    QString merge; ///< the one list for splitting and merging
    int denoiseIndex = 0;
    bool removeBackground = false;
    bool textOrientation = false;
    QString textOrientationMode;
    bool multiFeed = false;
    bool removeHole = false;
    bool removeBlank = false;
    int blankThreshold = 0; ///< 0..100
    bool deviceOption = false; ///< the device has the maker's own options
};

/// Fills every field of the record and sets its padding to zero. A colour mode that holds 黑白
/// sends the threshold and zeroes brightness, contrast and gamma; any other zeroes the threshold.
void fillImageParam(const ImageControls& controls, ImageParam* param);

} // namespace rules
