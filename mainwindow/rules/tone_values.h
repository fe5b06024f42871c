// Brightness, contrast, threshold and gamma: factory values, the defaults of a document type, and
// the coupling of the gamma slider with its spin box.
#pragma once

#include "sdk/records.h"

#include <vector>

namespace rules {

struct ToneValues
{
    int brightness = 18;
    int contrast = 38;
    int threshold = 128;
    double gamma = 1.1; ///< spin box
    int gammaSlider = 11; ///< set with the coupling blocked
};

/// 18, 38, 128, 1.1 and 11.
[[nodiscard]] ToneValues factoryTone();

/// Values of one row. The slider gets the quotient, not ten times it: 11 gives spin box 1.1,
/// slider 1.
[[nodiscard]] ToneValues toneOfRow(const stFileTypeParam& row);

/// Where a document type puts the slider: the gamma itself without its decimals.
[[nodiscard]] int truncatedSlider(double gamma);

/// The row of a document type; nullptr when the call failed (result not 0) or there is no such row.
[[nodiscard]] const stFileTypeParam* toneRow(
    int callResult, const std::vector<stFileTypeParam>& rows, int docTypeIndex);

/// Slider (gamma times ten, 1..50) to spin box and back; the spin box value is rounded to one
/// decimal.
[[nodiscard]] double gammaOfSlider(int slider);
[[nodiscard]] int sliderOfGamma(double gamma);

} // namespace rules
