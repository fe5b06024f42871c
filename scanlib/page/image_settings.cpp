#include "scanlib/page/image_settings.h"

#include <algorithm>
#include <cmath>

namespace orva {

namespace {

constexpr double kMinGamma = 0.1;
constexpr double kMaxGamma = 5.0;
// The record carries a threshold only in black-and-white mode; the black-and-white page of several
// streams is cut in the middle.
constexpr int kMiddleThreshold = 128;

/// 0 is what black-and-white mode sends and means "leave the tones alone", as does anything that
/// is not a number.
double gammaFrom(float value)
{
    if (!std::isfinite(value) || value <= 0.0F) {
        return 1.0;
    }
    return std::clamp(static_cast<double>(value), kMinGamma, kMaxGamma);
}

template <typename Code>
Code codeOrOff(std::int32_t value, int last)
{
    return value >= 0 && value <= last ? static_cast<Code>(value) : static_cast<Code>(0);
}

int splitOrOff(std::int32_t value)
{
    return value == 1 || value == 2 ? value : 0;
}

Denoise denoiseFrom(std::int32_t value)
{
    const auto code = static_cast<Denoise>(value);
    return code == Denoise::kNormal || code == Denoise::kStrong ? code : Denoise::kOff;
}

} // namespace

ImageSettings imageSettingsFrom(const ImageParam& param, ColorMode mode)
{
    ImageSettings settings;
    settings.mode = mode;
    settings.autoLevel = param.bAutoLevel != 0;
    settings.autoCropDeskew = param.bAutoCropDeskew != 0;
    settings.brightness = std::clamp<int>(param.nBrightness, -100, 100);
    settings.contrast = std::clamp<int>(param.nContrast, -100, 100);
    settings.threshold = mode == ColorMode::kBlackWhite ? std::clamp<int>(param.nThresold, 0, 255)
                                                        : kMiddleThreshold;
    settings.gamma = gammaFrom(param.nGamma);
    settings.rotate = codeOrOff<RotateAngle>(param.nRotateAngle, 3);
    settings.dropout = codeOrOff<ColorDropout>(param.nColorDropout, 3);
    settings.reinforcedDropout =
        param.bAdvColorDropout != 0 && settings.dropout != ColorDropout::kNone;
    settings.split = splitOrOff(param.nSplit);
    settings.merge = splitOrOff(param.nMerge);
    settings.denoise = denoiseFrom(param.nDenoise);
    settings.removeBackground = param.nBackGround != 0;
    settings.textOrientation = param.bAutoText != 0
        ? codeOrOff<TextOrientation>(param.nAutoTextMode, 3)
        : TextOrientation::kOff;
    settings.removeHoles = param.bRemoveHole != 0;
    settings.removeBlank = param.bRemoveBlank != 0;
    settings.blankThreshold = std::clamp<int>(param.nBlankThresoldValue, 0, 100);
    return settings;
}

} // namespace orva
