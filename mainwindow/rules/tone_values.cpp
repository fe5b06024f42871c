#include "mainwindow/rules/tone_values.h"

#include <cmath>
#include <cstddef>

namespace rules {

ToneValues factoryTone()
{
    return {};
}

ToneValues toneOfRow(const stFileTypeParam& row)
{
    ToneValues tone;
    tone.brightness = row.nDefBrightness;
    tone.contrast = row.nDefContrast;
    tone.threshold = row.nDefThreshold;
    tone.gamma = row.nDefGamma10 / 10.0;
    tone.gammaSlider = truncatedSlider(tone.gamma);
    return tone;
}

int truncatedSlider(double gamma)
{
    // KEPT: the quotient itself, truncated; 11 leaves the slider at 1 while the spin box shows 1.1.
    return static_cast<int>(static_cast<float>(gamma));
}

const stFileTypeParam* toneRow(
    int callResult, const std::vector<stFileTypeParam>& rows, int docTypeIndex)
{
    if (callResult != 0 || docTypeIndex < 0
        || static_cast<std::size_t>(docTypeIndex) >= rows.size()) {
        return nullptr;
    }
    return &rows[static_cast<std::size_t>(docTypeIndex)];
}

double gammaOfSlider(int slider)
{
    return slider / 10.0;
}

int sliderOfGamma(double gamma)
{
    return static_cast<int>(std::lround(gamma * 10.0));
}

} // namespace rules
